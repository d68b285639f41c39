#pragma once
// The recent list (under the root) and the common-use lists (one per gallery):
// file children in memory, small XML files on disk.

#include <string>
#include <string_view>
#include <vector>

namespace marrowfin {

struct GalleryNode;
struct GalleryStore;

// Entries beyond this are dropped when a list is written; the newest stand first.
inline constexpr size_t kListFileLimit = 500;
inline constexpr char16_t kRecentListFile[] = u"RecentlyUse.xml";
inline constexpr char16_t kCommonListFile[] = u"CommonUse.xml";
// Galleries of the user's collections keep no common-use list.
inline constexpr char16_t kCollectionMark[] = u"我的收";

// The exact bytes of a list file: mark, declaration, one Item per entry with
// its path unescaped, lone CR line ends. Null entries are skipped.
std::string ComposeListFile(const std::vector<GalleryNode*>& entries);
// The paths of a list file that pass the filters (not empty, present on disk,
// ending in ".dwg" in any case), in file order. A missing or broken file gives none.
std::vector<std::u16string> ReadListFile(std::u16string_view file);

// Moves a block to the front of the recent list, dropping older entries of
// the same path. Nothing without a root.
void RememberRecent(GalleryStore& store, std::u16string_view path, std::u16string_view name);
// Writes <root>/RecentlyUse.xml, then the common-use lists. Nothing without a root.
void SaveRecentList(GalleryStore& store);
// Writes <gallery>/CommonUse.xml for every gallery but the collections.
void SaveCommonLists(GalleryStore& store);
// Appends the entries of <root>/RecentlyUse.xml to the root's file children.
void LoadRecentList(GalleryStore& store);
// The same below any root node, such as a worker's detached one.
void LoadRecentListInto(GalleryNode& root);
// The panel's reload of "最近使用": the entries in memory go, the file is read anew.
void ReloadRecentList(GalleryStore& store);
// Appends the entries of <gallery path>/CommonUse.xml to the gallery's file children.
void LoadCommonList(GalleryNode* gallery);

}  // namespace marrowfin
