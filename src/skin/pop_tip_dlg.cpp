#include "skin/pop_tip_dlg.h"

#include <QKeyEvent>
#include <QPainter>

#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_paint.h"
#include "skin/skin_scale.h"

namespace marrowfin {

CPopTipDlg::CPopTipDlg(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint) { setModal(true); }

void CPopTipDlg::Configure(const QString& title, bool twoButtons, const QString& text1, const QString& text2,
                           const QString& okText, const QString& cancelText) {
    m_title = title;
    m_twoButtons = twoButtons;
    m_text1 = text1;
    m_text2 = text2;
    m_twoLines = !text2.isEmpty();
    m_okText = okText;
    m_cancelText = cancelText;
    m_configured = true;
}

void CPopTipDlg::OnInitDialog() {
    if (m_built) return;
    m_built = true;
    setFixedSize(ScaleUnits(347), ScaleUnits(183));
    if (parentWidget()) move(parentWidget()->window()->geometry().center() - rect().center());
    m_ok = new CSkinButton(this);
    m_ok->Create(QString(), false, QRect(), this, 1000);
    m_ok->kind = 50;
    m_cancel = new CSkinButton(this);
    m_cancel->Create(QString(), false, QRect(), this, 1001);
    m_cancel->kind = 51;
    m_close = new CSkinButton(this);
    const int w = width();
    m_close->Create(QString(), true, QRect(w - ScaleUnits(24), ScaleUnits(7), ScaleUnits(16), ScaleUnits(16)), this,
                    1002);
    m_close->kind = 3;
    m_close->SetSheetCell(160, 88, 16, 16);
    connect(m_ok, &QAbstractButton::clicked, this, [this] { done(1); });
    connect(m_cancel, &QAbstractButton::clicked, this, [this] { done(2); });
    connect(m_close, &QAbstractButton::clicked, this, [this] { done(2); });
    if (!m_configured) return;  // an empty box
    m_ok->setText(m_okText);
    if (m_twoButtons) {
        m_cancel->setText(m_cancelText);
        m_ok->setGeometry(ScaleBox(157, 138, 80, 24));
        m_cancel->setGeometry(ScaleBox(247, 138, 80, 24));
        m_ok->show();
        m_cancel->show();
    } else {
        m_ok->setGeometry(ScaleBox(267 / 2, 138, 80, 24));
        m_ok->show();
        m_cancel->hide();
    }
}

int CPopTipDlg::exec() {
    OnInitDialog();
    return QDialog::exec();
}

void CPopTipDlg::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        done(2);
        return;
    }
    QDialog::keyPressEvent(event);
}

void CPopTipDlg::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const QRect client = rect();
    p.fillRect(client, Qt::white);
    p.setPen(QColor(0x88, 0x88, 0x88));
    p.drawRect(client.adjusted(0, 0, -1, -1));
    p.fillRect(QRect(1, 1, client.width() - 2, ScaleUnits(29)), QColor(0xF2, 0xF3, 0xF5));
    const QColor text(0x33, 0x33, 0x33);
    const QFont& font = Font(SkinFont::Normal);
    DrawTextLine(p, ScaleRect(8, 6, 104, 26), m_title, font, text, TextPlace::Left, true);
    if (m_twoLines) {
        DrawTextLine(p, ScaleRect(0, 64, 347, 84), m_text1, font, text, TextPlace::Centre, true);
        DrawTextLine(p, ScaleRect(0, 88, 347, 108), m_text2, font, text, TextPlace::Centre, true);
    } else {
        DrawTextLine(p, ScaleRect(0, 76, 347, 96), m_text1, font, text, TextPlace::Centre, true);
    }
}

}  // namespace marrowfin
