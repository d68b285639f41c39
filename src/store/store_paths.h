#pragma once
// Where each file of the store lies. <doc> is DocumentRoot(), <root> is
// <doc>/Orsolen, <exe> the host's folder. '/' is the separator throughout.

#include <string>
#include <string_view>

namespace marrowfin {

std::u16string StoreRoot();  // <root>
std::u16string ShowListPath();  // <root>/Show.xml
std::u16string VersionIniPath();  // <root>/version.ini
std::u16string NewInfoIniPath();  // <root>/NewInfo.ini
std::u16string RecentListPath();  // <root>/RecentlyUse.xml
std::u16string ClassTablePath();  // <root>/NewAllGalleryType1.xml
std::u16string SeenClassVersionsPath();  // <root>/NewAddGalleryType.xml
std::u16string GalleryFolder(std::u16string_view gallery);  // <root>/<gallery>
std::u16string CataloguePath(std::u16string_view gallery);  // <root>/<gallery>/<gallery>.xdb
std::u16string CommonListPath(std::u16string_view gallery);  // <root>/<gallery>/CommonUse.xml
std::u16string ClassFolder(std::u16string_view gallery, std::u16string_view cls);  // <root>/<gallery>/<class>
std::u16string BlockPath(std::u16string_view gallery, std::u16string_view cls, std::u16string_view fileName);
std::u16string CollectionFolder();  // <root>/我的收藏
std::u16string NumberedCollectionFolder(int number);  // <root>/<number>_收藏
std::u16string AdFolder();  // <root>/ad
std::u16string AdListPath();  // <root>/ad/ad.xml
std::u16string SearchFolder();  // <root>/search
std::u16string SearchVersionPath();  // <root>/search/ver.ini
std::u16string SkinSheetPath(int number);  // <exe>/BrindleSkin/images_<n>.png
std::u16string PreviousGenerationFolder();  // <doc>/Pellicor

}  // namespace marrowfin
