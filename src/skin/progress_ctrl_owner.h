#pragma once
// CProgressCtrlOwner: a thin rounded progress bar.

#include <QColor>
#include <QWidget>

namespace marrowfin {

class CProgressCtrlOwner : public QWidget {
    Q_OBJECT
public:
    explicit CProgressCtrlOwner(QWidget* parent = nullptr);

    // -1 and nothing changed when outside minimum..maximum; else 0.
    int SetPos(int position);
    int GetPos() const { return m_pos; }
    // When the minimum is below 100: range 0..100 and position 0.
    void ResetRange();
    void SetRange(int16_t minimum, int16_t maximum);
    void UseBlueFill();
    void UseGreyGround();
    void UseLightOutline();

    QColor fill{0x57, 0x99, 0xF5};
    QColor ground{0x52, 0x52, 0x52};
    QColor outline{0x68, 0x68, 0x68};

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int16_t m_pos = 0, m_min = 0, m_max = 100;
};

}  // namespace marrowfin
