// Skin buttons: every recipe in its states at two rates, driven by real mouse
// events, rendered to PNG and probed at fixed points.
#include <gtest/gtest.h>

#include <QPainter>
#include <QtTest/QTest>
#include <vector>

#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "render_support.h"
#include "skin/sel_typeclass_button.h"
#include "skin/skin_button.h"
#include "skin/skin_fonts.h"
#include "skin/skin_messages.h"
#include "skin/skin_scale.h"
#include "skin/skin_sheet.h"
#include "skin/subclass_button.h"

namespace marrowfin {
namespace {

using test::ContainsColour;
using test::PixelAt;

const QColor kAccent(0x29, 0x75, 0xE6);

struct ButtonSpec {
    int kind;
    int w, h;  // base units
    const char* caption;
    int cellX, cellY, cellW, cellH;  // sheet units; 0 size for none
};

const ButtonSpec kSpecs[] = {
    {1, 140, 30, "最近使用", 0, 88, 16, 16},  {1, 70, 30, "", 32, 88, 16, 16},
    {2, 16, 16, "", 0, 72, 14, 14},           {3, 16, 16, "", 160, 88, 16, 16},
    {4, 80, 24, "添加图块", 44, 72, 14, 14}, {6, 48, 24, "搜索", 0, 0, 0, 0},
    {7, 48, 24, "返回", 0, 0, 0, 0},         {8, 80, 24, "查看更多", 0, 0, 0, 0},
    {11, 55, 16, "反馈", 64, 88, 16, 16},     {11, 16, 16, "", 288, 88, 16, 16},
    {12, 114, 28, "添加更多分类", 448, 88, 16, 16}, {13, 70, 24, "下载图库", 0, 0, 0, 0},
    {50, 80, 24, "确定", 0, 0, 0, 0},         {51, 80, 24, "取消", 0, 0, 0, 0},
    {53, 160, 36, "完成", 0, 0, 0, 0},        {54, 60, 15, "清空选择", 0, 0, 0, 0},
    {55, 60, 20, "全部", 0, 0, 0, 0},         {56, 60, 20, "排序∧", 0, 0, 0, 0},
};

enum State { Normal, Hover, Selected, Disabled, DisabledHover, kStates };
const char* kStateNames[kStates] = {"normal", "hover", "selected", "disabled", "disabled+hover"};

// A board of buttons, one row per recipe and one column per state.
struct Board {
    QWidget window;
    std::vector<std::vector<CSkinButton*>> buttons;
    int cellW = 0, rowH = 0;

    explicit Board(float rate) {
        test::UseRate(rate);
        cellW = ScaleUnits(180);
        int y = ScaleUnits(24);
        for (const ButtonSpec& spec : kSpecs) {
            std::vector<CSkinButton*> row;
            for (int s = 0; s < kStates; ++s) {
                auto* b = new CSkinButton(&window);
                b->Create(QString::fromUtf8(spec.caption), true,
                          QRect(ScaleUnits(90) + s * cellW, y, ScaleUnits(spec.w), ScaleUnits(spec.h)), &window,
                          1000 + s);
                b->kind = spec.kind;
                if (spec.cellW) b->SetSheetCell(spec.cellX, spec.cellY, spec.cellW, spec.cellH);
                if (s == Selected) b->selected = true;
                if (s == Disabled || s == DisabledHover) b->setEnabled(false);
                row.push_back(b);
            }
            buttons.push_back(row);
            y += ScaleUnits(spec.h) + ScaleUnits(14);
        }
        window.resize(ScaleUnits(90) + kStates * cellW, y);
        window.setStyleSheet(QString());
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        test::MoveMouseTo(&window, QPoint(1, 1));
    }

    // Hovers one button by real moves and grabs it.
    QImage GrabHovered(CSkinButton* b) {
        test::MoveMouseTo(b, QPoint(b->width() / 2, b->height() / 2));
        EXPECT_TRUE(b->hover);
        QImage image = test::Grab(b);
        test::MoveMouseTo(&window, QPoint(1, 1));
        EXPECT_FALSE(b->hover) << "leaving must clear the hover";
        return image;
    }
};

QImage ComposeSheet(Board& board, float rate) {
    QImage out(board.window.size(), QImage::Format_RGB32);
    out.fill(QColor(0xFA, 0xFA, 0xFA));
    QPainter p(&out);
    p.setFont(Font(SkinFont::Normal));
    p.setPen(QColor(0x66, 0x66, 0x66));
    p.drawText(4, ScaleUnits(16), QStringLiteral("Rate %1").arg(rate));
    for (int s = 0; s < kStates; ++s)
        p.drawText(ScaleUnits(90) + s * board.cellW, ScaleUnits(16), QString::fromLatin1(kStateNames[s]));
    for (size_t r = 0; r < board.buttons.size(); ++r) {
        CSkinButton* first = board.buttons[r][0];
        p.drawText(4, first->y() + first->height() / 2 + 5, QStringLiteral("kind %1").arg(kSpecs[r].kind));
        for (int s = 0; s < kStates; ++s) {
            CSkinButton* b = board.buttons[r][s];
            QImage image = (s == Hover || s == DisabledHover) ? board.GrabHovered(b) : test::Grab(b);
            p.drawImage(b->pos(), image);
        }
    }
    return out;
}

TEST(SkinButton, EveryKindInEveryStateAtTwoRates) {
    for (float rate : {1.0f, 1.5f}) {
        Board board(rate);
        QImage sheet = ComposeSheet(board, rate);
        test::SaveRatePng(sheet, QStringLiteral("buttons"), rate);
        ASSERT_FALSE(SkinSheet().isNull()) << "the sheet must lie beside the test program";
    }
}

// One button in one state, for the probes.
struct One {
    QWidget window;
    CSkinButton* button;
    One(int kind, int w, int h, const QString& caption, int cx = 0, int cy = 0, int cs = 0) {
        window.resize(ScaleUnits(w) + 40, ScaleUnits(h) + 40);
        button = new CSkinButton(&window);
        button->Create(caption, true, QRect(20, 20, ScaleUnits(w), ScaleUnits(h)), &window, 1);
        button->kind = kind;
        if (cs) button->SetSheetCell(cx, cy, cs, cs);
        EXPECT_TRUE(test::ShowExposed(&window));
        // The pointer may still rest where an earlier window had it.
        test::MoveMouseTo(&window, QPoint(1, 1));
    }
    QImage Hovered() {
        test::MoveMouseTo(button, QPoint(button->width() / 2, button->height() / 2));
        return test::Grab(button);
    }
};

TEST(SkinButton, RecipeColoursAtFixedPoints) {
    for (float rate : {1.0f, 1.5f}) {
        test::UseRate(rate);
        SCOPED_TRACE(rate);
        {
            One b(4, 80, 24, QStringLiteral("添加图块"), 44, 72, 14);
            QImage normal = test::Grab(b.button);
            EXPECT_EQ(PixelAt(normal, 0, 0), QColor(0xB7, 0xB7, 0xB7));
            EXPECT_EQ(PixelAt(normal, b.button->width() - 3, 2), QColor(Qt::white));
            EXPECT_TRUE(ContainsColour(normal, ScaleBox(9, 5, 14, 14), kAccent, 24)) << "left frame: blue icon";
            EXPECT_TRUE(ContainsColour(normal, QRect(ScaleUnits(25), 0, b.button->width(), b.button->height()),
                                       QColor(0x33, 0x33, 0x33), 20));
            QImage hover = b.Hovered();
            EXPECT_EQ(PixelAt(hover, 0, 0), kAccent);
            EXPECT_EQ(PixelAt(hover, b.button->width() - 3, 2), QColor(0xE1, 0xF0, 0xFD));
            EXPECT_EQ(b.button->cursor().shape(), Qt::PointingHandCursor);
            // Disabled with the mouse over it: grey outline, white inside, the right (grey) frame.
            b.button->setEnabled(false);
            test::MoveMouseTo(&b.window, QPoint(1, 1));
            test::MoveMouseTo(b.button, QPoint(5, 5));
            EXPECT_TRUE(b.button->hover) << "hover shows on a disabled button too";
            QImage dis = test::Grab(b.button);
            EXPECT_EQ(PixelAt(dis, 0, 0), QColor(0xB7, 0xB7, 0xB7));
            EXPECT_EQ(PixelAt(dis, b.button->width() - 3, 2), QColor(Qt::white));
            EXPECT_FALSE(ContainsColour(dis, ScaleBox(9, 5, 14, 14), kAccent, 24)) << "right frame is the grey one";
            EXPECT_TRUE(ContainsColour(dis, ScaleBox(9, 5, 14, 14), QColor(0xC7, 0xC7, 0xCC), 16));
            EXPECT_TRUE(ContainsColour(dis, QRect(ScaleUnits(25), 0, b.button->width(), b.button->height()),
                                       QColor(0x99, 0x99, 0x99), 12));
        }
        {
            One b(50, 80, 24, QStringLiteral("确定"));
            QImage normal = test::Grab(b.button);
            EXPECT_EQ(PixelAt(normal, 4, b.button->height() / 2), kAccent);
            QImage hover = b.Hovered();
            EXPECT_EQ(PixelAt(hover, 4, b.button->height() / 2), QColor(0x01, 0x6A, 0xC3));
            EXPECT_TRUE(ContainsColour(hover, hover.rect(), Qt::white)) << "white caption";
            test::MoveMouseTo(&b.window, QPoint(1, 1));
            b.button->selected = true;  // 50 reacts to hover only
            EXPECT_EQ(PixelAt(test::Grab(b.button), 4, b.button->height() / 2), kAccent);
        }
        {
            One b(51, 80, 24, QStringLiteral("取消"));
            EXPECT_EQ(PixelAt(test::Grab(b.button), 4, b.button->height() / 2), QColor(0xF2, 0xF3, 0xF5));
            EXPECT_EQ(PixelAt(b.Hovered(), 4, b.button->height() / 2), QColor(0xD7, 0xD9, 0xDB));
        }
        {
            One b(12, 114, 28, QStringLiteral("添加更多分类"), 448, 88, 16);
            EXPECT_EQ(PixelAt(test::Grab(b.button), b.button->width() - 4, b.button->height() / 2), kAccent);
            b.button->selected = true;
            EXPECT_EQ(PixelAt(test::Grab(b.button), b.button->width() - 4, b.button->height() / 2),
                      QColor(0x01, 0x6A, 0xC3));
        }
        {
            One b(6, 48, 24, QStringLiteral("搜索"));
            QImage i = test::Grab(b.button);
            EXPECT_EQ(PixelAt(i, 1, 1), kAccent);
            EXPECT_TRUE(ContainsColour(i, i.rect(), Qt::white));
        }
        {
            One b(7, 48, 24, QStringLiteral("返回"));
            QImage i = test::Grab(b.button);
            EXPECT_EQ(PixelAt(i, 0, 0), QColor(0x99, 0x99, 0x99));
            EXPECT_EQ(PixelAt(i, 2, 2), QColor(0xF2, 0xF3, 0xF5));
        }
        {
            // kind 11 without a caption: only the cell from the left edge, frame by `selected`.
            One b(11, 16, 16, QString(), 288, 88, 16);
            QImage i = test::Grab(b.button);
            EXPECT_FALSE(ContainsColour(i, i.rect(), kAccent, 30));
            b.button->selected = true;
            i = test::Grab(b.button);
            EXPECT_TRUE(ContainsColour(i, QRect(0, 0, ScaleUnits(15), ScaleUnits(15)), kAccent, 30));
            EXPECT_EQ(PixelAt(i, b.button->width() - 1, b.button->height() - 1), QColor(0xF2, 0xF3, 0xF5));
        }
        {
            // kind 3: the frame follows hover only.
            One b(3, 16, 16, QString(), 160, 88, 16);
            b.button->selected = true;
            EXPECT_FALSE(ContainsColour(test::Grab(b.button), QRect(0, 0, 99, 99), kAccent, 30));
            EXPECT_TRUE(ContainsColour(b.Hovered(), QRect(0, 0, 99, 99), kAccent, 30));
        }
        {
            // kind 56 puts "排序" left and the rest right, in its grey.
            One b(56, 60, 20, QStringLiteral("排序∧"));
            QImage i = test::Grab(b.button);
            const int w = i.width(), h = i.height();
            EXPECT_TRUE(ContainsColour(i, QRect(0, 0, w / 2, h), Qt::black, 40));
            EXPECT_TRUE(ContainsColour(i, QRect(w - ScaleUnits(14), 0, ScaleUnits(14), h), QColor(0x6F, 0x75, 0x7C), 30));
            EXPECT_FALSE(ContainsColour(i, QRect(w - ScaleUnits(14), 0, ScaleUnits(14), h), Qt::black, 20));
        }
        {
            // kind 1: bold accent on highlight, the sheet frame by highlight.
            One b(1, 140, 30, QStringLiteral("最近使用"), 0, 88, 16);
            QImage normal = test::Grab(b.button);
            EXPECT_FALSE(ContainsColour(normal, normal.rect(), kAccent, 30));
            QImage hover = b.Hovered();
            EXPECT_TRUE(ContainsColour(hover, ScaleBox(11, 7, 15, 15), kAccent, 30));
            EXPECT_TRUE(ContainsColour(hover, QRect(ScaleUnits(34), 0, 200, 200), kAccent, 10));
        }
        {
            // An empty caption draws no text; a leave returns the arrow cursor.
            One b(54, 60, 15, QString());
            QImage i = b.Hovered();
            EXPECT_FALSE(ContainsColour(i, i.rect(), QColor(0x00, 0x82, 0xF0), 60));
            test::MoveMouseTo(&b.window, QPoint(1, 1));
            EXPECT_FALSE(b.button->hover);
            EXPECT_EQ(b.button->cursor().shape(), Qt::ArrowCursor);
        }
    }
    test::UseRate(1.0f);
}

TEST(SkinButton, ClicksReachTheOwnerAndDisabledOnesDont) {
    test::UseRate(1.0f);
    One b(50, 80, 24, QStringLiteral("确定"));
    int clicks = 0;
    QObject::connect(b.button, &QAbstractButton::clicked, [&] { ++clicks; });
    QTest::mouseClick(b.button, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(clicks, 1);
    // Press inside, release outside: no click, as on any button.
    QTest::mousePress(b.button, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseRelease(b.button, Qt::LeftButton, {}, QPoint(-10, -10));
    EXPECT_EQ(clicks, 1);
    b.button->setEnabled(false);
    QTest::mouseClick(b.button, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(clicks, 1);
}

class Owner final : public QWidget {
public:
    std::vector<std::tuple<uint32_t, std::uintptr_t, std::intptr_t>> seen;

protected:
    bool event(QEvent* e) override {
        if (e->type() == WindowMessageEvent::EventType()) {
            auto* m = static_cast<WindowMessageEvent*>(e);
            seen.emplace_back(m->Message(), m->WParam(), m->LParam());
            return true;
        }
        return QWidget::event(e);
    }
};

TEST(SubclassButton, CaptionRuleBarAndPostedClicks) {
    EXPECT_EQ(CSubclassButton::ShownCaption(QStringLiteral("..上级")), QStringLiteral("..上级"));
    EXPECT_EQ(CSubclassButton::ShownCaption(QStringLiteral("门窗..平开门")), QStringLiteral("平开门"));
    EXPECT_EQ(CSubclassButton::ShownCaption(QStringLiteral("a..b..c")), QStringLiteral("b..c"));
    EXPECT_EQ(CSubclassButton::ShownCaption(QStringLiteral("门窗")), QStringLiteral("门窗"));

    InstallQtWindowSystem();
    QImage strip;
    for (float rate : {1.0f, 1.5f}) {
        test::UseRate(rate);
        Owner owner;
        owner.resize(ScaleUnits(4 * 68 + 20), ScaleUnits(40));
        std::vector<CSubclassButton*> tabs;
        const char* captions[] = {"家具..沙发", "..上级目录", "精品..欧式", "很长很长很长的分类名称"};
        for (int i = 0; i < 4; ++i) {
            auto* t = new CSubclassButton(&owner);
            t->Create(QString::fromUtf8(captions[i]), true, ScaleBox(4 + 68 * i, 8, 65, 24), &owner, 2080 + i);
            t->boutique = i == 2;
            t->selected = i == 0 || i == 2;
            tabs.push_back(t);
        }
        ASSERT_TRUE(test::ShowExposed(&owner));
        test::SaveRatePng(test::Grab(&owner), QStringLiteral("subclass_tabs"), rate);
        const int bar = ScaleUnits(3);
        QImage t0 = test::Grab(tabs[0]);
        EXPECT_EQ(PixelAt(t0, t0.width() / 2, t0.height() - 1), QColor(0x2A, 0x75, 0xE5));
        EXPECT_EQ(PixelAt(t0, t0.width() / 2, t0.height() - bar), QColor(0x2A, 0x75, 0xE5));
        EXPECT_EQ(PixelAt(t0, t0.width() / 2, t0.height() - bar - 1), QColor(Qt::white));
        QImage t2 = test::Grab(tabs[2]);
        EXPECT_EQ(PixelAt(t2, 1, t2.height() - 1), QColor(0xBB, 0x9D, 0x6A)) << "boutique bar is gold";
        EXPECT_TRUE(ContainsColour(t2, t2.rect(), QColor(0xBB, 0x9D, 0x6A), 10));
        QImage t1 = test::Grab(tabs[1]);
        EXPECT_EQ(PixelAt(t1, t1.width() / 2, t1.height() - 1), QColor(Qt::white)) << "no bar when not selected";
        EXPECT_FALSE(ContainsColour(t1, t1.rect(), QColor(0x2A, 0x75, 0xE5), 30));
        test::MoveMouseTo(tabs[1], QPoint(5, 5));
        EXPECT_TRUE(ContainsColour(test::Grab(tabs[1]), t1.rect(), QColor(0x2A, 0x75, 0xE5), 30));

        // Double click and right click are posted to the parent, with the button.
        owner.seen.clear();
        QTest::mouseDClick(tabs[3], Qt::LeftButton, {}, QPoint(5, 5));
        QTest::mouseRelease(tabs[3], Qt::LeftButton, {}, QPoint(5, 5));  // the button comes up again
        QTest::mousePress(tabs[1], Qt::RightButton, {}, QPoint(5, 5));
        QTest::mouseRelease(tabs[1], Qt::RightButton, {}, QPoint(5, 5));
        EXPECT_TRUE(owner.seen.empty()) << "posted, not sent";
        QCoreApplication::processEvents();
        using Seen = std::tuple<uint32_t, std::uintptr_t, std::intptr_t>;
        ASSERT_EQ(owner.seen.size(), 2u);
        EXPECT_EQ(owner.seen[0], Seen(MsgPanelCommand, 2u, static_cast<std::intptr_t>(HandleOf(tabs[3]))));
        EXPECT_EQ(owner.seen[1], Seen(MsgPanelEvent, 9u, static_cast<std::intptr_t>(HandleOf(tabs[1]))));
    }
    test::UseRate(1.0f);
}

struct PickerSpec {
    int kind;
    int w, h;
    const char* caption;
    int checked, boutique;
    bool isNew, kindIsNew, showDesc;
    const char* describe;
};

TEST(SelTypeclassButton, PickerKindsRenderAndProbe) {
    const PickerSpec specs[] = {
        {1, 150, 40, "沙发", 0, 0, false, false, false, ""},      {1, 150, 40, "沙发", 1, 0, true, false, false, ""},
        {1, 150, 40, "欧式家具", 0, 1, false, false, false, ""},  {1, 150, 40, "欧式家具", 1, 1, true, false, false, ""},
        {1, 180, 40, "门窗", 0, 0, false, false, true, "平面"},   {1, 150, 40, "门窗", 0, 0, false, false, true, ""},
        {2, 110, 33, "精品图库", 0, 1, false, false, false, ""},  {2, 110, 33, "精品图库", 1, 1, false, false, false, ""},
        {2, 110, 33, "通用图库", 0, 0, false, false, false, ""},  {2, 110, 33, "通用图库", 1, 0, false, false, false, ""},
        {3, 84, 36, "建筑", 0, 0, false, true, false, ""},        {3, 84, 36, "建筑", 1, 0, false, false, false, ""},
        {3, 84, 36, "精品", 1, 1, false, false, false, ""},       {4, 17, 40, "<", 0, 0, false, false, false, ""},
        {5, 84, 30, "默认排序", 0, 0, false, false, false, ""},   {5, 84, 30, "最新上传", 1, 0, false, false, false, ""},
    };
    for (float rate : {1.0f, 1.5f}) {
        test::UseRate(rate);
        SCOPED_TRACE(rate);
        QWidget window;
        std::vector<CSelTypeclassButton*> buttons;
        int x = ScaleUnits(10), y = ScaleUnits(10), rowH = 0;
        for (const PickerSpec& s : specs) {
            auto* b = new CSelTypeclassButton(&window);
            if (x + ScaleUnits(s.w) > ScaleUnits(800)) {
                x = ScaleUnits(10);
                y += rowH + ScaleUnits(10);
                rowH = 0;
            }
            b->Create(QString::fromUtf8(s.caption), true, QRect(x, y, ScaleUnits(s.w), ScaleUnits(s.h)), &window, 2000);
            b->kind = s.kind;
            b->checked = s.checked;
            b->boutique = s.boutique;
            b->isNew = s.isNew;
            b->kindIsNew = s.kindIsNew;
            b->showDesc = s.showDesc;
            b->describe = QString::fromUtf8(s.describe);
            x += ScaleUnits(s.w) + ScaleUnits(10);
            rowH = std::max(rowH, ScaleUnits(s.h));
            buttons.push_back(b);
        }
        auto* disabled = new CSelTypeclassButton(&window);
        disabled->Create(QStringLiteral(">"), true, QRect(x, y, ScaleUnits(17), ScaleUnits(40)), &window, 1003);
        disabled->kind = 4;
        disabled->setEnabled(false);
        window.resize(ScaleUnits(820), y + rowH + ScaleUnits(10));
        ASSERT_TRUE(test::ShowExposed(&window));
        test::MoveMouseTo(&window, QPoint(window.width() - 1, window.height() - 1));
        test::SaveRatePng(test::Grab(&window), QStringLiteral("picker_buttons"), rate);

        const int s6 = ScaleUnits(6);
        // Class button: outline column at x 0 below y 6, face inside.
        QImage plain = test::Grab(buttons[0]);
        EXPECT_EQ(PixelAt(plain, 0, plain.height() / 2), QColor(0xD2, 0xD2, 0xD2));
        EXPECT_EQ(PixelAt(plain, 0, s6 - 1), QColor(Qt::white)) << "the outline starts at y 6";
        EXPECT_EQ(PixelAt(plain, 3, plain.height() - 3), QColor(Qt::white));
        QImage checkedOne = test::Grab(buttons[1]);
        EXPECT_EQ(PixelAt(checkedOne, 0, checkedOne.height() / 2), QColor(0x00, 0x7A, 0xFF));
        EXPECT_EQ(PixelAt(checkedOne, 3, checkedOne.height() - 3), QColor(0xE8, 0xF4, 0xFE));
        const int s14 = ScaleUnits(14);
        EXPECT_TRUE(ContainsColour(checkedOne, QRect(checkedOne.width() - s14, 0, s14, s14), kAccent, 20))
            << "check mark in the top right corner";
        EXPECT_TRUE(ContainsColour(checkedOne, QRect(checkedOne.width() - ScaleUnits(24) - 7, 7, ScaleUnits(24), ScaleUnits(12)),
                                   QColor(0xEB, 0x53, 0x50), 20))
            << "new mark";
        test::MoveMouseTo(buttons[1], QPoint(10, 20));
        QImage checkedHover = test::Grab(buttons[1]);
        EXPECT_EQ(PixelAt(checkedHover, 3, checkedHover.height() - 3), QColor(0xCE, 0xE8, 0xFE));
        EXPECT_TRUE(ContainsColour(checkedHover, QRect(checkedHover.width() - s14, 0, s14, s14), QColor(0x01, 0x6A, 0xC3), 20));
        test::MoveMouseTo(buttons[0], QPoint(10, 20));
        EXPECT_EQ(PixelAt(test::Grab(buttons[0]), 3, plain.height() - 3), QColor(0xE5, 0xE5, 0xEA));
        QImage gold = test::Grab(buttons[2]);
        EXPECT_EQ(PixelAt(gold, 0, gold.height() / 2), QColor(0xD6, 0xB4, 0x70));
        EXPECT_EQ(PixelAt(test::Grab(buttons[3]), 3, gold.height() - 3), QColor(0xFF, 0xEA, 0xCC));
        test::MoveMouseTo(buttons[3], QPoint(10, 20));
        EXPECT_EQ(PixelAt(test::Grab(buttons[3]), 3, gold.height() - 3), QColor(0xFF, 0xFA, 0xEB));

        // Description: the caption moves left of centre; an empty describe stays centred.
        EXPECT_GE(buttons[4]->CaptionStart(), ScaleUnits(5));
        EXPECT_LT(buttons[4]->CaptionStart(), buttons[4]->width() / 2);
        EXPECT_EQ(buttons[5]->CaptionStart(), -1);
        EXPECT_TRUE(ContainsColour(test::Grab(buttons[4]), buttons[4]->rect(), QColor(0x99, 0x99, 0x99), 10));

        // Section title: dark ground; the arrow follows checked and boutique.
        QImage title = test::Grab(buttons[6]);
        EXPECT_EQ(PixelAt(title, title.width() / 2, 2), QColor(0x21, 0x28, 0x30));
        EXPECT_TRUE(ContainsColour(title, title.rect(), QColor(0xEE, 0xC8, 0x88), 12)) << "gold text";
        EXPECT_TRUE(ContainsColour(title, ScaleBox(7, 7, 16, 16), QColor(0xBB, 0x9D, 0x6A), 20)) << "crown";
        EXPECT_FALSE(ContainsColour(test::Grab(buttons[8]), ScaleBox(7, 7, 16, 16), QColor(0xBB, 0x9D, 0x6A), 20));

        // Kind tab: checked blue with white text, boutique gold, red dot of a new kind.
        QImage tab = test::Grab(buttons[10]);
        EXPECT_EQ(PixelAt(tab, ScaleUnits(6), tab.height() / 2), QColor(0xE5, 0xE5, 0xEA));
        EXPECT_EQ(PixelAt(tab, tab.width() / 2, ScaleUnits(4) - 1), QColor(Qt::white)) << "top lowered by 4";
        EXPECT_EQ(PixelAt(tab, tab.width() - ScaleUnits(10) + ScaleUnits(4), ScaleUnits(4)), QColor(0xEB, 0x53, 0x50));
        QImage tabOn = test::Grab(buttons[11]);
        EXPECT_EQ(PixelAt(tabOn, ScaleUnits(6), tabOn.height() / 2), kAccent);
        EXPECT_TRUE(ContainsColour(tabOn, tabOn.rect(), Qt::white));
        EXPECT_EQ(PixelAt(test::Grab(buttons[12]), ScaleUnits(6), tabOn.height() / 2), QColor(0xEE, 0xC8, 0x88));
        test::MoveMouseTo(buttons[10], QPoint(ScaleUnits(6), tab.height() / 2));
        EXPECT_EQ(PixelAt(test::Grab(buttons[10]), ScaleUnits(6), tab.height() / 2), QColor(0xCE, 0xCE, 0xD2));

        // Arrow of a tab row: no hover look; disabled text is lighter.
        test::MoveMouseTo(buttons[13], QPoint(3, 20));
        QImage arrow = test::Grab(buttons[13]);
        EXPECT_TRUE(ContainsColour(arrow, QRect(0, arrow.height() / 2, arrow.width(), 2), QColor(0xE5, 0xE5, 0xEA)));
        // The hover ground would fill the pill above and below the glyph, whose
        // soft edges may pass near the hover colour.
        EXPECT_EQ(PixelAt(arrow, arrow.width() / 2, ScaleUnits(8)), QColor(0xE5, 0xE5, 0xEA)) << "no hover look";
        EXPECT_EQ(PixelAt(arrow, arrow.width() / 2, arrow.height() - ScaleUnits(8)), QColor(0xE5, 0xE5, 0xEA))
            << "no hover look";
        EXPECT_TRUE(ContainsColour(test::Grab(disabled), disabled->rect(), QColor(0xC7, 0xC7, 0xCC), 6));
        EXPECT_FALSE(ContainsColour(test::Grab(disabled), disabled->rect(), QColor(0x6F, 0x75, 0x7C), 6));

        // Sort option: light ground and the check when checked.
        QImage sortOn = test::Grab(buttons[15]);
        EXPECT_EQ(PixelAt(sortOn, sortOn.width() - 2, 1), QColor(0xEE, 0xF0, 0xF3));
        EXPECT_TRUE(ContainsColour(sortOn, ScaleBox(10, 8, 14, 14), kAccent, 30));
        EXPECT_EQ(PixelAt(test::Grab(buttons[14]), buttons[14]->width() - 2, 1), QColor(Qt::white));
        test::MoveMouseTo(&window, QPoint(window.width() - 1, window.height() - 1));
    }
    test::UseRate(1.0f);
}

}  // namespace
}  // namespace marrowfin
