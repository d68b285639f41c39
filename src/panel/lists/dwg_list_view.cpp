#include "panel/lists/dwg_list_view.h"

#include <QPaintEvent>
#include <QPainter>

namespace marrowfin {

struct CDWGListView::Impl {
    std::vector<std::u16string> paths;
    int selected = -1;
};

CDWGListView::CDWGListView(QWidget* parent) : QWidget(parent), m_impl(new Impl) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

CDWGListView::~CDWGListView() { delete m_impl; }

void CDWGListView::SetPaths(const std::vector<std::u16string>& paths) {
    // A new set of items: nothing of the old list stays selected.
    m_impl->paths = paths;
    m_impl->selected = -1;
    update();
}

int CDWGListView::GetItemCount() const { return static_cast<int>(m_impl->paths.size()); }

int CDWGListView::GetSelectedItem() const { return m_impl->selected; }

void CDWGListView::SetSelectedItem(int item) {
    const int next = item >= 0 && item < GetItemCount() ? item : -1;
    if (next == m_impl->selected) return;
    m_impl->selected = next;
    update();
}

// Every item is in view while the stand-in shows no cells.
void CDWGListView::EnsureVisible(int) {}

std::u16string CDWGListView::GetPath(int item) const {
    return item >= 0 && item < GetItemCount() ? m_impl->paths[static_cast<size_t>(item)] : std::u16string();
}

void CDWGListView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), Qt::white);
}

}  // namespace marrowfin
