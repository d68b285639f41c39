#include "collection/collection_lists.h"

#include "markup/markup_document.h"
#include "platform/ini_file.h"

namespace marrowfin {

namespace {

// Opens the document and puts the main cursor on `root`; the shape says how
// far it got.
DocumentShape OpenRoot(std::u16string_view text, MarkupDocument& doc) {
    if (text.empty() || !doc.SetText(text)) return DocumentShape::Unparsable;
    return doc.FindElement(u"root") ? DocumentShape::Root : DocumentShape::NoRoot;
}

// The block under the child cursor.
ListedBlock ChildBlock(const MarkupDocument& doc) {
    ListedBlock block;
    block.id = doc.GetChildAttribute(u"dwg_id");
    block.filename = doc.GetChildAttribute(u"filename");
    block.url = doc.GetChildAttribute(u"dwg_url");
    block.info = doc.GetChildAttribute(u"dwg_info");
    block.size = ParseProfileInt(doc.GetChildAttribute(u"size"));
    block.boutique = doc.GetChildAttribute(u"gv") == u"1";
    return block;
}

}  // namespace

FolderListDocument ParseFolderList(std::u16string_view text) {
    FolderListDocument out;
    MarkupDocument doc;
    out.shape = OpenRoot(text, doc);
    if (out.shape != DocumentShape::Root) return out;
    doc.EnterElement();
    while (doc.FindElement(u"favorites")) {
        ListedFolder& folder = out.folders.emplace_back();
        folder.id = doc.GetAttribute(u"favorites_id");
        folder.name = doc.GetAttribute(u"favorites_name");
        while (doc.FindChildElement(u"dwg")) folder.blocks.push_back(ChildBlock(doc));
    }
    return out;
}

BlockListDocument ParseBlockList(std::u16string_view text) {
    BlockListDocument out;
    MarkupDocument doc;
    out.shape = OpenRoot(text, doc);
    if (out.shape != DocumentShape::Root) return out;
    while (doc.FindChildElement(u"dwg")) out.blocks.push_back(ChildBlock(doc));
    return out;
}

}  // namespace marrowfin
