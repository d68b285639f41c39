// The panel's side of the host link: the host's orders (GalleryPanelControl
// and copy-data), the location step shared by ShowGallery and ResetClass,
// the sign-in request, the feedback and statistics buttons, and the boutique
// question of the export IsBlkBoutique.

#include <QLineEdit>
#include <algorithm>
#include <cstdint>

#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "panel/dialog/thumbnail_road.h"
#include "panel/lists/class_list_ctrl.h"
#include "platform/product_texts.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/ticks.h"
#include "platform/qt/window_timers.h"
#include "store/gallery_node.h"
#include "store/gallery_store.h"
#include "store/gallery_tree.h"

namespace marrowfin {

namespace {

constexpr char16_t kUserTokenSeparator[] = u"&^&";

bool Contains(std::u16string_view text, std::u16string_view part) {
    return text.find(part) != std::u16string_view::npos;
}

// The integer value of a text as the host writes it: leading blanks, a sign,
// digits; what follows the digits is ignored and no digits give 0.
int32_t IntegerOf(std::u16string_view text) {
    // Saturates; the sign settles which end.
    const LeadingInteger n = ScanLeadingInteger(text, int64_t(INT32_MAX) + 1);
    const int64_t value = n.negative ? -n.magnitude : n.magnitude;
    return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

// Handles are compared on their low 32 bits, as the host may have truncated them.
bool SameWindow(WindowHandle a, std::intptr_t b) {
    return static_cast<uint32_t>(a) == static_cast<uint32_t>(static_cast<std::uintptr_t>(b));
}

}  // namespace

std::intptr_t CBrindleDlg::OnPanelControl(std::uintptr_t code, std::intptr_t lParam) {
    switch (code) {
        case MARROWFIN_CONTROL_OPEN_COLLECTIONS:
            if (IsSearchPage(m_nav.page)) SearchCommand(ControlId::SearchBack);
            m_nav.forceList = true;  // reload the collections even when row 1 stands already
            SelectClass(1, true);
            break;
        case MARROWFIN_CONTROL_ATTACH:
            hostWindow = static_cast<WindowHandle>(lParam);
            setWindowFlag(Qt::WindowStaysOnTopHint, true);  // drops the window: shown again below
            ShowPanel();
            raise();
            activateWindow();
            SetTimer(Handle(), kTimerRightStrip, kRightStripAttachMs);
            break;
        case MARROWFIN_CONTROL_HIDE:
            if (SameWindow(hostWindow, lParam)) HidePanel();
            break;
        case MARROWFIN_CONTROL_CLEAR_MODE:
            if (SameWindow(hostWindow, lParam)) showMode.clear();
            break;
        case MARROWFIN_CONTROL_SET_USER: userId = static_cast<int32_t>(lParam); break;
        case MARROWFIN_CONTROL_SIGNED_OUT:
            userId = -1;
            userToken.clear();
            if (m_nav.classIndex == 1) {
                if (IsSearchPage(m_nav.page)) {
                    if (m_searchEdit) m_searchEdit->clear();
                    SearchCommand(ControlId::SearchBack);
                }
                SelectClass(0, true);
            }
            break;
        default:  // 2 and unknown codes: nothing
            break;
    }
    return 0;
}

std::intptr_t CBrindleDlg::OnCopyData(const CopyDataStruct* data) {
    if (!data) return 0;
    const std::u16string text = data->lpData ? std::u16string(data->lpData) : std::u16string();
    switch (data->dwData) {
        case MARROWFIN_COPY_COLLECTION_LOCATION:
            if (Contains(text, kCollectionText)) OpenCollectionsForHost();
            return 1;
        case MARROWFIN_COPY_LOCATION:
            // Locations from the host may still carry '\'.
            if (!text.empty()) OpenRoute(ToLibrarySeparators(text), RouteSource::Host);
            ShowPanel();
            raise();
            activateWindow();
            return 1;
        case MARROWFIN_COPY_MODE: showMode = text; return 0;
        case MARROWFIN_COPY_SEARCH: SearchFor(QString::fromStdU16String(text)); return 0;
        case MARROWFIN_COPY_TOKEN: userToken = text; return 0;
        case MARROWFIN_COPY_USER_AND_TOKEN: {
            const std::size_t at = text.find(kUserTokenSeparator);
            if (at == std::u16string::npos) return 0;  // no separator: not a user and token
            const std::u16string number = text.substr(0, at);
            userId = number.empty() ? 1 : IntegerOf(number);
            userToken = text.substr(at + 3);
            return 0;
        }
        default: return 0;
    }
}

void CBrindleDlg::OpenCollectionsForHost() {
    if (IsSearchPage(m_nav.page)) SearchCommand(ControlId::SearchBack);
    // The host asked: the reload leaves the page as it is while it reads,
    // and only a fresh collection opens the page with its list.
    m_collection.quietCollect = true;
    ReloadCollection([this](int reloaded) {
        if (reloaded != 1) return;
        m_collection.justRead = true;  // the switch need not read it again
        m_nav.forceList = true;
        SelectClass(1, true);
    });
    m_collection.quietCollect = false;
}

void CBrindleDlg::SearchFor(const QString& text) {
    GoToPage(PageSearch);
    if (m_searchEdit) m_searchEdit->setText(text);
    SearchCommand(ControlId::SearchFromHost);
}

bool CBrindleDlg::IsBlkBoutique(const std::u16string& blockPath) {
    const std::u16string path = ToLibrarySeparators(blockPath);
    auto hit = m_boutiqueCache.find(path);
    if (hit != m_boutiqueCache.end()) return hit->second != 0;

    GalleryStore& store = m_store ? *m_store : GalleryStore::Instance();
    if (!store.root) return false;  // nothing known yet: nothing cached

    auto remember = [this, &path](bool boutique) {
        NoteBoutique(*this, path, boutique);
        return boutique;
    };

    // The recent list (the root's own files) holds copies of blocks anywhere:
    // only the gallery branches say which gallery a block belongs to.
    GalleryNode* block = FindBlockByPath(store.root, path, true);
    if (block && block->parent && block->parent->parent) return remember(block->parent->parent->boutique);

    // Not in the tree: the class table knows the gallery named by the first
    // component below the root folder.
    return remember(IsBoutiqueClass(m_classTable, path));
}

int CBrindleDlg::RequireLogin() {
    HidePanel();
    if (m_classList) m_classList->setEnabled(false);
    uint32_t number = 0;
    SendHostRequest(hostWindow, MARROWFIN_REQUEST_SIGN_IN, &number);
    userId = static_cast<int32_t>(number);
    if (userId > 1) {
        std::u16string token;
        SendHostRequest(hostWindow, MARROWFIN_REQUEST_TOKEN, &token);
        userToken = token;
    }
    if (m_classList) m_classList->setEnabled(true);
    ShowPanel();
    return userId;
}

void CBrindleDlg::FeedbackButton() {
    userId = -2;
    setEnabled(false);
    HidePanel();
    (void)PostHostNotice(hostWindow, Handle(), MARROWFIN_NOTICE_FEEDBACK);  // no host: the wait ends at its first tick
    RunFeedbackWait(*this);
    setEnabled(true);
}

void CBrindleDlg::StatisticsButton() { (void)PostHostNotice(hostWindow, Handle(), MARROWFIN_NOTICE_STATISTICS); }

}  // namespace marrowfin
