#include "store/store_ini.h"

#include <string>

#include "platform/ini_file.h"
#include "platform/text.h"
#include "store/store_paths.h"

namespace marrowfin {

int32_t ReadGalleryVersion(std::u16string_view gallery) {
    return ParseProfileInt(IniGetString(VersionIniPath(), u"version", gallery, u"0", 25));
}

GalleryVersionsRead::GalleryVersionsRead() : m_section(VersionIniPath(), u"version") {}

int32_t GalleryVersionsRead::Of(std::u16string_view gallery) const {
    return ParseProfileInt(m_section.Get(gallery, u"0", 25));
}

bool WriteGalleryVersion(std::u16string_view gallery, int32_t version) {
    return IniWriteString(VersionIniPath(), u"version", gallery, Utf8ToUtf16(std::to_string(version)));
}

std::u16string ReadOldCollectTip() { return IniGetString(NewInfoIniPath(), u"OldCollect", u"TIP", u"0", 8); }

bool WriteOldCollectTip(std::u16string_view value) {
    return IniWriteString(NewInfoIniPath(), u"OldCollect", u"TIP", value);
}

}  // namespace marrowfin
