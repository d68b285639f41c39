#include "store/usage_lists.h"

#include <algorithm>

#include "markup/markup_document.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

bool HasDwgExtension(std::u16string_view path) {
    if (path.size() < 4) return false;
    return ToLowerFold(path.substr(path.size() - 4)) == u".dwg";
}

void AppendEntries(GalleryNode* owner, std::u16string_view file, std::u16string_view ownerName) {
    for (std::u16string& path : ReadListFile(file)) {
        std::u16string name = FileStem(path, false);
        auto* entry =
            new GalleryNode(std::u16string(ownerName), std::move(path), std::move(name), kKindFile, false, false, 0);
        AddChild(owner, entry, false);
    }
}

void WriteListFile(std::u16string_view file, const std::vector<GalleryNode*>& entries) {
    // A failed write leaves the old file and the list in memory as they are.
    (void)WriteFileAtomic(file, ComposeListFile(entries));
}

}  // namespace

std::string ComposeListFile(const std::vector<GalleryNode*>& entries) {
    std::u16string text = u"\uFEFF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r<root>\r";
    size_t written = 0;
    for (const GalleryNode* entry : entries) {
        if (!entry) continue;
        if (written == kListFileLimit) break;
        text += u"<Item path=\"";
        text += entry->Path();
        text += u"\" />\r";
        ++written;
    }
    text += u"</root>\r";
    return Utf16ToUtf8(text);
}

std::vector<std::u16string> ReadListFile(std::u16string_view file) {
    std::vector<std::u16string> paths;
    if (!FileExists(file)) return paths;
    MarkupDocument doc;
    if (!doc.LoadFile(file)) return paths;
    if (!doc.FindElement(u"root") || !doc.EnterElement()) return paths;
    while (doc.FindElement(u"Item")) {
        std::u16string path = doc.GetAttribute(u"path");
        if (path.empty() || !HasDwgExtension(path) || !PathExists(path)) continue;
        paths.push_back(std::move(path));
    }
    return paths;
}

void RememberRecent(GalleryStore& store, std::u16string_view path, std::u16string_view name) {
    GalleryNode* root = store.root;
    if (!root) return;
    auto& files = root->fileChildren;
    for (GalleryNode*& entry : files) {
        if (entry && entry->PathIs(path)) {
            SubtreeDeleter()(entry);
            entry = nullptr;
        }
    }
    files.erase(std::remove(files.begin(), files.end(), nullptr), files.end());
    auto* entry = new GalleryNode(kRootName, std::u16string(path), std::u16string(name), kKindFile, false, false, 0);
    AddChild(root, entry, true);
}

void SaveRecentList(GalleryStore& store) {
    if (!store.root) return;
    WriteListFile(store.root->Path() + u"/" + kRecentListFile, store.root->fileChildren);
    SaveCommonLists(store);
}

void SaveCommonLists(GalleryStore& store) {
    if (!store.root) return;
    for (const GalleryNode* gallery : store.root->dirChildren) {
        if (!gallery || gallery->name.view().find(kCollectionMark) != std::u16string::npos) continue;
        WriteListFile(gallery->Path() + u"/" + kCommonListFile, gallery->fileChildren);
    }
}

void LoadRecentList(GalleryStore& store) {
    if (store.root) LoadRecentListInto(*store.root);
}

void LoadRecentListInto(GalleryNode& root) { AppendEntries(&root, root.Path() + u"/" + kRecentListFile, kRootName); }

void ReloadRecentList(GalleryStore& store) {
    if (!store.root) return;
    for (GalleryNode*& entry : store.root->fileChildren) {
        SubtreeDeleter()(entry);
        entry = nullptr;
    }
    store.root->fileChildren.clear();
    LoadRecentList(store);
}

void LoadCommonList(GalleryNode* gallery) {
    if (!gallery) return;
    AppendEntries(gallery, gallery->Path() + u"/" + kCommonListFile, kCommonUseTag);
}

}  // namespace marrowfin
