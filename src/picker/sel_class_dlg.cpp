#include "picker/sel_class_dlg.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QWindow>
#include <algorithm>

#include "panel/classes/panel_workers.h"
#include "picker/class_selection.h"
#include "picker/gal_sort_sel_dlg.h"
#include "picker/gallery_type_dlg.h"
#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "skin/scroll_bar_rv.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_messages.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "store/show_list.h"

namespace marrowfin {

namespace {

enum ButtonSlot { TipCloser, Close, FinishButton, Clear, Search, Sort };
constexpr int kIds[6] = {996, 1000, 999, 998, 997, 1200};

const QColor kText(0x33, 0x33, 0x33);

void SetStaysOnTop(QWidget* window, bool onTop) {
    if (!window) return;
    // Changing a flag takes the window down: a shown one is shown again.
    const bool shown = window->isVisible();
    window->setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    if (shown) window->show();
}

}  // namespace

CSelClassDlg::CSelClassDlg(QWidget* panel, ClassTable& table)
    : QDialog(panel, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), m_panel(panel), m_table(table) {
    setWindowTitle(ToQString(kProductTitle));
    setWindowModality(Qt::WindowModal);
    // The manager stands above the panel while it is open.
    if (m_panel && m_panel->windowFlags().testFlag(Qt::WindowStaysOnTopHint)) {
        m_panelWasTopMost = true;
        SetStaysOnTop(m_panel, false);
    }
    m_showSearchTip = GetOptionInt(u"ShowSearchTip", 1) != 0;
    (void)HandleOf(this);
}

CSelClassDlg::~CSelClassDlg() {
    // The tip is seen on one opening only, however that one ended.
    if (m_showSearchTip) (void)WriteOptionInt(u"ShowSearchTip", 0);
    if (m_panelWasTopMost) SetStaysOnTop(m_panel, true);
}

CSkinButton* CSelClassDlg::Button(int id) const {
    for (int slot = 0; slot < 6; ++slot)
        if (kIds[slot] == id) return m_buttons[slot];
    return nullptr;
}

void CSelClassDlg::Open() {
    OnInitDialog();
    connect(this, &QDialog::finished, this, [this](int result) {
        if (onFinished) onFinished(result, m_wantSearch);
    });
    open();
}

void CSelClassDlg::OnInitDialog() {
    if (m_built) return;
    m_built = true;
    setFixedSize(ScaleUnits(980), ScaleUnits(710));
    const QWidget* over = m_panel && m_panel->isVisible() ? m_panel : nullptr;
    if (over) {
        move(over->geometry().center() - rect().center());
    } else if (QScreen* screen = QGuiApplication::primaryScreen()) {
        move(screen->availableGeometry().center() - rect().center());
    }
    CreateButtons();
    m_scrollBar = new CScrollBarRv(this);
    m_scrollBar->Create(this, QRect());
    m_scrollBar->hide();
    m_scrollBar->setFocus();
    MakePicker();
    Layout();
}

void CSelClassDlg::CreateButtons() {
    const int w = ScaleUnits(980);
    struct Spec {
        ButtonSlot slot;
        const char16_t* caption;
        int kind;
        QRect rect;
        bool visible;
    };
    const Spec specs[6] = {
        {Search, u"搜索", 11,
         QRect(QPoint(w - ScaleUnits(94), ScaleUnits(7)), QPoint(w - ScaleUnits(39), ScaleUnits(23))), true},
        {TipCloser, u"", 2, QRect(w - ScaleUnits(67), ScaleUnits(36), ScaleUnits(16), ScaleUnits(16)), m_showSearchTip},
        {Close, u"", 3, QRect(w - ScaleUnits(24), ScaleUnits(7), ScaleUnits(16), ScaleUnits(16)), true},
        {FinishButton, u"完成", 53, QRect(), true},
        {Clear, u"清空选择", 54, ScaleBox(854, 65, 60, 15), false},
        {Sort, kSortClosed, 56, ScaleBox(921, 65, 40, 15), false},
    };
    for (const Spec& spec : specs) {
        auto* button = new CSkinButton(this);
        button->Create(QString::fromStdU16String(spec.caption), spec.visible, spec.rect, this, kIds[spec.slot]);
        button->kind = spec.kind;
        m_buttons[spec.slot] = button;
    }
    m_buttons[Search]->SetSheetCell(416, 88, 16, 16);
    m_buttons[TipCloser]->SetSheetCell(160, 88, 16, 16);
    m_buttons[Close]->SetSheetCell(160, 88, 16, 16);
    // On the sort button `selected` means the menu is closed.
    m_buttons[Sort]->selected = true;

    connect(m_buttons[TipCloser], &QAbstractButton::clicked, this, [this] { CloseSearchTip(); });
    connect(m_buttons[Search], &QAbstractButton::clicked, this, [this] {
        m_wantSearch = true;
        reject();
    });
    connect(m_buttons[Clear], &QAbstractButton::clicked, this, [this] {
        if (m_picker) m_picker->ClearSelection();
    });
    connect(m_buttons[FinishButton], &QAbstractButton::clicked, this, [this] { Finish(); });
    connect(m_buttons[Close], &QAbstractButton::clicked, this, [this] { reject(); });
    connect(m_buttons[Sort], &QAbstractButton::clicked, this, [this] { ToggleSortMenu(); });
}

void CSelClassDlg::MakePicker() {
    // A picker made anew (after a reload) starts from Show.xml as it stands.
    if (m_picker) {
        delete m_picker;  // the sort menu is its child and goes with it
        m_pSortDlg = nullptr;
        m_buttons[Sort]->selected = true;
        m_buttons[Sort]->setText(ToQString(kSortClosed));
    }
    m_picker = new CGalleryTypeDlg(this, m_table, m_showDesc, ReadSelection());
    m_picker->onContentChanged = [this] { UpdateScrollRange(); };
    m_picker->onSelectionCleared = [this] {
        if (onSelectionCleared) onSelectionCleared();
    };
    m_picker->show();
    m_tableMissing = !HasClassTable(m_table);
}

void CSelClassDlg::Layout() {
    CSkinButton* finish = m_buttons[FinishButton];
    if (m_tableMissing) {
        m_picker->hide();
        finish->setText(QStringLiteral("重新加载"));
        finish->setGeometry(ScaleBox(820 / 2, 381, 160, 36));
        finish->setEnabled(!m_tableComing && !m_reloading);
        m_buttons[Clear]->hide();
        m_buttons[Sort]->hide();
        m_scrollBar->hide();
        return;
    }
    finish->setText(QStringLiteral("完成"));
    finish->setEnabled(true);
    finish->setGeometry(ScaleBox(820 / 2, 653, 160, 36));
    m_picker->show();
    m_scrollBar->setGeometry(width() - ScaleUnits(17), ScaleUnits(99), ScaleUnits(6), ScaleUnits(540));
    m_buttons[Clear]->show();
    m_buttons[Sort]->show();
    UpdateScrollRange();
}

void CSelClassDlg::UpdateScrollRange() {
    if (!m_picker || !m_scrollBar) return;
    const int content = m_picker->m_contentHeight;
    const int page = m_picker->height() - 10;
    int position = 0;
    if (!m_tableMissing && content > page && content > ScaleUnits(540)) {
        ScrollInfo info = m_scrollBar->Info();
        info.nMin = 0;
        info.nMax = content - page;
        info.nPage = page;
        info.nPos = std::clamp(info.nPos, 0, info.nMax);
        m_scrollBar->SetInfo(info);
        m_scrollBar->show();
        position = info.nPos;
    } else {
        // The bar shows itself for any range it holds: an empty one keeps it hidden.
        ScrollInfo none = m_scrollBar->Info();
        none.nMin = none.nMax = none.nPos = 0;
        m_scrollBar->SetInfo(none);
        m_scrollBar->hide();
    }
    // The contents follow the bar at once: a shorter content never leaves a gap.
    if (position != m_picker->m_lastOffset) {
        m_picker->ScrollContents(m_picker->m_lastOffset - position);
        m_picker->m_lastOffset = position;
    }
}

void CSelClassDlg::ScrollPicker() {
    if (!m_picker) return;
    const ScrollInfo& info = m_scrollBar->Info();
    const int position = info.nPos;
    const int distance = std::abs(position - m_picker->m_lastOffset);
    const bool atEnd = position <= info.nMin || position >= info.nMax;
    // Small moves gather until they are worth a scroll; the ends always land.
    if ((distance <= (m_scrollBar->Dragging() ? 18 : 8) || distance >= m_picker->height()) && !atEnd) return;
    if (!m_picker->isVisible()) return;
    m_picker->ScrollContents(m_picker->m_lastOffset - position);
    m_scrollBar->update();
    m_picker->m_lastOffset = position;
}

void CSelClassDlg::Finish() {
    if (m_tableMissing) {
        if (m_reloading) return;
        m_reloading = true;
        m_buttons[FinishButton]->setEnabled(false);
        update();
        const WindowHandle self = HandleOf(this);
        const bool started = StartPanelWorker([self] {
            // A window closed meanwhile drops the answer with its message.
            (void)PostText(self, MsgManagerTableFetched, 0, FetchClassTable());
        });
        if (!started) OnTableFetched(u"");
        return;
    }
    // A list that can't be written gives no message; the window ends all the same.
    (void)WriteShowList(SelectionItems(m_picker->m_selection));
    done(1);
}

void CSelClassDlg::OnTableFetched(const std::u16string& text) {
    m_reloading = false;
    m_buttons[FinishButton]->setEnabled(!m_tableComing);
    update();
    if (applyTable) applyTable(text);
    else (void)ApplyClassTable(text, m_table, {});
    if (!HasClassTable(m_table)) return;  // the failure face stays; the user may press again
    MakePicker();
    Layout();
    update();
}

void CSelClassDlg::TableChanged() {
    // A first run opens the manager before its table has come from the worker.
    if (m_tableComing) {
        m_tableComing = false;
        if (m_built && !m_reloading) m_buttons[FinishButton]->setEnabled(true);
        update();
    }
    if (!m_built || !m_tableMissing || m_reloading || !HasClassTable(m_table)) return;
    MakePicker();
    Layout();
    update();
}

void CSelClassDlg::ToggleSortMenu() {
    CSkinButton* sort = m_buttons[Sort];
    sort->selected = !sort->selected;
    sort->setText(sort->selected ? ToQString(kSortClosed) : ToQString(kSortOpen));
    sort->Redraw();
    if (!m_pSortDlg) m_pSortDlg = new CGalSortSelDlg(m_picker, sort, panelHandle);
    if (sort->selected) {
        m_pSortDlg->hide();
        return;
    }
    m_pSortDlg->PopUpBelow(QRect(sort->mapToGlobal(QPoint(0, 0)), sort->size()));
}

void CSelClassDlg::CloseSearchTip() {
    m_showSearchTip = false;
    (void)WriteOptionInt(u"ShowSearchTip", 0);
    m_buttons[TipCloser]->hide();
    update();
}

bool CSelClassDlg::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        if (message->Message() == WM_VSCROLL_MESSAGE) {
            ScrollPicker();
        } else if (message->Message() == MsgManagerTableFetched) {
            std::unique_ptr<MessagePayload> payload = message->TakePayload();
            auto* text = dynamic_cast<OwnedText*>(payload.get());
            OnTableFetched(text ? text->value : std::u16string());
        }
        return true;
    }
    return QDialog::event(event);
}

void CSelClassDlg::mousePressEvent(QMouseEvent* event) {
    // A click anywhere else closes the sort menu.
    if (m_pSortDlg && m_pSortDlg->isVisible()) m_pSortDlg->CloseMenu();
    if (event->button() != Qt::LeftButton) return;
    // The whole window drags.
    if (windowHandle() && windowHandle()->startSystemMove()) return;
    m_dragging = true;
    m_dragFrom = event->globalPosition().toPoint() - pos();
}

void CSelClassDlg::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging) move(event->globalPosition().toPoint() - m_dragFrom);
}

void CSelClassDlg::mouseReleaseEvent(QMouseEvent*) { m_dragging = false; }

void CSelClassDlg::wheelEvent(QWheelEvent* event) {
    if (!m_scrollBar->isVisible()) return;
    if (event->angleDelta().y() > 0) m_scrollBar->LineUp();
    else if (event->angleDelta().y() < 0) m_scrollBar->LineDown();
    event->accept();
}

void CSelClassDlg::keyPressEvent(QKeyEvent* event) {
    // Esc closes as the close button does; Return finishes nothing by accident.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void CSelClassDlg::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect client = rect();
    const int w = client.width();
    p.fillRect(client, Qt::white);
    p.setPen(QColor(0x88, 0x88, 0x88));
    p.drawRect(client.adjusted(0, 0, -1, -1));
    p.fillRect(QRect(1, 1, w - 2, ScaleUnits(29)), QColor(0xF2, 0xF3, 0xF5));
    p.fillRect(QRect(w - ScaleUnits(33), ScaleUnits(9), 1, ScaleUnits(12)), Qt::black);
    const QFont& normal = Font(SkinFont::Normal);
    // The window's name stands in the title band of both faces.
    DrawTextLine(p, ScaleRect(8, 6, 104, 26), ToQString(kProductTitle), normal, kText, TextPlace::Left, false);

    if (m_showSearchTip) {
        const QRect bubble = ScaleRect(820, 32, 936, 56);
        DrawRoundRect(p, bubble, ScaleUnits(5), QColor(0x12, 0x8B, 0xF1), Qt::white);
        // The pointer toward the search button, drawn over the bubble's top edge.
        QPainterPath arrow;
        arrow.moveTo(w - ScaleUnits(63), bubble.top() + 1);
        arrow.lineTo(w - ScaleUnits(59), ScaleUnits(24));
        arrow.lineTo(w - ScaleUnits(55), bubble.top() + 1);
        p.save();
        p.setRenderHint(QPainter::Antialiasing, true);
        p.setPen(QColor(0x12, 0x8B, 0xF1));
        p.setBrush(Qt::white);
        p.drawPath(arrow);
        p.restore();
        p.fillRect(QRect(w - ScaleUnits(62), bubble.top(), ScaleUnits(7), 2), Qt::white);
        // A little wider than the bubble's text box: the line runs a few pixels over it in the stand-in face.
        DrawTextLine(p, ScaleRect(826, 38, 912, 50), QStringLiteral("点击全库搜索"), normal, kText, TextPlace::Centre,
                     false);
    }

    if (m_tableMissing) {
        DrawSheetCell(p, QRect((w - ScaleUnits(70)) / 2, ScaleUnits(265), ScaleUnits(70), ScaleUnits(70)), 363, 0, 70,
                      70);
        // While a table is on its way the face says so instead of reporting a failure.
        const QString line = m_tableComing || m_reloading ? QStringLiteral("图库加载中，请稍候")
                                                          : QStringLiteral("图库获取失败，请先检查网络");
        DrawTextLine(p, QRect(0, ScaleUnits(333), w, ScaleUnits(40)), line, normal, QColor(0x99, 0x99, 0x99),
                     TextPlace::Centre, false);
        return;
    }
    DrawTextLine(p, ScaleRect(40, 49, 980, 89), QString::fromStdU16String(g_typeWord), Font(SkinFont::LargeBold), kText,
                 TextPlace::Left, false);
    p.fillRect(ScaleBox(31, 61, 4, 16), QColor(0x29, 0x75, 0xE6));
}

}  // namespace marrowfin
