// The panel's control table: every child window with its id, caption, place,
// first visibility and look, created in the table's order.

#include <QEvent>
#include <QLineEdit>

#include "panel/dialog/brindle_dlg.h"
#include "panel/dialog/hot_word_bar.h"
#include "panel/lists/class_list_ctrl.h"
#include "panel/lists/dwg_list_view.h"
#include "panel/lists/search_list_ctrl.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_scale.h"
#include "skin/subclass_button.h"

namespace marrowfin {

namespace {

struct ButtonSpec {
    int id;
    const char16_t* caption;
    int left, top, right, bottom;  // base units
    bool visible;
    int kind;
    int cellX, cellY, cellSize;  // cellSize 0: no skin cell
};

// The collection bar, in the order of m_collectionBtns.
constexpr ButtonSpec kCollectionBar[] = {
    {ControlId::AddBlocks, u"添加图块", 136, 41, 216, 65, false, 4, 44, 72, 14},
    {ControlId::NewFolder, u"新建文件夹", 221, 41, 317, 65, false, 4, 72, 72, 14},
    {ControlId::DeleteBlock, u"删除图块", 423, 41, 503, 65, false, 4, 100, 72, 14},
    {ControlId::ShareCollection, u"分享收藏", 508, 41, 588, 65, false, 4, 128, 72, 14},
    {ControlId::SearchCollection, u"搜索收藏", 593, 41, 673, 65, false, 4, 417, 89, 14},
    {ControlId::DeleteFolder, u"删除文件夹", 322, 41, 418, 65, false, 4, 100, 72, 14},
};

constexpr ButtonSpec kEmptyStateButtons[] = {
    {ControlId::AddBlocksEmpty, u"添加图块", 352, 270, 422, 294, false, 13, 0, 0, 0},
    {ControlId::DownloadGallery, u"下载图库", 352, 270, 422, 294, false, 13, 0, 0, 0},
};

constexpr ButtonSpec kSyncPrompt[] = {
    {ControlId::ReplaceCloud, u"替换", 324, 265, 394, 289, false, 50, 0, 0, 0},
    {ControlId::KeepCloud, u"不替换", 414, 265, 484, 289, false, 51, 0, 0, 0},
    {ControlId::RetrySync, u"重试", 364, 265, 434, 289, false, 50, 0, 0, 0},
};

constexpr ButtonSpec kSearchButtons[] = {
    {ControlId::ClearSearch, u"", 617, 44, 633, 60, false, 2, 0, 72, 14},
    {ControlId::Search, u"搜索", 638, 40, 686, 64, false, 6, 0, 0, 0},
    {ControlId::SearchBack, u"返回", 697, 40, 745, 64, false, 7, 0, 0, 0},
};

// The title bar's buttons stand at fixed distances from the right edge.
struct TitleSpec {
    int id;
    const char16_t* caption;
    int fromRightLeft, top, fromRightRight, bottom;
    int cellX;
};
constexpr TitleSpec kTitleButtons[] = {
    {ControlId::Feedback, u"反馈", 94, 7, 39, 23, 64},
    {ControlId::OpenSearch, u"搜索", 204, 7, 149, 23, 416},
    {ControlId::Statistics, u"统计", 149, 7, 94, 23, 288},
};

QString Text(const char16_t* text) { return QString::fromUtf16(text); }

// Repaints the search box when the edit gains or loses the focus on a search page.
class SearchEditWatch final : public QObject {
public:
    explicit SearchEditWatch(CBrindleDlg* panel) : QObject(panel), m_panel(panel) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if ((event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) &&
            IsSearchPage(m_panel->m_nav.page))
            m_panel->update(ScaleRect(11, 39, 689, 65));
        return QObject::eventFilter(watched, event);
    }

private:
    CBrindleDlg* m_panel;
};

}  // namespace

void CBrindleDlg::CreateControls() {
    const int w = ScaleUnits(755);

    // The close button.
    {
        auto* close = new CSkinButton(this);
        close->Create(QString(), true, QRect(w - ScaleUnits(24), ScaleUnits(7), ScaleUnits(16), ScaleUnits(16)), this,
                      ControlId::Close);
        close->kind = 3;
        close->SetSheetCell(160, 88, 16, 16);
        connect(close, &QAbstractButton::clicked, this, [this] { OnButton(ControlId::Close); });
        m_buttons[ControlId::Close] = close;
    }

    CreateSearchEdit();

    // The thumbnail list, the result list (hidden) and the class list.
    m_pThumbList = new CDWGListView(this);
    m_pThumbList->setFont(Font(SkinFont::Normal));
    m_pThumbList->setGeometry(ScaleRect(133, 72, 745, 415));
    m_pThumbList->show();

    m_searchList = new CSearchListCtrl(this);
    m_searchList->SetOwner(Handle());
    m_searchList->setGeometry(ScaleBox(7, 72, 740, 343));
    m_searchList->hide();

    m_classList = new CClassListCtrl(this);
    m_classList->setGeometry(QRect(1, ScaleUnits(112), ScaleUnits(132), ScaleUnits(295)));
    m_classList->show();

    // The buttons, in the table's order, then the progress bar.
    CreateButtons(w);

    m_progress = new CProgressCtrlOwner(this);
    m_progress->setGeometry(ScaleRect(644, 435, 746, 442));
    m_progress->UseBlueFill();
    m_progress->UseGreyGround();
    m_progress->UseLightOutline();
    m_progress->hide();

    // The hot word row is made when the search page first opens.
    m_hotWordBar = new HotWordBar(this, [this](int id) { OnButton(id); });
}

void CBrindleDlg::CreateSearchEdit() {
    // The search edit: frameless, three units wide until text widens it.
    m_searchEdit = new QLineEdit(this);
    m_searchEdit->setObjectName(QStringLiteral("searchEdit"));
    m_searchEdit->setFrame(false);
    m_searchEdit->setFont(Font(SkinFont::Normal));
    m_searchEdit->setGeometry(ScaleRect(38, 43, 41, 60));
    m_searchEdit->hide();
    m_searchEdit->installEventFilter(new SearchEditWatch(this));
    // The widening and the suggestions join with the search box; the clear
    // button already follows whether there is text to clear.
    // The edit is three units wide while empty, so the painted placeholder
    // shows; typing widens it over the placeholder and shows the clear button.
    connect(m_searchEdit, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (CSkinButton* clear = Button(ControlId::ClearSearch)) clear->setVisible(!text.isEmpty());
        if (text.isEmpty()) {
            m_searchEdit->setGeometry(ScaleBox(38, 43, 3, 17));
            update(ScaleRect(11, 39, 689, 65));
            return;
        }
        m_searchEdit->setGeometry(ScaleBox(38, 43, 500, 17));
        m_searchEdit->setCursorPosition(static_cast<int>(text.size()));
        m_searchEdit->repaint();
    });
}

void CBrindleDlg::CreateButtons(int w) {  // w: the client width
    auto make = [this](CSkinButton* button, const ButtonSpec& spec) {
        button->Create(Text(spec.caption), spec.visible, ScaleRect(spec.left, spec.top, spec.right, spec.bottom), this,
                       spec.id);
        button->kind = spec.kind;
        if (spec.cellSize > 0) button->SetSheetCell(spec.cellX, spec.cellY, spec.cellSize, spec.cellSize);
        const int id = spec.id;
        connect(button, &QAbstractButton::clicked, this, [this, id] { OnButton(id); });
        return button;
    };

    m_buttons[ControlId::AddClasses] = make(new CSkinButton(this), ButtonSpec{ControlId::AddClasses, u"添加更多分类",
                                                                              12, 41, 126, 69, false, 12, 448, 88, 16});

    m_subclassBtns.clear();
    for (int i = 0; i < ControlId::SubclassButtons; ++i) {
        auto* button = new CSubclassButton(this);
        const int left = i < 9 ? 136 + 68 * i : 136 + 68 * (i - 9);
        const int top = i < 9 ? 41 : 75;
        const int id = ControlId::FirstSubclass + i;
        button->Create(QString(), false, ScaleBox(left, top, 65, 24), this, id);
        button->setToolTip(QString());  // the entry exists; the text is the caption, set when the row is filled
        connect(button, &QAbstractButton::clicked, this, [this, id] { OnButton(id); });
        m_subclassBtns.push_back(button);
    }

    m_collectionBtns.clear();
    for (const ButtonSpec& spec : kCollectionBar) {
        CSkinButton* button = make(new CSkinButton(this), spec);
        if (spec.id == ControlId::DeleteBlock) button->setEnabled(false);  // until a block is selected
        m_collectionBtns.push_back(button);
    }

    for (const ButtonSpec& spec : kEmptyStateButtons) m_buttons[spec.id] = make(new CSkinButton(this), spec);

    for (const TitleSpec& spec : kTitleButtons) {
        auto* button = new CSkinButton(this);
        const int left = w - ScaleUnits(spec.fromRightLeft), top = ScaleUnits(spec.top);
        const QRect rect(left, top, w - ScaleUnits(spec.fromRightRight) - left, ScaleUnits(spec.bottom) - top);
        button->Create(Text(spec.caption), true, rect, this, spec.id);
        button->kind = 11;
        button->SetSheetCell(spec.cellX, 88, 16, 16);
        const int id = spec.id;
        connect(button, &QAbstractButton::clicked, this, [this, id] { OnButton(id); });
        m_buttons[spec.id] = button;
    }

    for (const ButtonSpec& spec : kSyncPrompt) m_buttons[spec.id] = make(new CSkinButton(this), spec);

    m_searchBtns.clear();
    for (const ButtonSpec& spec : kSearchButtons) m_searchBtns.push_back(make(new CSkinButton(this), spec));
}

void CBrindleDlg::ShowHotWords(bool show) {
    if (!m_hotWordBar) return;
    if (show) m_hotWordBar->Build(m_hotWords, width());
    m_hotWordBar->SetShown(show);
}

CSkinButton* CBrindleDlg::Button(int id) const {
    if (auto it = m_buttons.find(id); it != m_buttons.end()) return it->second;
    if (const int slot = id - ControlId::FirstSubclass; slot >= 0 && slot < static_cast<int>(m_subclassBtns.size()))
        return m_subclassBtns[static_cast<size_t>(slot)];
    for (CSkinButton* button : m_collectionBtns)
        if (button && button->ControlId() == id) return button;
    for (CSkinButton* button : m_searchBtns)
        if (button && button->ControlId() == id) return button;
    if (m_hotWordBar) return m_hotWordBar->Button(id);
    return nullptr;
}

void CBrindleDlg::OnButton(int id) {
    if (id == ControlId::Close) {
        OnCloseButton();
    } else if (id >= ControlId::FirstSubclass && id <= ControlId::LastSubclassRange) {
        OpenSubclass(id);
    } else if (id >= ControlId::AddBlocks && id <= ControlId::LastCollectionRange) {
        OnCollectionBar(id);
    } else if ((id >= ControlId::AddBlocksEmpty && id <= ControlId::OpenSearch) || id == ControlId::AddClasses) {
        OnPanelButton(id);
    } else if (id >= ControlId::ClearSearch && id <= ControlId::SearchFromHost) {
        SearchCommand(id);
    } else if (id > ControlId::HotWordLabel && id <= ControlId::HotWordLabel + ControlId::HotWords) {
        if (CSkinButton* word = Button(id)) OpenHotWord(word->text());
    }
}

}  // namespace marrowfin
