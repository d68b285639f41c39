#pragma once
// The product's fixed texts that more than one place shows, compares or builds
// paths from. They are part of what users and the store see, so each is
// written once; a text used by one function stays beside it.

// Arrays rather than views: "a" + text and std::u16string + text both work.

namespace marrowfin {

inline constexpr char16_t kProductTitle[] = u"Ombrel";  // window titles and tips
inline constexpr char16_t kRecentText[] = u"最近使用";  // class row 0, the recent list
inline constexpr char16_t kCollectionText[] = u"我的收藏";  // class row 1, the collection's class
inline constexpr char16_t kCollectionRoute[] = u"/我的收藏";  // a route into the collection
inline constexpr char16_t kMirrorSuffix[] = u"_收藏";  // <userId>_收藏, the mirror's folder
inline constexpr char16_t kCommonText[] = u"常用";  // a gallery's common-use button
inline constexpr char16_t kBoutiqueTitle[] = u"精品图库";
inline constexpr char16_t kGeneralTitle[] = u"通用图库";
inline constexpr char16_t kCollectTitle[] = u"收藏图块";
inline constexpr char16_t kSortClosed[] = u"排序∨";  // the class manager's sort button
inline constexpr char16_t kSortOpen[] = u"排序∧";
inline constexpr char16_t kGalleryFetchFailed[] = u"下载图库失败，请检查网络后重试";

}  // namespace marrowfin
