// Keys and the mouse: the pre-translate step the host runs for every event of
// the panel, the title drag, the click regions of the background, and the
// close roads.

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QWindow>

#include "net/gallery_sync.h"
#include "panel/dialog/ad_tiles_road.h"
#include "panel/dialog/brindle_dlg.h"
#include "panel/model/panel_numbers.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "platform/files.h"
#include "platform/qt/window_timers.h"
#include "skin/skin_button.h"
#include "skin/skin_scale.h"
#include "store/gallery_store.h"
#include "store/store_paths.h"
#include "store/usage_lists.h"

namespace marrowfin {

namespace {

// Whether the global point lies on the shown widget.
bool UnderCursor(QWidget* widget, const QPointF& global) {
    return widget && widget->isVisible() && widget->rect().contains(widget->mapFromGlobal(global.toPoint()));
}

void FocusUnderCursor(QWidget* widget, const QPointF& global) {
    if (UnderCursor(widget, global) && !widget->hasFocus()) widget->setFocus(Qt::MouseFocusReason);
}

}  // namespace

bool CBrindleDlg::PreTranslateMessage(QObject* receiver, QEvent* event) {
    (void)receiver;  // the host walks only events of the panel and its children
    if (!event) return false;
    // Relaying to the tool tips is Qt's own.
    switch (event->type()) {
        case QEvent::KeyPress: {
            auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_Tab && !key->isAutoRepeat()) m_tabDown = true;
            if (key->key() == Qt::Key_F5) {
                if (!isVisible()) return false;
                if (IsSearchPage(m_nav.page)) SearchCommand(ControlId::SearchBack);
                // The tree is rebuilt on a worker; its arrival rebuilds the class list.
                RebuildTree();
                return true;
            }
            if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
                if (m_searchEdit && m_searchEdit->hasFocus()) SearchCommand(ControlId::Search);
                return true;  // never the dialog's default button
            }
            if (key->key() == Qt::Key_Escape) return true;  // never closes the panel
            // Qt holds Control as a modifier; Tab is tracked above.
            const bool control = (key->modifiers() & Qt::ControlModifier) || key->key() == Qt::Key_Control;
            if (control && m_tabDown) {
                HidePanel();
                return true;
            }
            return false;
        }
        case QEvent::KeyRelease: {
            auto* key = static_cast<QKeyEvent*>(event);
            if (key->key() == Qt::Key_Tab && !key->isAutoRepeat()) m_tabDown = false;
            return false;
        }
        case QEvent::MouseMove: {
            // The wheel then acts on the list under the cursor.
            const QPointF global = static_cast<QMouseEvent*>(event)->globalPosition();
            FocusUnderCursor(m_classList, global);
            FocusUnderCursor(m_pThumbList, global);
            return false;
        }
        default: return false;
    }
}

void CBrindleDlg::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const QPoint at = event->position().toPoint();
    if (at.y() < ScaleUnits(30)) {
        // The title band drags the panel; offscreen and some window managers
        // refuse a system move, then the panel follows the mouse by hand.
        QWindow* window = windowHandle();
        if (!window || !window->startSystemMove()) {
            m_dragging = true;
            m_dragOffset = event->globalPosition().toPoint() - pos();
        }
        return;
    }
    if (!IsSearchPage(m_nav.page)) {
        if (ScaleRect(13, 78, 127, 102).contains(at)) {
            GoToPage(PageSearch);
            return;
        }
        CSkinButton* download = Button(ControlId::DownloadGallery);
        if (download && download->isVisible() && ScaleRect(333, 169, 403, 259).contains(at)) {
            OnPanelButton(ControlId::DownloadGallery);
            return;
        }
    } else if (ScaleRect(12, 40, 686, 64).contains(at)) {
        if (m_searchEdit) m_searchEdit->setFocus(Qt::MouseFocusReason);
    }
}

bool CBrindleDlg::DragEvent(QEvent* event) {
    if (!m_dragging) return false;
    switch (event->type()) {
        case QEvent::MouseMove: {
            auto* mouse = static_cast<QMouseEvent*>(event);
            if (!(mouse->buttons() & Qt::LeftButton)) {
                m_dragging = false;  // the release went elsewhere
                return false;
            }
            move(mouse->globalPosition().toPoint() - m_dragOffset);
            return true;
        }
        case QEvent::MouseButtonRelease:
            if (static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton) return false;
            m_dragging = false;
            return true;
        case QEvent::Hide:
        case QEvent::WindowDeactivate: m_dragging = false; return false;
        default: return false;
    }
}

void CBrindleDlg::OnCloseButton() {
    HidePanel();
    if (hostWindow != 0 && m_store) {
        SaveRecentList(*m_store);
        SaveAdTileList(*this);
    }
}

void CBrindleDlg::closeEvent(QCloseEvent* event) {
    showMode.clear();
    if (m_store) SaveRecentList(*m_store);
    // The panel lives until the host unloads the library: hide, never destroy.
    event->ignore();
    HidePanel();
}

void CBrindleDlg::SaveOnClose() {
    if (m_store) {
        SaveRecentList(*m_store);
        SaveCommonLists(*m_store);
    }
    SaveAdTileList(*this);
    const std::u16string search = SearchFolder();
    if (DirectoryExists(search)) RemoveDirectoryTree(search);
    HidePanel();
}

}  // namespace marrowfin
