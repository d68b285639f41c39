#pragma once
// CDWGListView: the thumbnail grid of the shown class (virtual: it asks for
// what it shows).
//
// For now a plain stand-in: it keeps the paths, answers the count and the
// selection and paints a white area. The grid of cells with their previews,
// the lazy loading for the shown range and the mouse commands join later.

#include <QWidget>
#include <string>
#include <vector>

namespace marrowfin {

class CDWGListView : public QWidget {
    Q_OBJECT
public:
    explicit CDWGListView(QWidget* parent = nullptr);
    ~CDWGListView() override;

    // The block paths of the shown class; an empty path is the tile cell.
    void SetPaths(const std::vector<std::u16string>& paths);
    int GetItemCount() const;
    int GetSelectedItem() const;   // -1 when none
    void SetSelectedItem(int item);
    void EnsureVisible(int item);

    // The path of an item; empty for no item.
    std::u16string GetPath(int item) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace marrowfin
