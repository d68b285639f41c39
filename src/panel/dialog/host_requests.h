#pragma once
// What the panel sends to the host: requests and notices arrive at the host's
// window as MarrowfinHostEvent (marrowfin/marrowfin.h).

#include <QWidget>
#include <cstdint>
#include <string>

#include "platform/window_messages.h"

namespace marrowfin {

// The application's main window, as the host named it (MarrowfinSetMainWindow).
QWidget* ApplicationMainWindow();
void SetApplicationMainWindow(QWidget* window);

// Posts request 2, 3 or 4 with an owned path. False when the window is gone.
bool PostHostInsertion(WindowHandle host, uint32_t code, std::u16string path);
// Sends a synchronous request (1, 5, 6, 7, 8); lParam points to the answer.
void SendHostRequest(WindowHandle host, uint32_t code, void* answer);
// Posts GalleryHostNotice with the panel's handle.
bool PostHostNotice(WindowHandle host, WindowHandle panel, int notice);

}  // namespace marrowfin
