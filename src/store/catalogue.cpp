#include "store/catalogue.h"

#include <charconv>
#include <string>

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/ini_file.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/aes.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"
#include "store/seal.h"

namespace marrowfin {

namespace {

// Appends UTF-8 as Utf16ToUtf8 gives it (a lone surrogate becomes U+FFFD).
// Every value stands between ASCII marks, so encoding piece by piece gives
// the same bytes as encoding the whole text at once.
void AppendUtf8(std::string& out, std::u16string_view text) {
    const size_t n = text.size();
    size_t i = 0;
    // Names and URLs are mostly ASCII: copy such runs without the branches.
    while (i < n) {
        size_t run = i;
        while (run < n && text[run] < 0x80) ++run;
        if (run > i) {
            const size_t at = out.size();
            out.resize(at + (run - i));
            char* o = out.data() + at;
            for (size_t k = i; k < run; ++k) *o++ = static_cast<char>(text[k]);
            i = run;
            if (i == n) break;
        }
        uint32_t cp = text[i];
        if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp <= 0xDFFF) {
            cp = 0xFFFD;
        }
        ++i;
        char bytes[4];
        size_t count;
        if (cp < 0x800) {
            bytes[0] = static_cast<char>(0xC0 | (cp >> 6));
            bytes[1] = static_cast<char>(0x80 | (cp & 0x3F));
            count = 2;
        } else if (cp < 0x10000) {
            bytes[0] = static_cast<char>(0xE0 | (cp >> 12));
            bytes[1] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            bytes[2] = static_cast<char>(0x80 | (cp & 0x3F));
            count = 3;
        } else {
            bytes[0] = static_cast<char>(0xF0 | (cp >> 18));
            bytes[1] = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            bytes[2] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            bytes[3] = static_cast<char>(0x80 | (cp & 0x3F));
            count = 4;
        }
        out.append(bytes, count);
    }
}

void AppendDecimal(std::string& out, int32_t value) {
    char digits[12];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, static_cast<size_t>(end - digits));
}

// Room for the whole file up front: a gallery's catalogue runs to hundreds of
// kilobytes, and growing by doubling would copy it several times over.
size_t EstimateBytes(const StaleClasses& staleClasses, const GalleryNode& gallery) {
    constexpr size_t kHead = 64 + 128;  // declaration, root tag with a seal of a long name
    constexpr size_t kSubMarks = 40;  // <sub n="" ver="" u_b="" ></sub> and the digits
    constexpr size_t kItmMarks = 32;  // <itm fn="" sz="" hi="" /> and the digits
    size_t bytes = kHead + gallery.name.size() * 3;
    for (const GalleryNode* cls : gallery.dirChildren) {
        if (!cls) continue;
        bytes += kSubMarks + (cls->name.size() + cls->remoteBase.size()) * 3;
        if (staleClasses.find(cls->Path()) != staleClasses.end()) continue;
        const auto& blocks = cls->fileChildren;
        const size_t count = blocks.size();
        for (size_t i = 0; i < count; ++i) {
            // Bound by memory latency: ask early for the node a few places ahead.
            if (i + 8 < count && blocks[i + 8]) __builtin_prefetch(blocks[i + 8]);
            if (blocks[i]) bytes += kItmMarks + blocks[i]->name.size() * 3;
        }
    }
    return bytes;
}

}  // namespace

std::string ComposeCatalogue(const GalleryStore& store, const GalleryNode& gallery) {
    return ComposeCatalogue(store.staleClasses, gallery);
}

std::string ComposeCatalogue(const StaleClasses& staleClasses, const GalleryNode& gallery) {
    // Values go in as they stand: earlier versions never escaped them, and
    // the files must stay byte for byte what they always were.
    std::string out;
    out.reserve(EstimateBytes(staleClasses, gallery));
    out += "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root re=\"";
    out += MakeSeal(gallery.name, gallery.boutique);
    out += "\">\r";
    for (const GalleryNode* cls : gallery.dirChildren) {
        if (!cls) continue;
        out += "<sub n=\"";
        AppendUtf8(out, cls->name);
        out += "\" ver=\"";
        AppendDecimal(out, cls->version);
        out += "\" u_b=\"";
        AppendUtf8(out, cls->remoteBase);
        out += "\" >";
        if (staleClasses.find(cls->Path()) == staleClasses.end()) {
            const auto& blocks = cls->fileChildren;
            const size_t count = blocks.size();
            for (size_t i = 0; i < count; ++i) {
                if (i + 4 < count && blocks[i + 4]) __builtin_prefetch(blocks[i + 4]->name.data());
                const GalleryNode* block = blocks[i];
                if (!block) continue;
                out += "<itm fn=\"";
                AppendUtf8(out, block->name);
                out += "\" sz=\"";
                AppendDecimal(out, block->size);
                out += block->hidden ? "\" hi=\"1\" />" : "\" hi=\"0\" />";
            }
        }
        out += "</sub>";
    }
    out += "</root>\r";
    return out;
}

std::u16string CatalogueFile(const GalleryNode& gallery) {
    std::u16string file = JoinPath(gallery.Path(), gallery.name);
    file += u".xdb";
    return file;
}

void WriteCatalogue(const GalleryStore& store, std::u16string_view galleryName) {
    const GalleryNode* root = store.root;
    if (!root) return;
    for (const GalleryNode* gallery : root->dirChildren) {
        if (!gallery || (!galleryName.empty() && gallery->name != galleryName)) continue;
        if (!DirectoryExists(gallery->Path())) (void)CreateDirectories(gallery->Path());
        // A failed write leaves the old file; the tree is not affected.
        (void)WriteFileAtomic(CatalogueFile(*gallery), ComposeCatalogue(store, *gallery));
    }
}

bool ReadCatalogue(GalleryStore& store, std::u16string_view galleryName) {
    return store.root && ReadCatalogueInto(*store.root, galleryName);
}

bool ReadCatalogueInto(GalleryNode& rootNode, std::u16string_view galleryName) {
    GalleryNode* root = &rootNode;
    const std::u16string galleryPath = root->Path() + u"/" + std::u16string(galleryName);
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
    std::u16string fn;
    std::u16string sz;
    std::u16string hi;
    while (doc.FindElement(u"sub")) {
        const std::u16string n = doc.GetAttribute(u"n");
        if (n.empty()) continue;
        auto* cls = new GalleryNode(gallery->name, JoinPath(gallery->Path(), n), n, kKindDir, false, false, 0);
        cls->version = ParseProfileInt(doc.GetAttribute(u"ver"));
        cls->remoteBase = doc.GetAttribute(u"u_b");
        AddChild(gallery, cls, false);
        if (!doc.EnterElement()) continue;
        while (doc.FindElement(u"itm")) {
            doc.GetAttribute(u"fn", fn);
            doc.GetAttribute(u"sz", sz);
            doc.GetAttribute(u"hi", hi);
            if (fn.empty() || sz.empty() || hi.empty()) continue;
            AddChild(cls, NewBlock(fn, hi == u"1", boutique, ParseProfileInt(sz)), false);
        }
        (void)doc.LeaveElement();
    }
    return true;
}

}  // namespace marrowfin
