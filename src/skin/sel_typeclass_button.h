#pragma once
// CSelTypeclassButton: the buttons of the class pickers. `kind` here is a
// set of its own: 1 class button, 2 section title, 3 kind tab, 4 scroll arrow
// of a tab row, 5 sort option.

#include "skin/skin_button.h"

namespace marrowfin {

class CSelTypeclassButton : public CSkinButton {
    Q_OBJECT
public:
    explicit CSelTypeclassButton(QWidget* parent = nullptr);

    QString describe;
    int checked = 0;
    int boutique = 0;
    bool isNew = false;
    bool kindIsNew = false;
    bool showDesc = false;
    QString version;

    // Where a class button's caption starts (x in pixels), or -1 when it is centred.
    int CaptionStart() const;

protected:
    void DrawItem(QPainter& painter) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void DrawClassButton(QPainter& painter);
};

}  // namespace marrowfin
