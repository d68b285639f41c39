#pragma once
// The drawing of the demo host: a sheet of grid paper. An inserted block
// waits for the user's next click and is then placed there, its preview
// standing for the block's geometry.

#include <QImage>
#include <QPoint>
#include <QString>
#include <QWidget>
#include <optional>
#include <vector>

namespace marrowfin::demo {

struct PlacedBlock {
    QString path;
    QString name;
    QString mode;  // "", "YL" or "PMMC": how the panel asked for it
    QImage preview;  // null when the drawing has no readable preview
    QPoint at;  // top-left on the sheet
};

class DrawingSheet : public QWidget {
    Q_OBJECT
public:
    static constexpr int kGrid = 20;  // minor grid step, pixels
    static constexpr int kMajorEvery = 5;  // a darker line every fifth step
    static constexpr int kBlockSide = 120;  // longest side of a placed block

    explicit DrawingSheet(QWidget* parent = nullptr);

    // The block to place at the next click; replaces one still waiting.
    void SetPending(const PlacedBlock& block);
    bool HasPending() const { return m_pending.has_value(); }
    void CancelPending();

    const std::vector<PlacedBlock>& blocks() const { return m_blocks; }
    // The rectangle a placed block covers.
    static QRect BlockRect(const PlacedBlock& block);

signals:
    void blockPlaced(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::optional<PlacedBlock> m_pending;
    QPoint m_cursor{-1, -1};
    std::vector<PlacedBlock> m_blocks;
};

}  // namespace marrowfin::demo
