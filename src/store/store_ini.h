#pragma once
// Small state in private-profile files of the store: version.ini and NewInfo.ini.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/ini_file.h"

namespace marrowfin {

// version.ini, section `version`: highest class version seen for a gallery,
// read with the default "0" into 25 characters; 0 when absent or unreadable.
int32_t ReadGalleryVersion(std::u16string_view gallery);
bool WriteGalleryVersion(std::u16string_view gallery, int32_t version);

// version.ini read once, for a run that reads the versions of many
// galleries: each answers as ReadGalleryVersion would have at the reading.
class GalleryVersionsRead {
public:
    GalleryVersionsRead();
    int32_t Of(std::u16string_view gallery) const;

private:
    IniSection m_section;
};

// NewInfo.ini, section `OldCollect`, key `TIP` ("0" default, 8 characters):
// "1" once the notice on the earlier service's collections has been dealt with.
std::u16string ReadOldCollectTip();
bool WriteOldCollectTip(std::u16string_view value);

}  // namespace marrowfin
