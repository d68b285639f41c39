#pragma once
// CSearchListCtrl: the owner-drawn result rows of the search pages. It shows
// the owner's rows; it never copies them.

#include <QWidget>
#include <vector>

#include "panel/model/block_row.h"

namespace marrowfin {

class CSearchListCtrl : public QWidget {
    Q_OBJECT
public:
    explicit CSearchListCtrl(QWidget* parent = nullptr);
    ~CSearchListCtrl() override;

    // The rows to show (the panel's m_rows); null shows none. Repaints.
    void SetRows(std::vector<BlockRow>* rows);
    int GetItemCount() const;
    // The key of the highlight rule (m_lastSearch).
    void SetSearchKey(const QString& key);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace marrowfin
