#include "store/store_paths.h"

#include <string>

#include "platform/paths.h"
#include "platform/text.h"
#include "store/gallery_node.h"

namespace marrowfin {

namespace {
std::u16string Join(std::u16string_view a, std::u16string_view b) {
    std::u16string out(a);
    out += u'/';
    out += b;
    return out;
}
std::u16string Number(int n) { return Utf8ToUtf16(std::to_string(n)); }
}  // namespace

std::u16string StoreRoot() { return Join(DocumentRoot(), kRootName); }
std::u16string ShowListPath() { return Join(StoreRoot(), u"Show.xml"); }
std::u16string VersionIniPath() { return Join(StoreRoot(), u"version.ini"); }
std::u16string NewInfoIniPath() { return Join(StoreRoot(), u"NewInfo.ini"); }
std::u16string RecentListPath() { return Join(StoreRoot(), u"RecentlyUse.xml"); }
std::u16string ClassTablePath() { return Join(StoreRoot(), u"NewAllGalleryType1.xml"); }
std::u16string SeenClassVersionsPath() { return Join(StoreRoot(), u"NewAddGalleryType.xml"); }
std::u16string GalleryFolder(std::u16string_view gallery) { return Join(StoreRoot(), gallery); }
std::u16string CataloguePath(std::u16string_view gallery) {
    return Join(GalleryFolder(gallery), std::u16string(gallery) + u".xdb");
}
std::u16string CommonListPath(std::u16string_view gallery) { return Join(GalleryFolder(gallery), u"CommonUse.xml"); }
std::u16string ClassFolder(std::u16string_view gallery, std::u16string_view cls) {
    return Join(GalleryFolder(gallery), cls);
}
std::u16string BlockPath(std::u16string_view gallery, std::u16string_view cls, std::u16string_view fileName) {
    return Join(ClassFolder(gallery, cls), fileName);
}
std::u16string CollectionFolder() { return Join(StoreRoot(), u"我的收藏"); }
std::u16string NumberedCollectionFolder(int number) { return Join(StoreRoot(), Number(number) + u"_收藏"); }
std::u16string AdFolder() { return Join(StoreRoot(), u"ad"); }
std::u16string AdListPath() { return Join(AdFolder(), u"ad.xml"); }
std::u16string SearchFolder() { return Join(StoreRoot(), u"search"); }
std::u16string SearchVersionPath() { return Join(SearchFolder(), u"ver.ini"); }
std::u16string SkinSheetPath(int number) {
    return Join(Join(HostFolder(), u"BrindleSkin"), u"images_" + Number(number) + u".png");
}
std::u16string PreviousGenerationFolder() { return Join(DocumentRoot(), u"Pellicor"); }

}  // namespace marrowfin
