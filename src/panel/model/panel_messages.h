#pragma once
// Message numbers inside the library: the panel's own, and the Windows ones
// the panel answers. The host's messages are in marrowfin/marrowfin.h.

#include <cstdint>

#include "marrowfin/marrowfin.h"
#include "net/download_queue.h"  // MsgFileReady
#include "net/http_stack.h"  // MsgProgress
#include "panel/model/panel_numbers.h"

namespace marrowfin {

inline constexpr uint32_t GalleryHostRequest = MARROWFIN_GALLERY_HOST_REQUEST;
inline constexpr uint32_t GalleryHostNotice = MARROWFIN_GALLERY_HOST_NOTICE;
inline constexpr uint32_t GalleryPanelControl = MARROWFIN_GALLERY_PANEL_CONTROL;
inline constexpr uint32_t WM_COPYDATA_MESSAGE = MARROWFIN_COPY_DATA;

// What WM_COPYDATA carries: lpData is a zero-terminated UTF-16 text.
struct CopyDataStruct {
    std::uintptr_t dwData = 0;
    std::uint32_t cbData = 0;
    const char16_t* lpData = nullptr;
};

}  // namespace marrowfin
