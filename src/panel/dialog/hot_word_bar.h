#pragma once
// HotWordBar: the row of hot words under the search box. A disabled label
// "热门搜索:" and one underlined skin button per offered word, each as large
// as its text, placed from the panel's left and wrapped to its width. It
// holds nothing of the panel: it is handed the words and the width whenever
// it is built, and reports a click by the word's control id (4000 plus its
// index in the words). The buttons are children of the panel, made on the
// first build and reused by the next ones.

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <vector>

#include "panel/model/panel_numbers.h"

class QWidget;

namespace marrowfin {

class CSkinButton;

class HotWordBar final : public QObject {
public:
    static constexpr int kLabelId = ControlId::HotWordLabel;
    static constexpr int kMaxWords = ControlId::HotWords;  // the panel answers ids 4001 to 4032 only

    HotWordBar(QWidget* panel, std::function<void(int id)> onClick);

    // Rebuilds the row, hidden, from `words`: entry 0 is the default word and
    // gets no button, so fewer than two words make no row at all.
    void Build(const std::vector<QString>& words, int clientWidth);
    void SetShown(bool shown);

    // The label first, then the words' buttons in id order.
    std::vector<CSkinButton*> Buttons() const;
    CSkinButton* Button(int id) const;

private:
    CSkinButton* Take(size_t index, const QString& caption);

    QWidget* m_panel;
    std::function<void(int)> m_onClick;
    std::vector<QPointer<CSkinButton>> m_buttons;
};

}  // namespace marrowfin
