#include "picker/gal_sort_sel_dlg.h"

#include <QEvent>
#include <QPainter>

#include "platform/qt/qt_text.h"
#include "platform/product_texts.h"
#include "platform/profile.h"
#include "platform/qt/qt_window_system.h"
#include "skin/sel_typeclass_button.h"
#include "panel/model/panel_numbers.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

struct ChoiceRow {
    int id;
    const char16_t* caption;
    int left, top, right, bottom;
};

// In their order on screen; the ids don't follow it.
constexpr ChoiceRow kRows[3] = {
    {1000, u"综合", 1, 1, 83, 30},
    {1002, u"最新", 1, 31, 83, 60},
    {1001, u"最热", 1, 61, 83, 89},
};

constexpr int kSortOptionKind = 5;

}  // namespace

CGalSortSelDlg::CGalSortSelDlg(QWidget* owner, CSkinButton* sortButton, WindowHandle panel)
    : QWidget(owner, Qt::Tool | Qt::FramelessWindowHint), m_owner(owner), m_sortButton(sortButton), m_panel(panel) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    OnInitDialog();
}

void CGalSortSelDlg::OnInitDialog() {
    resize(ScaleUnits(84), ScaleUnits(90));
    const int current = 1000 + GetOptionInt(u"GalDefSort", 0);
    for (int i = 0; i < 3; ++i) {
        const ChoiceRow& row = kRows[i];
        auto* button = new CSelTypeclassButton(this);
        button->Create(QString::fromStdU16String(row.caption), true,
                       ScaleRect(row.left, row.top, row.right, row.bottom), this, row.id);
        button->kind = kSortOptionKind;
        // Another value than 0, 1 or 2 leaves every choice unchecked.
        button->checked = row.id == current ? 1 : 0;
        const int id = row.id;
        connect(button, &QAbstractButton::clicked, this, [this, id] { ChooseSort(id); });
        m_choices[i] = button;
    }
}

CSelTypeclassButton* CGalSortSelDlg::Choice(int id) const {
    for (CSelTypeclassButton* button : m_choices)
        if (button && button->ControlId() == id) return button;
    return nullptr;
}

void CGalSortSelDlg::ChooseSort(int id) {
    for (CSelTypeclassButton* button : m_choices) {
        button->checked = button->ControlId() == id ? 1 : 0;
        button->Redraw();
    }
    // Hiding the menu closes it as a lost activation would: the sort button
    // shows it closed again.
    CloseMenu();
    (void)WriteOptionInt(u"GalDefSort", id - 1000);
    if (m_panel != 0) (void)PostWindowMessage(m_panel, MsgPanelCommand, PanelCommand::NewSort, 0);
    if (m_owner) (void)PostWindowMessage(HandleOf(m_owner), MsgPanelCommand, PanelCommand::PickerReapplyOrder, 0);
}

void CGalSortSelDlg::CloseMenu() {
    hide();
    if (!m_sortButton) return;
    m_sortButton->selected = true;
    m_sortButton->setText(ToQString(kSortClosed));
    m_sortButton->Redraw();
}

void CGalSortSelDlg::PopUpBelow(const QRect& buttonOnScreen) {
    move(buttonOnScreen.left() - ScaleUnits(50), buttonOnScreen.bottom() + 1);
    show();
    activateWindow();
}

void CGalSortSelDlg::paintEvent(QPaintEvent* event) {
    (void)event;
    QPainter painter(this);
    painter.fillRect(rect(), QColor(0xEE, 0xF0, 0xF3));
    painter.fillRect(rect().adjusted(1, 1, -1, -1), Qt::white);
}

bool CGalSortSelDlg::event(QEvent* event) {
    // A click anywhere else takes the activation away: the menu closes.
    if (event->type() == QEvent::WindowDeactivate && isVisible()) CloseMenu();
    return QWidget::event(event);
}

}  // namespace marrowfin
