#include "panel/classes/class_table.h"

#include <cstdio>

#include "panel/classes/class_table_reader.h"
#include "platform/product_texts.h"
#include "platform/paths.h"
#include "store/store_paths.h"

namespace marrowfin {

std::map<std::u16string, ClassExtra> g_seenClasses;
std::map<std::u16string, ClassExtra> g_seenKinds;
std::u16string g_typeWord = u"选择图库";
std::u16string g_boutiqueTitle(kBoutiqueTitle);
std::u16string g_generalTitle(kGeneralTitle);

namespace {

constexpr std::u16string_view kBoutiqueSort = kBoutiqueTitle;
constexpr std::u16string_view kGeneralSort = kGeneralTitle;
constexpr std::u16string_view kAllKinds = u"全部";

struct PendingItem {
    ClassItem item;
    std::u16string kind;
};

bool Contains(std::u16string_view text, std::u16string_view part) {
    return text.find(part) != std::u16string_view::npos;
}

// A kind takes an item whose kind it names, and every item when it is "全部".
// An item without any kind names none: it is only listed under "全部".
void FileItem(KindMap& kinds, const PendingItem& pending) {
    for (auto& [key, items] : kinds) {
        const std::u16string name = KindName(key);
        const bool named = !pending.kind.empty() && Contains(name, pending.kind);
        if (named || Contains(name, kAllKinds)) items.push_back(pending.item);
    }
}

void ReadSort(MarkupDocument& doc, ClassTable& table, int& number) {
    const std::u16string id = doc.GetAttribute(u"id");
    const std::u16string show = doc.GetAttribute(u"show");
    KindMap* kinds = nullptr;
    if (id == kBoutiqueSort) {
        kinds = &table.boutiqueKinds;
        table.boutiqueTitle = show;
    } else if (id == kGeneralSort) {
        kinds = &table.generalKinds;
        table.generalTitle = show;
    }
    doc.EnterElement();
    while (doc.FindElement(u"kind")) {
        // Every kind takes a number, also in sorts that are skipped, so
        // numbers jump across sorts but the file's order stays.
        const std::u16string key = KindKey(number++, doc.GetElementText());
        if (kinds) (*kinds)[key];
    }
    doc.LeaveElement();
}

void ReadType(MarkupDocument& doc, std::vector<PendingItem>& pending) {
    std::u16string lastKind;
    doc.EnterElement();
    while (doc.FindElement(u"item")) {
        PendingItem entry;
        bool hasKind = false;
        doc.EnterElement();
        while (doc.FindElement()) {
            const std::u16string tag = doc.GetTagName();
            if (tag == u"kind") {
                entry.kind = doc.GetElementText();
                hasKind = true;
            } else if (tag == u"name") {
                entry.item.name = doc.GetElementText();
            } else if (tag == u"describe") {
                entry.item.describe = doc.GetElementText();
            } else if (tag == u"gv") {
                entry.item.gv = doc.GetElementText();
            } else if (tag == u"ver") {
                entry.item.ver = doc.GetElementText();
            }
        }
        doc.LeaveElement();
        if (!hasKind) entry.kind = lastKind;
        lastKind = entry.kind;
        pending.push_back(std::move(entry));
    }
    doc.LeaveElement();
}

}  // namespace

std::u16string KindKey(int number, std::u16string_view kind) {
    char prefix[16];
    std::snprintf(prefix, sizeof prefix, "%03d_", number);
    std::u16string key(prefix, prefix + std::char_traits<char>::length(prefix));
    key += kind;
    return key;
}

std::u16string KindName(std::u16string_view key) {
    const size_t mark = key.find(u'_');
    return std::u16string(mark == std::u16string_view::npos ? key : key.substr(mark + 1));
}

ClassTableVersions ReadClassDocument(MarkupDocument& doc, ClassTable& table) {
    ClassTableVersions versions;
    doc.RewindMain();
    while (doc.FindElement(u"root")) {
        table.generalKinds.clear();
        table.boutiqueKinds.clear();
        int number = 1;
        // Items wait until the whole root is read: a `type` may stand before
        // the sorts whose kinds it fills.
        std::vector<PendingItem> pending;
        doc.EnterElement();
        while (doc.FindElement()) {
            const std::u16string tag = doc.GetTagName();
            if (tag == u"word") {
                table.typeWord = doc.GetElementText();
            } else if (tag == u"showdesc") {
                table.showDesc = doc.GetElementText() == u"1";
            } else if (tag == u"sort") {
                ReadSort(doc, table, number);
            } else if (tag == u"type") {
                ReadType(doc, pending);
            }
        }
        doc.LeaveElement();
        for (const PendingItem& entry : pending) {
            versions[entry.item.name] = entry.item.ver;
            FileItem(entry.item.gv == u"1" ? table.boutiqueKinds : table.generalKinds, entry);
        }
    }
    return versions;
}

std::u16string HighestVersion(const std::vector<ClassItem>& items) {
    std::u16string highest;
    for (const ClassItem& item : items)
        if (item.ver > highest) highest = item.ver;
    return highest;
}

ClassItem FindClassItem(const ClassTable& table, std::u16string_view name) {
    for (const KindMap* kinds : {&table.generalKinds, &table.boutiqueKinds})
        for (const auto& [key, items] : *kinds)
            for (const ClassItem& item : items)
                if (item.name == name) return item;
    return {};
}

bool IsBoutiqueClass(const ClassTable& table, std::u16string_view path) {
    const std::u16string folder = u"/" + FileNameOf(StoreRoot()) + u"/";
    const size_t at = path.find(folder);
    if (at == std::u16string_view::npos) return false;
    std::u16string_view top = path.substr(at + folder.size());
    top = top.substr(0, top.find(u'/'));
    if (top.empty()) return false;
    return FindClassItem(table, top).gv == u"1";
}

}  // namespace marrowfin
