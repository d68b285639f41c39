// The skin's look against reference pictures: buttons of every recipe in
// their states, the class tabs, the picker's buttons (a description moves the
// caption left, an empty one keeps it centred), the scroll and progress bars
// and the tip box, at two rates where the layout scales.

#include <QCoreApplication>
#include <QListWidget>
#include <QPainter>

#include "skin/pop_tip_dlg.h"
#include "skin/progress_ctrl_owner.h"
#include "skin/scroll_bar_ex.h"
#include "skin/scroll_bar_rv.h"
#include "skin/sel_typeclass_button.h"
#include "skin/subclass_button.h"
#include "skin/skin_test_util.h"
#include "support/reference_picture.h"
#include "support/widget_input.h"

namespace marrowfin {
namespace {

// The window as shown, with each of `hovered` painted in as it looks under the pointer.
QImage WithHover(QWidget& window, const std::vector<QWidget*>& hovered = {}) {
    EXPECT_TRUE(test::ShowExposed(&window));
    test::MoveAway(&window);
    QImage out = window.grab().toImage();
    QPainter painter(&out);
    for (QWidget* w : hovered) {
        test::MoveTo(w, QPoint(w->width() / 2, w->height() / 2));
        painter.drawImage(w->mapTo(&window, QPoint(0, 0)), w->grab().toImage());
    }
    test::MoveAway(&window);
    return out;
}

// kind, size in base units, caption, sheet cell (x, y, side; side 0 for none)
const std::tuple<int, int, int, const char*, int, int, int> kButtons[] = {
    {1, 140, 30, "最近使用", 0, 88, 16},
    {1, 70, 30, "", 32, 88, 16},
    {2, 16, 16, "", 0, 72, 14},
    {3, 16, 16, "", 160, 88, 16},
    {4, 80, 24, "添加图块", 44, 72, 14},
    {6, 48, 24, "搜索", 0, 0, 0},
    {7, 48, 24, "返回", 0, 0, 0},
    {8, 80, 24, "查看更多", 0, 0, 0},
    {11, 55, 16, "反馈", 64, 88, 16},
    {11, 16, 16, "", 288, 88, 16},
    {12, 114, 28, "添加更多分类", 448, 88, 16},
    {13, 70, 24, "下载图库", 0, 0, 0},
    {50, 80, 24, "确定", 0, 0, 0},
    {51, 80, 24, "取消", 0, 0, 0},
    {53, 160, 36, "完成", 0, 0, 0},
    {54, 60, 15, "清空选择", 0, 0, 0},
    {54, 60, 15, "", 0, 0, 0},
    {55, 60, 20, "全部", 0, 0, 0},
    {56, 60, 20, "排序∧", 0, 0, 0},
};

// One row per recipe; columns: normal, hover, selected, disabled, disabled under the pointer.
QImage SkinButtons() {
    QWidget window;
    std::vector<QWidget*> hovered;
    int y = ScaleUnits(8);
    for (const auto& [kind, w, h, caption, cellX, cellY, cell] : kButtons) {
        for (int state = 0; state < 5; ++state) {
            auto* b = new CSkinButton(&window);
            b->Create(QString::fromUtf8(caption), true, QRect(ScaleUnits(8 + 180 * state), y, ScaleUnits(w), ScaleUnits(h)), &window, 1000);
            b->kind = kind;
            if (cell) b->SetSheetCell(cellX, cellY, cell, cell);
            b->selected = state == 2;
            b->setEnabled(state < 3);
            if (state == 1 || state == 4) hovered.push_back(b);
        }
        y += ScaleUnits(h + 10);
    }
    window.resize(ScaleUnits(5 * 180), y);
    return WithHover(window, hovered);
}

// Selected, a parent link, selected boutique, and a long name under the pointer.
QImage SubclassTabs() {
    QWidget window;
    window.resize(ScaleUnits(4 * 68 + 8), ScaleUnits(40));
    const char* captions[] = {"家具..沙发", "..上级目录", "精品..欧式", "很长很长很长的分类名称"};
    std::vector<QWidget*> hovered;
    for (int i = 0; i < 4; ++i) {
        auto* t = new CSubclassButton(&window);
        t->Create(QString::fromUtf8(captions[i]), true, ScaleBox(4 + 68 * i, 8, 65, 24), &window, 2080 + i);
        t->boutique = i == 2;
        t->selected = i == 0 || i == 2;
        if (i == 3) hovered.push_back(t);
    }
    return WithHover(window, hovered);
}

struct PickerRecipe {
    int kind, w, h;
    const char* caption;
    bool checked, boutique, isNew, kindIsNew, hover;
    const char* describe;
};
const PickerRecipe kPickerButtons[] = {
    {1, 150, 40, "沙发", 0, 0, 0, 0, 1, nullptr},     {1, 150, 40, "沙发", 1, 0, 1, 0, 1, nullptr},
    {1, 150, 40, "欧式家具", 0, 1, 0, 0, 0, nullptr}, {1, 150, 40, "欧式家具", 1, 1, 1, 0, 1, nullptr},
    {1, 180, 40, "门窗", 0, 0, 0, 0, 0, "平面"},      {1, 180, 40, "门窗", 0, 0, 0, 0, 0, ""},
    {2, 110, 33, "精品图库", 0, 1, 0, 0, 0, nullptr}, {2, 110, 33, "精品图库", 1, 1, 0, 0, 0, nullptr},
    {2, 110, 33, "通用图库", 1, 0, 0, 0, 0, nullptr}, {3, 84, 36, "建筑", 0, 0, 0, 1, 1, nullptr},
    {3, 84, 36, "建筑", 1, 0, 0, 0, 0, nullptr},      {3, 84, 36, "精品", 1, 1, 0, 0, 0, nullptr},
    {4, 17, 40, "<", 0, 0, 0, 0, 1, nullptr},         {5, 84, 30, "默认排序", 0, 0, 0, 0, 0, nullptr},
    {5, 84, 30, "最新上传", 1, 0, 0, 0, 0, nullptr},  {4, 17, 40, ">", 0, 0, 0, 0, 0, nullptr},
};

// Four to a row; the ">" arrow is disabled.
QImage PickerButtons() {
    QWidget window;
    std::vector<QWidget*> hovered;
    int i = 0;
    for (const PickerRecipe& s : kPickerButtons) {
        auto* b = new CSelTypeclassButton(&window);
        b->Create(QString::fromUtf8(s.caption), true, ScaleBox(10 + 190 * (i % 4), 10 + 50 * (i / 4), s.w, s.h), &window, 2000);
        ++i;
        b->kind = s.kind;
        b->checked = s.checked;
        b->boutique = s.boutique;
        b->isNew = s.isNew;
        b->kindIsNew = s.kindIsNew;
        b->showDesc = s.describe != nullptr;
        b->describe = QString::fromUtf8(s.describe);
        b->setEnabled(s.caption[0] != '>');
        if (s.hover) hovered.push_back(b);
    }
    window.resize(ScaleUnits(770), ScaleUnits(210));
    return WithHover(window, hovered);
}

// The moved-child bar at its ends and in the middle, one held by its thumb,
// the list bar at the top and the bottom of its list, and the progress bars.
QImage Bars() {
    QWidget window;
    window.resize(330, 410);
    std::vector<CScrollBarRv*> bars;
    for (int i = 0; i < 4; ++i) {
        auto* bar = new CScrollBarRv;
        bar->Create(&window, QRect(10 + 28 * i, 10, 12, 300));
        bar->SetInfo(ScrollInfo{.nMax = 1000, .nPage = 100, .nPos = std::min(i, 2) * 500});
        bars.push_back(bar);
    }
    QListWidget* lists[2];
    for (int i = 0; i < 2; ++i) {
        lists[i] = new QListWidget(&window);
        for (int k = 0; k < 200; ++k) lists[i]->addItem(QStringLiteral("图块 %1").arg(k));
        (new CScrollBarEx)->Attach(lists[i]);
        lists[i]->setGeometry(130 + 100 * i, 10, 90, 300);
    }
    // Progress at 50 in the first recipe, 30 and 100 in the second, and 60
    // where 101 and -1 came after it: refused, the bar stays.
    const std::vector<int> steps[] = {{50}, {30}, {100}, {60, 101, -1}};
    for (int i = 0; i < 4; ++i) {
        auto* bar = new CProgressCtrlOwner(&window);
        bar->setGeometry(20, 326 + 20 * i, 200, 8);
        if (i > 0) bar->UseBlueFill(), bar->UseGreyGround(), bar->UseLightOutline();
        for (int pos : steps[i]) bar->SetPos(pos);
    }
    EXPECT_TRUE(test::ShowExposed(&window));
    QCoreApplication::processEvents();  // the posted size messages make the thumbs
    lists[1]->scrollToBottom();
    test::Press(bars[3], bars[3]->Thumb().center());
    const QImage out = WithHover(window);
    test::Release(bars[3], bars[3]->Thumb().center());
    return out;
}

QImage TipBox(bool twoLines) {
    CPopTipDlg dlg;
    if (twoLines) {
        dlg.Configure(QStringLiteral("删除文件夹是一个很长很长很长的标题"), true, QStringLiteral("确定删除该文件夹吗？"),
                      QStringLiteral("文件夹内的图块将一并删除"), QStringLiteral("删除"), QStringLiteral("取消"));
    } else {
        dlg.Configure(QStringLiteral("提示"), false, QStringLiteral("图块正在下载，请稍后再试"), QString(), QStringLiteral("确定"),
                      QStringLiteral("取消"));
    }
    dlg.OnInitDialog();
    return WithHover(dlg);
}

TEST(SkinPictures, EverySceneMatchesItsReference) {
    // Name, drawing, drawn at both rates (else at 1.0 only).
    const std::tuple<const char*, std::function<QImage()>, bool> scenes[] = {
        {"buttons", SkinButtons, true},
        {"subclass_tabs", SubclassTabs, true},
        {"picker_buttons", PickerButtons, true},
        {"tip_one_line", [] { return TipBox(false); }, true},
        {"tip_two_lines", [] { return TipBox(true); }, true},
        {"bars", Bars, false},
    };
    for (const auto& [scene, draw, scales] : scenes) {
        for (float rate : {1.0f, 1.5f}) {
            if (!scales && rate != 1.0f) continue;
            test::UseRate(rate);
            EXPECT_TRUE(test::MatchesReference(draw(), "skin", scene + std::string(rate == 1.0f ? "_rate_1.0" : "_rate_1.5")));
        }
    }
    test::UseRate(1.0f);
}

}  // namespace
}  // namespace marrowfin
