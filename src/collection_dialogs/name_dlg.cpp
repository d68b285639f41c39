#include "collection_dialogs/name_dlg.h"

#include <QLineEdit>
#include <QPainter>

#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {

const QColor kFrame(0x88, 0x88, 0x88);
const QColor kText(0x33, 0x33, 0x33);
const QColor kBox(0xB7, 0xB7, 0xB7);
const QColor kWarning(0xEB, 0x53, 0x50);

}  // namespace

CNameDlg::CNameDlg(QWidget* parent, const NameLook& look, std::u16string parentPath, std::u16string name)
    : CCollectionDialogFrame(parent,
                             FrameLook{347, 183, kFrame, look.title, 11, 30, false, QColor(0x33, 0x33, 0x33), QRect()}),
      m_parentPath(std::move(parentPath)), m_name(std::move(name)), m_nameLook(look) {
    m_oldName = m_name;
    const int w = ScaleUnits(347);
    MakeCloseButton(QRect(QPoint(w - ScaleUnits(24), ScaleUnits(7)), QPoint(w - ScaleUnits(8), ScaleUnits(23))),
                    IdClose);
    m_okButton = MakeButton(look.okCaption, 50, ScaleRect(157, 138, 237, 162), IdOk);
    CSkinButton* cancel = MakeButton(QStringLiteral("关闭"), 51, ScaleRect(247, 138, 327, 162), IdCancel);
    connect(m_okButton, &QAbstractButton::clicked, this, [this] {
        if (!Waiting()) OnOk();
    });
    connect(cancel, &QAbstractButton::clicked, this, [this] { reject(); });

    m_edit = new QLineEdit(this);
    m_edit->setGeometry(ScaleRect(36, 80, 309, 101));
    m_edit->setMaxLength(50);
    m_edit->setFont(Font(SkinFont::Normal));
    m_edit->setFrame(false);
    m_edit->setStyleSheet(QStringLiteral("QLineEdit { background: white; color: #333333; }"));
    connect(m_edit, &QLineEdit::returnPressed, this, [this] {
        if (!Waiting()) OnOk();
    });
    connect(m_edit, &QLineEdit::textChanged, this, [this] {
        if (m_error <= NoError) return;
        m_error = NoError;
        update(ScaleRect(135, 49, 315, 69));
        update(ScaleRect(31, 76, 315, 107));
    });
    m_edit->setFocus();
}

std::u16string CNameDlg::TypedName() const { return m_edit->text().trimmed().toStdU16String(); }

void CNameDlg::Refuse(int error) {
    m_error = error;
    update();
}

void CNameDlg::PaintBody(QPainter& painter) {
    const QFont& font = Font(SkinFont::Normal);
    DrawTextLine(painter, ScaleRect(31, 49, 109, 69), Label(), font, kText, TextPlace::Left, false);
    DrawRoundRect(painter, ScaleRect(31, 76, 315, 107), 2, m_error > NoError ? kWarning : kBox, Qt::white);
    static const QString kLines[] = {QString(), QStringLiteral("已有此文件，请修改"),
                                     QStringLiteral("文件名含有特殊字符，请重新输入")};
    const QString line = m_error == ServiceRefused                       ? m_nameLook.failureLine
                         : m_error > NoError && m_error < ServiceRefused ? kLines[m_error]
                                                                         : QString();
    if (!line.isEmpty())
        DrawTextLine(painter, ScaleRect(135, 49, 315, 69), line, font, kWarning, TextPlace::Right, false);
}

}  // namespace marrowfin
