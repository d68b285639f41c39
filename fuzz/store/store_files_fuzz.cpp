// Feeds arbitrary bytes to the store's file readers: as the catalogue of the
// gallery "Stone" (seed with tests/store/data/Stone.xdb so that the seal
// matches and the class and block parsing is reached) and as a usage list.

#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "platform/files.h"
#include "platform/text.h"
#include "store/catalogue.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/usage_lists.h"

namespace {

const std::u16string& WorkFolder() {
    static const std::u16string folder = [] {
        char pattern[] = "/tmp/marrowfin-store-fuzz-XXXXXX";
        const char* made = mkdtemp(pattern);
        return marrowfin::Utf8ToUtf16(made ? made : "/tmp");
    }();
    return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace marrowfin;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::u16string root = WorkFolder() + u"/Orsolen";
    (void)CreateDirectories(root + u"/Stone");
    (void)WriteFileAtomic(root + u"/Stone/Stone.xdb", bytes);
    (void)WriteFileAtomic(root + u"/RecentlyUse.xml", bytes);

    GalleryStore store;
    store.root = new GalleryNode(u"", root, kRootName, kKindDir, false, false, 0);
    (void)ReadCatalogue(store, u"Stone");
    LoadRecentList(store);
    // Whatever was read must write out again without trouble.
    (void)ComposeListFile(store.root->fileChildren);
    for (const GalleryNode* g : store.root->dirChildren)
        if (g) (void)ComposeCatalogue(store, *g);
    SubtreeDeleter()(store.root);
    store.root = nullptr;
    return 0;
}
