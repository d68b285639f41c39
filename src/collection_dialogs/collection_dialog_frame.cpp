#include "collection_dialogs/collection_dialog_frame.h"

#include <QKeyEvent>
#include <QPainter>

#include "collection_dialogs/collection_tip.h"
#include "panel/classes/panel_workers.h"
#include "platform/qt/window_message_event.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

const QColor kTitleStrip(0xF2, 0xF3, 0xF5);

}  // namespace

CCollectionDialogFrame::CCollectionDialogFrame(QWidget* parent, const FrameLook& look)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_look(look) {
    setWindowModality(Qt::WindowModal);
    setFixedSize(ScaleUnits(look.width), ScaleUnits(look.height));
    setWindowTitle(look.title);
    (void)HandleOf(this);
}

CSkinButton* CCollectionDialogFrame::MakeButton(const QString& caption, int kind, const QRect& rect, int id) {
    auto* button = new CSkinButton(this);
    button->Create(caption, true, rect, this, id);
    button->kind = kind;
    return button;
}

CSkinButton* CCollectionDialogFrame::MakeCloseButton(const QRect& rect, int id) {
    CSkinButton* button = MakeButton(QString(), 3, rect, id);
    button->SetSheetCell(160, 88, 16, 16);
    connect(button, &QAbstractButton::clicked, this, [this] { reject(); });
    return button;
}

bool CCollectionDialogFrame::StartWorker(std::function<void()> work) { return StartPanelWorker(std::move(work)); }

void CCollectionDialogFrame::SetWaiting(bool waiting) {
    m_waiting = waiting;
    if (m_okButton) m_okButton->setEnabled(!waiting);
    if (waiting) setCursor(Qt::BusyCursor);
    else unsetCursor();
}

void CCollectionDialogFrame::ShowTip(const CollectionMessage& shown, std::function<void(int)> then) {
    m_tip = OpenCollectionTip(this, shown, this, std::move(then));
}

void CCollectionDialogFrame::OnWindowMessage(uint32_t, std::uintptr_t, std::intptr_t, MessagePayload*) {}

bool CCollectionDialogFrame::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* message = static_cast<WindowMessageEvent*>(event);
        OnWindowMessage(message->Message(), message->WParam(), message->LParam(), message->Payload());
        return true;
    }
    return QDialog::event(event);
}

void CCollectionDialogFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect client = rect();
    painter.fillRect(client, Qt::white);
    painter.setPen(m_look.frame);
    painter.drawRect(client.adjusted(0, 0, -1, -1));
    painter.fillRect(QRect(1, 1, client.width() - 2, ScaleUnits(29)), kTitleStrip);
    const QRect title = m_look.titleRect.isEmpty() ? ScaleRect(m_look.titleLeft, 0, m_look.width - 40, 30)
                                                   : ScaleBox(m_look.titleRect.x(), m_look.titleRect.y(),
                                                              m_look.titleRect.width(), m_look.titleRect.height());
    DrawTextLine(painter, title, m_look.title, Font(SkinFont::Normal), m_look.titleColour, TextPlace::Left, true);
    PaintBody(painter);
}

void CCollectionDialogFrame::mousePressEvent(QMouseEvent* event) {
    const int y = event->position().toPoint().y();
    const int rows = ScaleUnits(m_look.dragRows);
    if (event->button() == Qt::LeftButton && (m_look.dragInclusive ? y <= rows : y < rows)) {
        m_dragging = true;
        m_dragOffset = event->globalPosition().toPoint() - frameGeometry().topLeft();
        return;
    }
    QDialog::mousePressEvent(event);
}

void CCollectionDialogFrame::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging && (event->buttons() & Qt::LeftButton)) {
        move(event->globalPosition().toPoint() - m_dragOffset);
        return;
    }
    QDialog::mouseMoveEvent(event);
}

void CCollectionDialogFrame::mouseReleaseEvent(QMouseEvent* event) {
    m_dragging = false;
    QDialog::mouseReleaseEvent(event);
}

void CCollectionDialogFrame::keyPressEvent(QKeyEvent* event) {
    // Enter must not press a default button, Esc must not end the dialog: only
    // the dialog's own buttons end it.
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape: event->accept(); return;
        default: QDialog::keyPressEvent(event);
    }
}

}  // namespace marrowfin
