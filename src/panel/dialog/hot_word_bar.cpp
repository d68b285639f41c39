#include "panel/dialog/hot_word_bar.h"

#include <QFontMetrics>
#include <QWidget>
#include <algorithm>

#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"

namespace marrowfin {

namespace {
constexpr int kKind = 55;  // underlined link, plain while `selected`
constexpr int kLeftUnits = 18;  // the label's left edge
constexpr int kTopUnits = 78;  // the first line's top
constexpr int kFirstGapUnits = 10;  // label to first word
constexpr int kWordGapUnits = 15;
constexpr int kRightMarginUnits = 11;
constexpr int kLineUnits = 20;
}  // namespace

HotWordBar::HotWordBar(QWidget* panel, std::function<void(int id)> onClick)
    : QObject(panel), m_panel(panel), m_onClick(std::move(onClick)) {}

CSkinButton* HotWordBar::Take(size_t index, const QString& caption) {
    if (index < m_buttons.size() && m_buttons[index]) {
        m_buttons[index]->setText(caption);
        return m_buttons[index];
    }
    auto* button = new CSkinButton(m_panel);
    const int id = kLabelId + static_cast<int>(index);
    button->Create(caption, false, QRect(), m_panel, id);
    button->kind = kKind;
    connect(button, &QAbstractButton::clicked, this, [this, id] {
        if (m_onClick) m_onClick(id);
    });
    if (index < m_buttons.size()) m_buttons[index] = button;
    else m_buttons.push_back(button);
    return button;
}

void HotWordBar::Build(const std::vector<QString>& words, int clientWidth) {
    const size_t count = words.size() < 2 ? 0 : std::min(words.size(), static_cast<size_t>(kMaxWords) + 1);
    // Buttons of a longer list before go; the rest are taken again.
    while (m_buttons.size() > count) {
        if (CSkinButton* gone = m_buttons.back()) {
            gone->hide();
            gone->deleteLater();  // it may be the one whose click is running
        }
        m_buttons.pop_back();
    }
    if (count == 0) return;

    const QFontMetrics metrics(Font(SkinFont::Normal));
    auto size = [&metrics](const QString& text) { return QSize(metrics.horizontalAdvance(text), metrics.height()); };

    CSkinButton* label = Take(0, QStringLiteral("热门搜索:"));
    label->hide();
    label->setEnabled(false);
    label->selected = true;
    const QSize labelSize = size(label->text());
    label->setGeometry(QRect(QPoint(ScaleUnits(kLeftUnits), ScaleUnits(kTopUnits)), labelSize));

    const int limit = clientWidth - ScaleUnits(kRightMarginUnits);
    int left = ScaleUnits(kLeftUnits) + labelSize.width() + ScaleUnits(kFirstGapUnits);
    int top = ScaleUnits(kTopUnits);
    for (size_t i = 1; i < count; ++i) {
        CSkinButton* word = Take(i, words[i]);
        word->hide();
        word->setEnabled(true);
        word->selected = false;
        word->hover = false;
        const QSize wordSize = size(words[i]);
        // Every word wraps when it would reach past the right margin, the
        // last one too, so that none runs off the panel. Later lines start
        // behind the label.
        if (left > limit || left + wordSize.width() > limit) {
            left = labelSize.width() + ScaleUnits(kLeftUnits);
            top += ScaleUnits(kLineUnits);
        }
        word->setGeometry(QRect(QPoint(left, top), wordSize));
        left += wordSize.width() + ScaleUnits(kWordGapUnits);
    }
}

void HotWordBar::SetShown(bool shown) {
    for (CSkinButton* button : Buttons()) button->setVisible(shown);
}

std::vector<CSkinButton*> HotWordBar::Buttons() const {
    std::vector<CSkinButton*> out;
    for (const QPointer<CSkinButton>& button : m_buttons)
        if (button) out.push_back(button);
    return out;
}

CSkinButton* HotWordBar::Button(int id) const {
    const int index = id - kLabelId;
    if (index < 0 || index >= static_cast<int>(m_buttons.size())) return nullptr;
    return m_buttons[static_cast<size_t>(index)];
}

}  // namespace marrowfin
