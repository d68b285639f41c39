#pragma once
// CSkinButton: an owner-drawn button whose look is a recipe number, `kind`,
// of fills, outlines, fonts and skin cells. Hover follows the mouse (with the
// hand cursor); `selected` is held by the owner, as a tab is.

#include <QAbstractButton>

namespace marrowfin {

class CSkinButton : public QAbstractButton {
    Q_OBJECT
public:
    explicit CSkinButton(QWidget* parent = nullptr);
    ~CSkinButton() override;

    // Caption, shown or not, rectangle in pixels, control id; the caller sets `kind` next.
    void Create(const QString& caption, bool visible, const QRect& rect, QWidget* parent, int id);
    int ControlId() const { return m_id; }

    // The skin cell in sheet pixels: left, top, left + width, top + height.
    void SetSheetRect(int left, int top, int width, int height);
    // The same from sheet units, each number scaled by SheetScale on its own.
    void SetSheetCell(int x, int y, int width, int height);

    bool hover = false;
    bool selected = false;
    int kind = 0;
    struct SheetRect {
        int left = 0, top = 0, right = 0, bottom = 0;
    } sheetRect;

    // The owner changed `selected` or a mark: repaint now.
    void Redraw() { repaint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

    virtual void DrawItem(QPainter& painter);
    // Hover on: set it, repaint, the hand cursor.
    void HoverOn();
    bool Disabled() const { return !isEnabled(); }
    // Draws the left or the right frame of the cell into `target`.
    void DrawFrame(QPainter& painter, const QRect& target, bool rightFrame) const;

private:
    int m_id = 0;
};

}  // namespace marrowfin
