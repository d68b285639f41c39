#pragma once
// CSubclassButton: the tab of a subclass row on the panel. A double click
// and a right click are posted to the parent window.

#include "skin/skin_button.h"

namespace marrowfin {

class CSubclassButton : public CSkinButton {
    Q_OBJECT
public:
    explicit CSubclassButton(QWidget* parent = nullptr);

    // The child's path the panel stores with the button.
    QString data;
    bool boutique = false;

    // The caption as drawn: the part behind the first "..", unless it stands first.
    static QString ShownCaption(const QString& caption);

protected:
    void DrawItem(QPainter& painter) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
};

}  // namespace marrowfin
