#include "store/show_list.h"

#include "markup/markup_document.h"
#include "platform/files.h"
#include "store/store_paths.h"

namespace marrowfin {

namespace {

// Show.xml loaded with the cursor inside its first <root>; false without a
// file or a root. A list that is not quite well-formed still yields what
// could be read.
bool EnterShowList(MarkupDocument& doc) {
    const std::u16string file = ShowListPath();
    if (!FileExists(file)) return false;
    (void)doc.LoadFile(file);
    return doc.FindElement(u"root") && doc.EnterElement();
}

}  // namespace

std::vector<ShowItem> ReadShowList(bool createFolders) {
    std::vector<ShowItem> items;
    MarkupDocument doc;
    if (!EnterShowList(doc)) return items;
    size_t count = 0;
    while (doc.FindElement(u"item")) {
        if (count > kShowListLimit - 1) break;
        ShowItem item{doc.GetElementText(), doc.GetAttribute(u"describe")};
        if (createFolders) {
            const std::u16string folder = GalleryFolder(item.name);
            if (!DirectoryExists(item.name.empty() ? StoreRoot() : folder))
                (void)CreateDirectories(item.name.empty() ? StoreRoot() : folder);
        }
        if (item.name.empty()) continue;
        ++count;
        items.push_back(std::move(item));
    }
    return items;
}

bool AddGalleryToShowList(std::u16string_view name) {
    // An empty item would only stand in the list as a nameless row.
    if (name.empty()) return false;
    const std::u16string file = ShowListPath();
    (void)CreateDirectories(StoreRoot());
    if (!FileExists(file)) {
        MarkupDocument empty;
        if (!empty.AddElement(u"root") || !empty.SaveFile(file)) return false;
    }
    MarkupDocument doc;
    // Without a root there is no list to add to; the file is left for the user.
    if (!EnterShowList(doc)) return false;
    while (doc.FindElement(u"item"))
        if (doc.GetElementText() == name) return false;
    // The failed search left the main cursor on the last item: the new one goes behind it.
    if (!doc.AddElement(u"item", name)) return false;
    return doc.SaveFile(file);
}

std::vector<ShowItem> ReadAllShowItems() {
    std::vector<ShowItem> items;
    const std::u16string file = ShowListPath();
    if (!FileExists(file)) return items;
    MarkupDocument doc;
    (void)doc.LoadFile(file);
    while (doc.FindElement(u"root")) {
        if (!doc.EnterElement()) continue;
        while (doc.FindElement(u"item")) items.push_back({doc.GetElementText(), doc.GetAttribute(u"describe")});
        (void)doc.LeaveElement();
    }
    return items;
}

bool WriteShowList(const std::vector<ShowItem>& items) {
    MarkupDocument doc;
    if (!doc.AddElement(u"root") || !doc.EnterElement()) return false;
    for (const ShowItem& item : items) {
        // A name the document refuses would not read back: it is left out.
        if (!doc.AddElement(u"item", item.name)) continue;
        (void)doc.SetAttribute(u"describe", item.describe);
    }
    (void)doc.LeaveElement();
    (void)CreateDirectories(StoreRoot());
    return doc.SaveFile(ShowListPath());
}

ShowListing CountShowList(std::u16string_view name) {
    ShowListing listing;
    MarkupDocument doc;
    if (!EnterShowList(doc)) return listing;
    while (doc.FindElement(u"item")) {
        ++listing.count;
        if (doc.GetElementText() == name) listing.listed = true;
    }
    return listing;
}

}  // namespace marrowfin
