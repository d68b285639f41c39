#pragma once
// Helpers of the list tests: an owner window that records the window
// messages posted to it, real clicks through the platform's window, and
// image comparisons of rows.

#include <QImage>
#include <QWidget>
#include <cstdint>
#include <vector>

namespace marrowfin::test {

struct Recorded {
    uint32_t message;
    std::uintptr_t wParam;
    std::intptr_t lParam;
    bool operator==(const Recorded&) const = default;
};

class RecordingOwner final : public QWidget {
public:
    std::vector<Recorded> messages;
    // Lets posted messages arrive, then answers and forgets them.
    std::vector<Recorded> Take();

protected:
    bool event(QEvent* event) override;
};

// A left click (or double click) delivered through the top-level window, as
// the platform delivers it.
void ClickAt(QWidget* widget, QPoint pos, Qt::MouseButton button = Qt::LeftButton);
void DoubleClickAt(QWidget* widget, QPoint pos);
// A wheel turn of `delta` eighths of a degree over `pos`.
void WheelAt(QWidget* widget, QPoint pos, int delta);
void Pump(int ms);
// Shows the window and waits until it is exposed.
bool ShowAndWait(QWidget* window);
// Whether the two images differ anywhere inside `area`.
bool Differs(const QImage& a, const QImage& b, const QRect& area);
// Whether `area` of `a` shows the same pixels as `b` at `atB` (same size).
bool SameBlock(const QImage& a, const QRect& area, const QImage& b, QPoint atB);

}  // namespace marrowfin::test
