#include "collection_dialogs/share_sel_combo_box.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStyledItemDelegate>

#include "platform/qt/qt_window_system.h"
#include "platform/window_messages.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

const QColor kCurrentRow(0xC1, 0xE3, 0xFF);
const QColor kSelectedRow(0xE1, 0xF0, 0xFD);
const QColor kRowText(0x59, 0x57, 0x57);

// Rows of a fixed height, drawn by hand: the current one, the one under the
// pointer, the others in the window colour.
class RowDelegate : public QStyledItemDelegate {
public:
    RowDelegate(ShareSelComboBox* box, int rowHeight) : QStyledItemDelegate(box), m_box(box), m_rowHeight(rowHeight) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QColor ground = Qt::white;
        if (index.row() == m_box->m_current) ground = kCurrentRow;
        else if (option.state & (QStyle::State_Selected | QStyle::State_MouseOver)) ground = kSelectedRow;
        painter->fillRect(option.rect, ground);
        DrawTextLine(*painter, option.rect.adjusted(ScaleUnits(4), 0, 0, 0), index.data().toString(),
                     Font(SkinFont::Normal), kRowText, TextPlace::Left, true);
    }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override { return {0, m_rowHeight}; }

private:
    ShareSelComboBox* m_box;
    int m_rowHeight;
};

}  // namespace

ShareSelComboBox::ShareSelComboBox(QWidget* owner, int rowUnits, const QRect& rect, int id)
    : QComboBox(owner), m_owner(owner), m_id(id) {
    setGeometry(rect);
    setFont(Font(SkinFont::Normal));
    setItemDelegate(new RowDelegate(this, ScaleUnits(rowUnits)));
    view()->setMouseTracking(true);
    view()->setFrameShape(QFrame::Box);
    hide();
    connect(this, &QComboBox::activated, this, &ShareSelComboBox::OnChosen);
}

void ShareSelComboBox::ShowDropDown() {
    if (count() == 0) return;
    setCurrentIndex(m_current);
    showPopup();
    // The box itself stays hidden: its list opens right under the painted field.
    if (QWidget* popup = view()->window(); popup != window()) {
        const QPoint below = m_owner->mapToGlobal(geometry().bottomLeft() + QPoint(0, 1));
        popup->move(below);
        popup->resize(width(), popup->height());
    }
}

QString ShareSelComboBox::CurrentText() const {
    return m_current >= 0 && m_current < count() ? itemText(m_current) : QString();
}

void ShareSelComboBox::OnChosen(int index) {
    m_current = index;
    (void)PostWindowMessage(HandleOf(m_owner), MsgComboChoice, kComboChoiceMade, 0);
    hidePopup();
}

}  // namespace marrowfin
