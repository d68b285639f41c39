#include "collection_dialogs/block_folder_dlg.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "collection/name_rule.h"
#include "collection_dialogs/share_sel_combo_box.h"
#include "skin/measure_text.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"

namespace marrowfin {

namespace {

const QColor kFrame(0x00, 0x82, 0xF0);
const QColor kText(0x33, 0x33, 0x33);
const QColor kOutline(0x99, 0x99, 0x99);
const QColor kHoverOutline(0x29, 0x75, 0xE6);
const QColor kWarning(0xEB, 0x53, 0x50);
const QColor kPlaceholder(0xBF, 0xBF, 0xBF);
const QColor kTriangle(0x99, 0x99, 0x99);

// The middle square of a picture, so that stretching it to a square keeps its shape.
QImage MiddleSquare(const QImage& picture) {
    const int side = std::min(picture.width(), picture.height());
    return picture.copy((picture.width() - side) / 2, (picture.height() - side) / 2, side, side);
}

}  // namespace

CBlockFolderDlg::CBlockFolderDlg(QWidget* parent, const BodyLook& look, std::u16string name, std::u16string path,
                                 const QImage& thumbnail)
    : CCollectionDialogFrame(parent,
                             FrameLook{400, 200, kFrame, look.title, 8, 31, true, QColor(0x33, 0x33, 0x33), QRect()}),
      m_name(std::move(name)), m_path(std::move(path)), m_body(look) {
    if (!thumbnail.isNull()) m_thumbnail = MiddleSquare(thumbnail);
    setMouseTracking(true);
    const int w = ScaleUnits(400);
    const int h = ScaleUnits(200);
    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("nameEdit"));
    m_edit->setGeometry(ScaleBox(165, 60, 213, 22));
    m_edit->setFont(Font(SkinFont::Normal));
    m_edit->setFrame(false);
    m_edit->setEnabled(false);
    // A disabled edit keeps the dialog's look: white, the text in its colour.
    m_edit->setStyleSheet(QStringLiteral("QLineEdit { background: white; color: #333333; }"));
    m_edit->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_combo = new ShareSelComboBox(this, 16, QRect(), IdFolderCombo);

    const int top = h - ScaleUnits(look.buttonRowFromBottom);
    m_okButton = MakeButton(look.okCaption, 50, QRect(w - ScaleUnits(190), top, ScaleUnits(80), ScaleUnits(24)), IdOk);
    CSkinButton* cancel = MakeButton(QStringLiteral("取消"), 51,
                                     QRect(w - ScaleUnits(100), top, ScaleUnits(80), ScaleUnits(24)), IdCancel);
    MakeCloseButton(QRect(w - ScaleUnits(21), ScaleUnits(12), ScaleUnits(16), ScaleUnits(16)), IdClose);
    connect(m_okButton, &QAbstractButton::clicked, this, [this] {
        if (!Waiting()) OnOk();
    });
    connect(cancel, &QAbstractButton::clicked, this, [this] { reject(); });

    // The folder field starts behind the measured path label.
    const int labelWidth = MeasureText(look.pathLabel);
    m_folderRect = QRect(QPoint(ScaleUnits(116) + labelWidth, ScaleUnits(100)),
                         QPoint(ScaleUnits(116) + labelWidth + ScaleUnits(98), ScaleUnits(124)));
    m_nameRect = ScaleRect(164, 59, 379, 83);
    m_combo->setGeometry(m_folderRect);
}

void CBlockFolderDlg::SetFolders(const std::vector<std::u16string>& names) {
    m_combo->clear();
    for (const std::u16string& name : names) m_combo->addItem(QString::fromStdU16String(name));
    m_combo->m_current = 0;
    m_folder = m_combo->CurrentText().toStdU16String();
    update(m_folderRect);
}

void CBlockFolderDlg::PaintBody(QPainter& painter) {
    const QFont& font = Font(SkinFont::Normal);
    DrawTextLine(painter, ScaleRect(116, 60, 200, 80), QStringLiteral("图块名："), font, kText, TextPlace::Left, false);
    const QRect picture = ScaleBox(21, 51, 80, 80);
    if (!m_thumbnail.isNull()) {
        painter.drawImage(picture, m_thumbnail);
    } else if (const QImage& placeholder = SkinPicture(QStringLiteral("placeholder_a"), true); !placeholder.isNull()) {
        // Without a preview: the skin's "暂无预览", uncut, in the middle of the square.
        QRect centred(QPoint(), placeholder.size());
        centred.moveCenter(picture.center());
        painter.drawImage(centred, placeholder);
    } else {
        painter.fillRect(picture, kPlaceholder);
    }
    DrawTextLine(painter, ScaleRect(116, 103, 300, 123), m_body.pathLabel, font, kText, TextPlace::Left, false);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(m_hoverFolder ? kHoverOutline : kOutline);
    painter.drawRect(m_folderRect.adjusted(0, 0, -1, -1));
    const int labelWidth = m_folderRect.left() - ScaleUnits(116);
    const QRect folderText(QPoint(ScaleUnits(127) + labelWidth, m_folderRect.top()),
                           QPoint(ScaleUnits(196) + labelWidth, m_folderRect.bottom()));
    DrawTextLine(painter, folderText, QString::fromStdU16String(m_folder), font, kText, TextPlace::Left, true);
    // The small triangle pointing down at the field's right end.
    const QPointF tip(m_folderRect.right() - ScaleUnits(10), m_folderRect.center().y() + ScaleUnits(3));
    QPainterPath triangle;
    triangle.moveTo(tip.x() - ScaleUnits(5), tip.y() - ScaleUnits(5));
    triangle.lineTo(tip.x() + ScaleUnits(5), tip.y() - ScaleUnits(5));
    triangle.lineTo(tip);
    triangle.closeSubpath();
    painter.fillPath(triangle, kTriangle);

    painter.setPen(m_hoverName ? kHoverOutline : kOutline);
    painter.drawRect(m_nameRect.adjusted(0, 0, -1, -1));
    if (m_badName)
        DrawTextLine(painter, ScaleRect(164, 38, 378, 58), QString::fromStdU16String(std::u16string(kNameRuleLine)),
                     font, kWarning, TextPlace::Left, false);
}

void CBlockFolderDlg::OnWindowMessage(uint32_t message, std::uintptr_t wParam, std::intptr_t, MessagePayload*) {
    if (message != MsgComboChoice || wParam != kComboChoiceMade) return;
    m_folder = m_combo->CurrentText().toStdU16String();
    update(m_folderRect);
}

void CBlockFolderDlg::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && at.y() > ScaleUnits(31) && m_folderRect.contains(at)) {
        m_combo->ShowDropDown();
        return;
    }
    CCollectionDialogFrame::mousePressEvent(event);
}

void CBlockFolderDlg::mouseMoveEvent(QMouseEvent* event) {
    UpdateHover(event->position().toPoint());
    CCollectionDialogFrame::mouseMoveEvent(event);
}

void CBlockFolderDlg::leaveEvent(QEvent* event) {
    UpdateHover(QPoint(-1, -1));
    CCollectionDialogFrame::leaveEvent(event);
}

void CBlockFolderDlg::UpdateHover(const QPoint& at) {
    const bool overFolder = m_folderRect.contains(at);
    const bool overName = m_nameRect.contains(at);
    if (overFolder != m_hoverFolder) {
        m_hoverFolder = overFolder;
        update(m_folderRect);
    }
    if (overName != m_hoverName) {
        m_hoverName = overName;
        update(m_nameRect);
    }
}

}  // namespace marrowfin
