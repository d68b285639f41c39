// Feeds arbitrary bytes to the class table's readers: as the cached table
// (NewAllGalleryType1.xml), as the service's answer, as the file of seen
// versions (NewAddGalleryType.xml) and as a hot-words answer. An answer that
// was taken must read back from the cached file as the same kinds.
// Seed with tests/panel/classes data or any class-table answer of the
// stand-in service; the first byte picks the road.

#include <stdlib.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "panel/classes/class_table.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/store_paths.h"

namespace {

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "class table check failed: %s\n", what);
        std::abort();
    }
}

bool SameKinds(const marrowfin::KindMap& a, const marrowfin::KindMap& b) {
    if (a.size() != b.size()) return false;
    for (auto x = a.begin(), y = b.begin(); x != a.end(); ++x, ++y) {
        if (x->first != y->first || x->second.size() != y->second.size()) return false;
        for (size_t i = 0; i < x->second.size(); ++i) {
            const marrowfin::ClassItem& p = x->second[i];
            const marrowfin::ClassItem& q = y->second[i];
            if (p.name != q.name || p.ver != q.ver || p.describe != q.describe || p.gv != q.gv) return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A home of the target's own, so that the store's files never touch a real one.
    char pattern[] = "/tmp/marrowfin-class-fuzz-XXXXXX";
    const char* home = mkdtemp(pattern);
    if (!home) std::abort();
    setenv("HOME", home, 1);
    setenv("XDG_CONFIG_HOME", (std::string(home) + "/config").c_str(), 1);
    marrowfin::ResetPathCachesForTest();
    (void)marrowfin::CreateDirectories(marrowfin::StoreRoot());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace marrowfin;
    if (size == 0) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::u16string text = Utf8ToUtf16(bytes);
    g_seenClasses.clear();
    g_seenKinds.clear();
    (void)RemoveFile(ClassTablePath());
    (void)RemoveFile(SeenClassVersionsPath());

    ClassTable table;
    switch (data[0] % 4) {
        case 0: {
            (void)WriteFileAtomic(ClassTablePath(), bytes);
            const ClassTableVersions versions = ReadClassVersions(table);
            ClassTable again;
            (void)ApplyClassTable(u"", again, versions);
            Check(SameKinds(table.generalKinds, again.generalKinds), "both readers agree on general kinds");
            Check(SameKinds(table.boutiqueKinds, again.boutiqueKinds), "both readers agree on boutique kinds");
            break;
        }
        case 1: {
            if (ApplyClassTable(text, table, {})) {
                ClassTable cached;
                (void)ApplyClassTable(u"", cached, {});
                Check(SameKinds(table.generalKinds, cached.generalKinds), "taken answer reads back: general");
                Check(SameKinds(table.boutiqueKinds, cached.boutiqueKinds), "taken answer reads back: boutique");
            }
            break;
        }
        case 2:
            (void)WriteFileAtomic(SeenClassVersionsPath(), bytes);
            ReadSeenClasses();
            (void)ReadClassVersions(table);
            break;
        default: (void)ParseHotWords(text); break;
    }
    // Lookups by names taken from the input.
    const std::u16string name = text.substr(0, text.size() / 3);
    (void)FindClassItem(table, name);
    (void)IsBoutiqueClass(table, StoreRoot() + u"/" + name + u"/x");
    return 0;
}
