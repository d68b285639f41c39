#include "panel/classes/class_table.h"
#include "panel/classes/class_table_reader.h"
#include "platform/files.h"
#include "platform/text.h"
#include "store/store_paths.h"

namespace marrowfin {

namespace {

// The root level of NewAddGalleryType.xml: every element named `tag`, as
// (text, ver attribute).
std::vector<std::pair<std::u16string, std::u16string>> ReadSeenFile(std::u16string_view tag) {
    std::vector<std::pair<std::u16string, std::u16string>> entries;
    const std::u16string path = SeenClassVersionsPath();
    if (!FileExists(path)) return entries;
    MarkupDocument doc;
    (void)doc.LoadFile(path);  // several top-level elements are not well-formed, yet readable
    while (doc.FindElement(tag)) entries.emplace_back(doc.GetElementText(), doc.GetAttribute(u"ver"));
    return entries;
}

void PublishTitles(const ClassTable& table) {
    g_typeWord = table.typeWord;
    g_boutiqueTitle = table.boutiqueTitle;
    g_generalTitle = table.generalTitle;
}

}  // namespace

bool SaveClassTable(const MarkupDocument& doc) {
    // A first run may come before the store's folder exists.
    (void)CreateDirectories(StoreRoot());
    return WriteFileAtomic(ClassTablePath(), "\xEF\xBB\xBF" + Utf16ToUtf8(doc.Text()));
}

void ReadSeenClasses() {
    for (auto& [name, ver] : ReadSeenFile(u"item")) {
        ClassExtra& extra = g_seenClasses[name];
        extra.name = name;
        extra.seen = ver;
    }
}

bool WriteSeenVersions() {
    // Elements side by side at the top level, as the reader expects them.
    MarkupDocument doc;
    for (const auto& [name, extra] : g_seenClasses)
        if (doc.AddElement(u"item", name)) (void)doc.SetAttribute(u"ver", extra.seen);
    for (const auto& [name, extra] : g_seenKinds)
        if (doc.AddElement(u"class", name)) (void)doc.SetAttribute(u"ver", extra.seen);
    (void)CreateDirectories(StoreRoot());
    return WriteFileAtomic(SeenClassVersionsPath(), "\xEF\xBB\xBF" + Utf16ToUtf8(doc.Text()));
}

ClassTableVersions ReadClassVersions(ClassTable& table) {
    ClassTableVersions versions;
    const std::u16string path = ClassTablePath();
    if (!FileExists(path)) return versions;
    MarkupDocument doc;
    (void)doc.LoadFile(path);
    versions = ReadClassDocument(doc, table);
    g_typeWord = table.typeWord;

    for (auto& [name, ver] : ReadSeenFile(u"class")) g_seenKinds[name] = ClassExtra{name, ver, ver};
    // A first run starts without marks on kinds: what the table holds now counts as seen.
    if (g_seenKinds.empty()) {
        for (const auto& [key, items] : table.boutiqueKinds) {
            const std::u16string name = KindName(key);
            ClassExtra& extra = g_seenKinds[name];
            extra.name = name;
            extra.seen = HighestVersion(items);
        }
    }
    return versions;
}

bool ApplyClassTable(std::u16string_view text, ClassTable& table, const ClassTableVersions& startVersions) {
    const std::u16string path = ClassTablePath();
    MarkupDocument doc;
    bool readable = false;
    if (!text.empty() && doc.SetText(text) && doc.FindElement(u"root")) {
        // A table that cannot be stored is still the newest one: use it.
        (void)SaveClassTable(doc);
        readable = true;
    }
    if (!readable) {
        // Nothing new, or an answer that does not parse: the cached table stays in force.
        if (!FileExists(path)) return false;
        doc = MarkupDocument();
        (void)doc.LoadFile(path);
    }

    ClassTable fresh;
    const ClassTableVersions versions = ReadClassDocument(doc, fresh);
    table = std::move(fresh);

    if (!startVersions.empty()) {
        for (const auto& [name, ver] : versions) {
            const auto old = startVersions.find(name);
            if (old != startVersions.end() && old->second == ver) continue;
            ClassExtra& extra = g_seenClasses[name];
            extra.name = name;
            extra.newest = ver;
            extra.seen = old == startVersions.end() ? std::u16string() : old->second;
        }
        for (const auto& [key, items] : table.boutiqueKinds) {
            const std::u16string name = KindName(key);
            ClassExtra& extra = g_seenKinds[name];
            extra.name = name;
            extra.newest = HighestVersion(items);
        }
    }
    PublishTitles(table);
    return true;
}

}  // namespace marrowfin
