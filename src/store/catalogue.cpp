#include "store/catalogue.h"

#include <string>

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/text.h"
#include "store/aes.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/seal.h"

namespace marrowfin {

namespace {

std::u16string Decimal(int32_t value) { return Utf8ToUtf16(std::to_string(value)); }

}  // namespace

std::string ComposeCatalogue(const GalleryStore& store, const GalleryNode& gallery) {
    // Values go in as they stand: earlier versions never escaped them, and
    // the files must stay byte for byte what they always were.
    std::u16string text = u"\uFEFF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"";
    text += Utf8ToUtf16(MakeSeal(gallery.name, gallery.boutique));
    text += u"\">\r";
    for (const GalleryNode* cls : gallery.dirChildren) {
        if (!cls) continue;
        text += u"<sub n=\"";
        text += cls->name;
        text += u"\" ver=\"";
        text += Decimal(cls->version);
        text += u"\" u_b=\"";
        text += cls->remoteBase;
        text += u"\" >";
        if (store.staleClasses.find(cls->path) == store.staleClasses.end()) {
            for (const GalleryNode* block : cls->fileChildren) {
                if (!block) continue;
                text += u"<itm fn=\"";
                text += block->name;
                text += u"\" sz=\"";
                text += Decimal(block->size);
                text += u"\" hi=\"";
                text += block->hidden ? u"1" : u"0";
                text += u"\" />";
            }
        }
        text += u"</sub>";
    }
    text += u"</root>\r";
    return Utf16ToUtf8(text);
}

void WriteCatalogue(const GalleryStore& store, std::u16string_view galleryName) {
    const GalleryNode* root = store.root;
    if (!root) return;
    for (const GalleryNode* gallery : root->dirChildren) {
        if (!gallery || (!galleryName.empty() && gallery->name != galleryName)) continue;
        if (!DirectoryExists(gallery->path)) (void)CreateDirectories(gallery->path);
        // A failed write leaves the old file; the tree is not affected.
        (void)WriteFileAtomic(gallery->path + u"/" + gallery->name + u".xdb", ComposeCatalogue(store, *gallery));
    }
}

bool ReadCatalogue(GalleryStore& store, std::u16string_view galleryName) {
    GalleryNode* root = store.root;
    if (!root) return false;
    const std::u16string galleryPath = root->path + u"/" + std::u16string(galleryName);
    const std::u16string file = galleryPath + u"/" + std::u16string(galleryName) + u".xdb";
    if (!FileExists(file)) return false;
    MarkupDocument doc;
    if (!doc.LoadFile(file) || !doc.FindElement(u"root")) return false;

    bool boutique = false;
    {
        const AES aes(reinterpret_cast<const uint8_t*>(kSealKey));
        const std::u16string plain = Utf8ToUtf16(DecryptFromHex(aes, Utf16ToUtf8(doc.GetAttribute(u"re"))));
        // Only the name is compared; the digit behind it is the flag.
        if (plain.size() < galleryName.size() || plain.compare(0, galleryName.size(), galleryName) != 0) return false;
        boutique = !plain.empty() && plain.back() == u'1';
    }

    GalleryNode* gallery = FindNodeByPath(root, galleryPath);
    if (!gallery) {
        gallery = new GalleryNode(root->name, galleryPath, std::u16string(galleryName), kKindDir, false, boutique, 0);
        AddChild(root, gallery, false);
    }

    if (!doc.EnterElement()) return true;
    while (doc.FindElement(u"sub")) {
        const std::u16string n = doc.GetAttribute(u"n");
        if (n.empty()) continue;
        auto* cls = new GalleryNode(gallery->name, gallery->path + u"/" + n, n, kKindDir, false, false, 0);
        cls->version = ParseProfileInt(doc.GetAttribute(u"ver"));
        cls->remoteBase = doc.GetAttribute(u"u_b");
        AddChild(gallery, cls, false);
        if (!doc.EnterElement()) continue;
        while (doc.FindElement(u"itm")) {
            const std::u16string fn = doc.GetAttribute(u"fn");
            const std::u16string sz = doc.GetAttribute(u"sz");
            const std::u16string hi = doc.GetAttribute(u"hi");
            if (fn.empty() || sz.empty() || hi.empty()) continue;
            auto* block = new GalleryNode(cls->name, cls->path + u"/" + fn, fn, kKindFile, hi == u"1", boutique,
                                          ParseProfileInt(sz));
            block->remoteBase = cls->remoteBase + u"/" + fn;
            AddChild(cls, block, false);
        }
        (void)doc.LeaveElement();
    }
    return true;
}

}  // namespace marrowfin
