#include "skin/progress_ctrl_owner.h"

#include <QPainter>

namespace marrowfin {

CProgressCtrlOwner::CProgressCtrlOwner(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent, true);
}

int CProgressCtrlOwner::SetPos(int position) {
    if (position < m_min || position > m_max) return -1;
    m_pos = static_cast<int16_t>(position);
    update();
    return 0;
}

void CProgressCtrlOwner::ResetRange() {
    if (m_min < 100) {
        m_min = 0;
        m_max = 100;
        m_pos = 0;
        update();
    }
}

void CProgressCtrlOwner::SetRange(int16_t minimum, int16_t maximum) {
    m_min = minimum;
    m_max = maximum;
    update();
}

void CProgressCtrlOwner::UseBlueFill() {
    fill = QColor(0x29, 0x75, 0xE6);
    update();
}
void CProgressCtrlOwner::UseGreyGround() {
    ground = QColor(0xC1, 0xC1, 0xC2);
    update();
}
void CProgressCtrlOwner::UseLightOutline() {
    outline = QColor(0xF2, 0xF3, 0xF5);
    update();
}

void CProgressCtrlOwner::paintEvent(QPaintEvent*) {
    QImage buffer(size(), QImage::Format_RGB32);
    buffer.fill(Qt::white);
    {
        QPainter p(&buffer);
        p.setRenderHint(QPainter::Antialiasing, true);
        const QRectF client = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        const qreal radius = std::min<qreal>(3.5, client.height() / 2);
        p.setPen(QPen(outline, 1));
        p.setBrush(ground);
        p.drawRoundedRect(client, radius, radius);
        const int right = m_max > 0 ? static_cast<int>(static_cast<double>(m_pos) / m_max * width()) : 0;
        if (right > 0) {
            p.setBrush(fill);
            p.drawRoundedRect(QRectF(0.5, 0.5, right - 1.0, client.height()), radius, radius);
        }
    }
    QPainter(this).drawImage(0, 0, buffer);
}

}  // namespace marrowfin
