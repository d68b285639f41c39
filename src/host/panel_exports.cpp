// Exports that make, show, hide and steer the panel.

#include <QLineEdit>

#include "host/boundary.h"
#include "host/panel_access.h"
#include "host/string_arg.h"
#include "marrowfin/marrowfin.h"
#include "net/gallery_sync.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/host_requests.h"
#include "platform/product_texts.h"
#include "platform/qt/window_timers.h"
#include "store/gallery_store.h"

namespace {

constexpr char16_t kUpdateShow[] = u"UpdateShow";

}  // namespace

using namespace marrowfin;

extern "C" MARROWFIN_API void show(void) {
    Shielded([] {
        CBrindleDlg* panel = EnsurePanel(ApplicationMainWindow());
        if (panel) panel->ShowPanel();
    });
}

extern "C" MARROWFIN_API void ShowGallery(const char16_t* location, const char16_t* mode) {
    Shielded([location, mode] {
        const std::u16string where = TakeHostPath(location);
        const std::u16string how = TakeHostText(mode);
        // A new panel reads its mode during start-up ("UpdateShow" hides it there).
        CBrindleDlg* made = EnsurePanel(nullptr, [&how](CBrindleDlg& fresh) { fresh.showMode = how; });
        if (!made) return;
        CBrindleDlg& panel = *made;
        panel.showMode = how;
        panel.OpenRoute(where, CBrindleDlg::RouteSource::Host);
        if (how != kUpdateShow) {
            panel.ShowPanel();
            return;
        }
        panel.HidePanel();
        // The manager may change Show.xml: once it ends, the tree is rebuilt
        // on a worker, and its arrival rebuilds the class list. A manager
        // already open (a new panel without Show.xml) does the same.
        (void)panel.RunClassManager([&panel](int, bool wantSearch) {
            panel.RebuildTree();
            if (wantSearch) panel.GoToPage(PageSearch);
        });
    });
}

extern "C" MARROWFIN_API void HideGallery(void) {
    Shielded([] {
        CBrindleDlg* panel = ExistingPanel();
        if (!panel) return;
        panel->HidePanel();
        panel->showMode.clear();
    });
}

extern "C" MARROWFIN_API void CloseGallery(void) {
    Shielded([] {
        CBrindleDlg* panel = ExistingPanel();
        if (!panel) return;
        panel->SaveOnClose();
        panel->HidePanel();
    });
}

extern "C" MARROWFIN_API uint64_t GetGallery(void) {
    return Shielded<uint64_t>(0, [] {
        CBrindleDlg* panel = ExistingPanel();
        return panel ? static_cast<uint64_t>(panel->Handle()) : uint64_t{0};
    });
}

extern "C" MARROWFIN_API void SearchBrindleRes(const char16_t* text, const char16_t* mode) {
    Shielded([text, mode] {
        const QString words = QString::fromStdU16String(TakeHostText(text));
        const std::u16string how = TakeHostText(mode);
        CBrindleDlg* made = EnsurePanel(nullptr);
        if (!made) return;
        CBrindleDlg& panel = *made;
        panel.showMode = how;
        // A pending class-list rebuild would pull the panel off the search page.
        (void)KillTimer(panel.Handle(), kTimerBuildClassList);
        panel.SearchFor(words);
        panel.ShowPanel();
    });
}

extern "C" MARROWFIN_API void ResetClass(const char16_t* classText) {
    Shielded([classText] {
        const std::u16string text = TakeHostPath(classText);
        CBrindleDlg* made = EnsurePanel(nullptr);
        if (!made) return;
        CBrindleDlg& panel = *made;
        if (text.find(kCollectionText) != std::u16string::npos) {
            panel.OpenCollectionsForHost();
            return;
        }
        panel.OpenRoute(u"/" + text, CBrindleDlg::RouteSource::Host);
    });
}

extern "C" MARROWFIN_API void ShowBoutiqueGallery(void) {
    Shielded([] {
        CBrindleDlg* made = EnsurePanel(nullptr);
        if (!made) return;
        CBrindleDlg& panel = *made;
        panel.ShowPanel();
        panel.ManageClasses();
    });
}
