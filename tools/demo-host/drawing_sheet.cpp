#include "drawing_sheet.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace marrowfin::demo {

namespace {

QSize FittedSize(const QImage& image) {
    if (image.isNull()) return {DrawingSheet::kBlockSide, DrawingSheet::kBlockSide * 2 / 3};
    return image.size().scaled(DrawingSheet::kBlockSide, DrawingSheet::kBlockSide, Qt::KeepAspectRatio);
}

void PaintBlock(QPainter& p, const PlacedBlock& block, bool ghost) {
    const QRect r = DrawingSheet::BlockRect(block);
    p.setOpacity(ghost ? 0.5 : 1.0);
    if (!block.preview.isNull()) {
        p.drawImage(r, block.preview);
    } else {
        p.fillRect(r, QColor(0xf4, 0xf4, 0xf4));
        p.setPen(QColor(0x80, 0x80, 0x80));
        p.drawText(r, Qt::AlignCenter | Qt::TextWordWrap, block.name);
    }
    p.setPen(
        QPen(ghost ? QColor(0x20, 0x80, 0xe0) : QColor(0x30, 0x30, 0x30), 1, ghost ? Qt::DashLine : Qt::SolidLine));
    p.drawRect(r.adjusted(0, 0, -1, -1));
    p.setOpacity(1.0);
}

}  // namespace

DrawingSheet::DrawingSheet(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setMinimumSize(320, 240);
    setAutoFillBackground(false);
}

void DrawingSheet::SetPending(const PlacedBlock& block) {
    m_pending = block;
    setCursor(Qt::CrossCursor);
    update();
}

void DrawingSheet::CancelPending() {
    m_pending.reset();
    unsetCursor();
    update();
}

QRect DrawingSheet::BlockRect(const PlacedBlock& block) { return QRect(block.at, FittedSize(block.preview)); }

void DrawingSheet::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.fillRect(rect(), QColor(0xfd, 0xfd, 0xf8));
    const QColor minor(0xdc, 0xe6, 0xf0), major(0xa8, 0xbe, 0xd4);
    for (int x = 0, i = 0; x < width(); x += kGrid, ++i) {
        p.setPen(i % kMajorEvery == 0 ? major : minor);
        p.drawLine(x, 0, x, height());
    }
    for (int y = 0, i = 0; y < height(); y += kGrid, ++i) {
        p.setPen(i % kMajorEvery == 0 ? major : minor);
        p.drawLine(0, y, width(), y);
    }
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    for (const PlacedBlock& block : m_blocks) PaintBlock(p, block, false);
    if (m_pending && m_cursor.x() >= 0) {
        PlacedBlock ghost = *m_pending;
        ghost.at = m_cursor;
        PaintBlock(p, ghost, true);
    }
}

void DrawingSheet::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton && m_pending) {
        CancelPending();
        return;
    }
    if (event->button() != Qt::LeftButton || !m_pending) {
        QWidget::mousePressEvent(event);
        return;
    }
    PlacedBlock block = std::move(*m_pending);
    m_pending.reset();
    // Snap to the grid, as a drafter would.
    const QPoint at = event->position().toPoint();
    block.at = QPoint((at.x() + kGrid / 2) / kGrid * kGrid, (at.y() + kGrid / 2) / kGrid * kGrid);
    m_blocks.push_back(std::move(block));
    unsetCursor();
    update();
    emit blockPlaced(static_cast<int>(m_blocks.size()) - 1);
}

void DrawingSheet::mouseMoveEvent(QMouseEvent* event) {
    m_cursor = event->position().toPoint();
    if (m_pending) update();
}

void DrawingSheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_pending) {
        CancelPending();
        return;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace marrowfin::demo
