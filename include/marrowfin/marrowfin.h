#pragma once
// Marrowfin: the block gallery a CAD host loads as libmarrowfin.so.
//
// How a host uses it:
//   1. dlopen the library, call FirstSynchro early: it builds the gallery tree
//      in the background and returns at once.
//   2. Register the host's main window with MarrowfinSetMainWindow (it stands
//      for the application's main window: it receives the panel's requests
//      and notices, and is the parent of the panel made by `show`).
//   3. Call `show` or ShowGallery when the user opens the gallery.
//   4. Pass every input event of the host's loop through GaDllPretanslateMsg;
//      when it answers 1 the panel consumed the event (the host's event filter
//      returns true).
//   5. Answer MARROWFIN_GALLERY_HOST_REQUEST and MARROWFIN_GALLERY_HOST_NOTICE
//      events on the main window (see MarrowfinHostEvent below).
//   6. Call CloseGallery before the host exits, so that the lists are saved.
//
// Texts cross as zero-terminated UTF-16; the library copies what it needs
// before returning and never keeps the host's pointer. A null text counts as
// empty. Window handles are opaque 64-bit numbers; 0 is no window. Paths and
// routes may use '\' or '/'.

#include <stdint.h>

#if defined(MARROWFIN_BUILDING_LIBRARY)
#define MARROWFIN_API __attribute__((visibility("default")))
#else
#define MARROWFIN_API
#endif

// ---- Messages -------------------------------------------------------------

// Panel -> host. wParam is a MarrowfinHostRequestCode; lParam as listed there.
#define MARROWFIN_GALLERY_HOST_REQUEST 2031u
// Panel -> host, posted. wParam is the panel's window handle; lParam a
// MarrowfinHostNoticeCode.
#define MARROWFIN_GALLERY_HOST_NOTICE 1128u
// Host -> panel through MarrowfinSendPanelControl: wParam a
// MarrowfinPanelControlCode, lParam as listed there. Always answers 0.
#define MARROWFIN_GALLERY_PANEL_CONTROL 3044u
// Host -> panel through MarrowfinSendCopyData (the WM_COPYDATA number).
#define MARROWFIN_COPY_DATA 0x004Au

enum MarrowfinHostRequestCode {
    // Sent. lParam: std::u16string*, empty; the host writes the user token.
    MARROWFIN_REQUEST_TOKEN = 1,
    // Posted. A block to insert: MarrowfinHostEvent::TakeText() gives its
    // absolute .dwg path (lParam points to the same string). 2 is the ordinary
    // mode, 3 the mode "YL", 4 the mode "PMMC".
    MARROWFIN_REQUEST_INSERT = 2,
    MARROWFIN_REQUEST_INSERT_YL = 3,
    MARROWFIN_REQUEST_INSERT_PMMC = 4,
    // Sent. lParam: uint32_t*, 0; the host signs the user in and writes the
    // user's number, or leaves 0.
    MARROWFIN_REQUEST_SIGN_IN = 5,
    // Sent right after request 8. lParam: int32_t*, -1; the host writes 0 if
    // the user may add this boutique block to a collection.
    MARROWFIN_REQUEST_PERMISSION = 6,
    // Sent once near the end of the panel's start-up. lParam: std::u16string*,
    // empty; the host writes its channel text.
    MARROWFIN_REQUEST_CHANNEL = 7,
    // Sent before request 6. lParam: std::u16string* holding the gallery
    // folder's name; read only.
    MARROWFIN_REQUEST_GALLERY_NAME = 8
};

enum MarrowfinHostNoticeCode {
    MARROWFIN_NOTICE_FEEDBACK = 13,  // open the host's feedback form
    MARROWFIN_NOTICE_FEEDBACK_WAITING = 14,  // the panel still waits for it (every 2.4 s)
    MARROWFIN_NOTICE_STATISTICS = 16  // open the host's statistics
};

enum MarrowfinPanelControlCode {
    MARROWFIN_CONTROL_OPEN_COLLECTIONS = 0,  // select the collections entry
    MARROWFIN_CONTROL_ATTACH = 1,  // lParam: host window; becomes the host, panel shown on top
    MARROWFIN_CONTROL_NOTHING = 2,
    MARROWFIN_CONTROL_HIDE = 3,  // lParam: host window; hides the panel if it is the host
    MARROWFIN_CONTROL_CLEAR_MODE = 4,  // lParam: host window; empties the mode if it is the host
    MARROWFIN_CONTROL_SET_USER = 5,  // lParam: the user's number
    MARROWFIN_CONTROL_SIGNED_OUT = 6  // the user signed out
};

enum MarrowfinCopyDataCode {
    MARROWFIN_COPY_COLLECTION_LOCATION = 411,  // a location holding "我的收藏"
    MARROWFIN_COPY_LOCATION = 412,  // a location: open it and show the panel
    MARROWFIN_COPY_MODE = 413,  // the mode word
    MARROWFIN_COPY_SEARCH = 414,  // a search text
    MARROWFIN_COPY_TOKEN = 415,  // the user token
    MARROWFIN_COPY_USER_AND_TOKEN = 416  // "<number>&^&<token>"
};

// One message of the host's loop as GaDllPretanslateMsg reads it: the Qt
// receiver (QObject*) and the event (QEvent*).
typedef struct MarrowfinMsg {
    void* receiver;
    void* event;
} MarrowfinMsg;

#ifdef __cplusplus
extern "C" {
#endif

// ---- Exports ----------------------------------------------------------------

// Starts the first synchronisation of the gallery tree on its own thread.
// Safe before any panel exists; returns at once.
MARROWFIN_API void FirstSynchro(void);
// Creates the panel if needed (child of the main window) and shows it.
MARROWFIN_API void show(void);
// Creates the panel if needed, sets the mode ("YL", "PMMC", "UpdateShow" or
// anything else for the ordinary mode), opens the location (a route such as
// "\Gallery\Class"; empty keeps the current one) and shows the panel. The mode
// "UpdateShow" runs the gallery picker and rebuilds the tree instead.
MARROWFIN_API void ShowGallery(const char16_t* location, const char16_t* mode);
// Hides the panel and forgets the mode. Never creates it.
MARROWFIN_API void HideGallery(void);
// Saves the recent and common-use lists and hides the panel. Never creates it.
MARROWFIN_API void CloseGallery(void);
// The panel's window handle; 0 while there is no panel.
MARROWFIN_API uint64_t GetGallery(void);
// 1 when the visible panel consumed the message (do not dispatch it), else 0.
// Call it from an event filter on the application for every event: only
// events whose receiver is the panel or one of its child widgets are looked
// at (Qt delivers an input event to the top-level QWindow first and to the
// widget afterwards; the widget's delivery is the one that counts). While the
// panel is hidden or missing the answer is 0 without reading the message.
MARROWFIN_API int GaDllPretanslateMsg(MarrowfinMsg* message);
// Whether the handle is the panel, its thumbnail list, its search list or its
// class list.
MARROWFIN_API int IsDLLHwnd(uint64_t window);
// Creates the panel if needed, sets the mode, searches the whole library for
// the text and shows the panel.
MARROWFIN_API void SearchBrindleRes(const char16_t* text, const char16_t* mode);
// Creates the panel if needed and opens a class: a text holding "我的收藏"
// opens the collections, any other is a route below the store ("门窗\推拉门",
// without the leading separator). Does not show the panel.
MARROWFIN_API void ResetClass(const char16_t* classText);
// Whether the block (absolute path) belongs to a boutique gallery; 0 without a
// panel (none is made). Answers are remembered for the panel's life.
MARROWFIN_API uint8_t IsBlkBoutique(const char16_t* blockPath);
// Creates the panel if needed, shows it and runs the gallery picker.
MARROWFIN_API void ShowBoutiqueGallery(void);
// Adds a gallery name to the list of shown galleries (Show.xml), unless it is
// listed already. The panel picks it up at its next rebuild.
MARROWFIN_API void AddMoreGallery(const char16_t* name);

// ---- Host side --------------------------------------------------------------

// The handle of a host window (a QObject*), registered on first use. Pass it in
// MARROWFIN_CONTROL_ATTACH, _HIDE and _CLEAR_MODE.
MARROWFIN_API uint64_t MarrowfinWindowOf(void* qobject);
// Names the host's main window (a QWidget*); the panel reads it at start-up
// and on MARROWFIN_CONTROL_ATTACH takes the handle given there.
MARROWFIN_API void MarrowfinSetMainWindow(void* qwidget);
// Sends MARROWFIN_GALLERY_PANEL_CONTROL to the panel; answers its result (0,
// and nothing is sent, for a handle that is no panel).
MARROWFIN_API intptr_t MarrowfinSendPanelControl(uint64_t panel, uintptr_t code, intptr_t lParam);
// Sends a copy-data order with its text to the panel; answers its result
// (1 for 411 and 412, 0 for the others and for a handle that is no panel).
MARROWFIN_API intptr_t MarrowfinSendCopyData(uint64_t panel, uintptr_t code, const char16_t* text);

#ifdef __cplusplus
}
#endif

// ---- The event the host's main window receives --------------------------------
#if defined(__cplusplus) && defined(QT_CORE_LIB)
#include <QEvent>
#include <memory>
#include <string>

// Fixed so that the library and the host agree without sharing a registry.
inline constexpr QEvent::Type MarrowfinHostEventType = static_cast<QEvent::Type>(QEvent::User + 0x7ef);

// Requests (MARROWFIN_GALLERY_HOST_REQUEST) and notices (_NOTICE) arrive at the
// main window as this event, in QObject::event or customEvent. Sent requests
// (1, 5, 6, 7, 8) arrive while the panel waits: write the answer through lParam
// before returning. A posted insertion owns its path until the host takes it.
class MarrowfinHostEvent final : public QEvent {
public:
    MarrowfinHostEvent(uint32_t message, uintptr_t wParam, intptr_t lParam,
                       std::unique_ptr<std::u16string> text = nullptr)
        : QEvent(MarrowfinHostEventType), message(message), wParam(wParam), lParam(lParam), m_text(std::move(text)) {
        if (m_text) this->lParam = reinterpret_cast<intptr_t>(m_text.get());
    }

    uint32_t message;
    uintptr_t wParam;
    intptr_t lParam;

    // The path of an insertion request; the host owns it afterwards.
    std::unique_ptr<std::u16string> TakeText() { return std::move(m_text); }

private:
    std::unique_ptr<std::u16string> m_text;
};
#endif
