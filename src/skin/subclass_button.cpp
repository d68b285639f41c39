#include "skin/subclass_button.h"

#include <QMouseEvent>
#include <QPainter>

#include "platform/qt/qt_window_system.h"
#include "skin/skin_fonts.h"
#include "skin/skin_messages.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"

namespace marrowfin {

CSubclassButton::CSubclassButton(QWidget* parent) : CSkinButton(parent) {}

QString CSubclassButton::ShownCaption(const QString& caption) {
    const int at = caption.indexOf(QStringLiteral(".."));
    return at > 0 ? caption.mid(at + 2) : caption;
}

void CSubclassButton::DrawItem(QPainter& painter) {
    const QRect client = rect();
    painter.fillRect(client, Qt::white);
    const bool highlight = hover || selected;
    const QColor lit = boutique ? QColor(0xBB, 0x9D, 0x6A) : QColor(0x2A, 0x75, 0xE5);
    const QRect textRect(0, 0, client.width(), client.height() - ScaleUnits(3));
    DrawTextLine(painter, textRect, ShownCaption(text()), Font(highlight ? SkinFont::Bold : SkinFont::Normal),
                 highlight ? lit : QColor(Qt::black), TextPlace::Centre, true);
    if (selected) {
        const int bar = ScaleUnits(3);
        painter.fillRect(QRect(0, client.height() - bar, client.width(), bar), lit);
    }
}

void CSubclassButton::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && parentWidget()) {
        PostWindowMessage(HandleOf(parentWidget()), MsgPanelCommand, PanelCommand::RenameFolder,
                          static_cast<std::intptr_t>(HandleOf(this)));
        event->accept();
        return;
    }
    CSkinButton::mouseDoubleClickEvent(event);
}

void CSubclassButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton && parentWidget())
        PostWindowMessage(HandleOf(parentWidget()), MsgPanelEvent, PanelEvent::FolderMenu,
                          static_cast<std::intptr_t>(HandleOf(this)));
    CSkinButton::mousePressEvent(event);
}

}  // namespace marrowfin
