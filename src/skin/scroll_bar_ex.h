#pragma once
// CScrollBarEx: the look of the masked list scroll bar on our own list
// widgets: a 6-pixel track with a thumb of caps, filler and grip, built from
// the skin's scroll bar pictures. The list keeps the bar's behaviour.

#include <QScrollBar>

class QAbstractScrollArea;

namespace marrowfin {

class CScrollBarEx : public QScrollBar {
    Q_OBJECT
public:
    explicit CScrollBarEx(Qt::Orientation orientation = Qt::Vertical, QWidget* parent = nullptr);
    // Puts this bar in place of the area's vertical bar.
    void Attach(QAbstractScrollArea* area);
    // The thumb's top and bottom in the bar's pixels.
    QPair<int, int> ThumbSpan() const;

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace marrowfin
