#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QWheelEvent>
#include <QWidget>
#include <QWindow>
#include <QtTest/QTest>
#include <memory>
#include <vector>

#include "panel_input_filter.h"

namespace marrowfin::demo {
namespace {

// A widget that counts what reaches it and ignores it, so that Qt hands the
// event on to its parent.
class Counting : public QWidget {
public:
    using QWidget::QWidget;
    int keys = 0, moves = 0, wheels = 0;

protected:
    void keyPressEvent(QKeyEvent* e) override { ++keys; e->ignore(); }
    void keyReleaseEvent(QKeyEvent* e) override { e->ignore(); }
    void mouseMoveEvent(QMouseEvent* e) override { ++moves; e->ignore(); }
    void wheelEvent(QWheelEvent* e) override { ++wheels; e->ignore(); }
};

struct Seen {
    std::vector<std::pair<QObject*, QEvent::Type>> messages;
    int answer = 0;
};

class FilterTest : public ::testing::Test {
protected:
    void SetUp() override {
        filter = std::make_unique<PanelInputFilter>([this](MarrowfinMsg* m) {
            seen.messages.emplace_back(static_cast<QObject*>(m->receiver), static_cast<QEvent*>(m->event)->type());
            return seen.answer;
        });
        qApp->installEventFilter(filter.get());
        top = std::make_unique<Counting>();
        top->setMouseTracking(true);
        child = new Counting(top.get());
        child->setMouseTracking(true);
        child->setGeometry(10, 10, 100, 60);
        child->setFocusPolicy(Qt::StrongFocus);
        top->resize(200, 120);
        top->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(top.get()));
        child->setFocus();
        QCoreApplication::processEvents();
        seen.messages.clear();
    }
    void TearDown() override { qApp->removeEventFilter(filter.get()); }

    int CountOf(QEvent::Type type) const {
        int n = 0;
        for (const auto& m : seen.messages) n += m.second == type;
        return n;
    }

    Seen seen;
    std::unique_ptr<PanelInputFilter> filter;
    std::unique_ptr<Counting> top;
    Counting* child = nullptr;
};

TEST_F(FilterTest, PassesAKeyOnceAlthoughItClimbsToTheParent) {
    QTest::keyClick(child, Qt::Key_A);
    QTest::keyClick(child, Qt::Key_A);
    // Both widgets had each press (the child ignored it) ...
    EXPECT_EQ(child->keys, 2);
    EXPECT_EQ(top->keys, 2);
    // ... but the panel was asked once per press and once per release, at the child.
    EXPECT_EQ(CountOf(QEvent::KeyPress), 2);
    EXPECT_EQ(CountOf(QEvent::KeyRelease), 2);
    ASSERT_FALSE(seen.messages.empty());
    EXPECT_EQ(seen.messages.front().first, child);
    EXPECT_EQ(filter->passed(), 4);
    EXPECT_EQ(filter->swallowed(), 0);
}

TEST_F(FilterTest, ASwallowedEventReachesNoWidget) {
    seen.answer = 1;
    QTest::keyClick(child, Qt::Key_B);
    EXPECT_EQ(child->keys, 0);
    EXPECT_EQ(top->keys, 0);
    EXPECT_EQ(filter->swallowed(), 2);
    // Answering 1 again later still swallows; 0 lets events through once more.
    seen.answer = 0;
    QTest::keyClick(child, Qt::Key_B);
    EXPECT_EQ(child->keys, 1);
}

TEST_F(FilterTest, NewEventsOfTheSameKindAtTheParentAreNotTakenForPropagation) {
    // Two separate presses with the same (zero) time: one at the child, one
    // straight at the parent. The second is a new event, not the first climbing.
    QKeyEvent first(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier);
    QCoreApplication::sendEvent(child, &first);
    const int afterFirst = CountOf(QEvent::KeyPress);
    QKeyEvent second(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier);
    QCoreApplication::sendEvent(top.get(), &second);
    EXPECT_EQ(afterFirst, 1);
    EXPECT_EQ(CountOf(QEvent::KeyPress), 2);
}

TEST_F(FilterTest, MouseMovesAndWheelsThroughTheWindowArePassedOncePerEvent) {
    QWindow* window = top->windowHandle();
    QTest::mouseMove(window, QPoint(30, 30));
    QTest::mouseMove(window, QPoint(40, 35));
    QCoreApplication::processEvents();
    // The child ignored the moves, so the parent had copies of them too.
    EXPECT_GE(child->moves, 2);
    EXPECT_GE(top->moves, 2);
    EXPECT_EQ(CountOf(QEvent::MouseMove), child->moves);
    // The window-level delivery is not a widget's and is never passed.
    for (const auto& m : seen.messages) EXPECT_TRUE(m.first->isWidgetType());

    QWheelEvent wheel(QPointF(20, 20), child->mapToGlobal(QPointF(20, 20)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(child, &wheel);
    // (A wheel sent by hand is not spontaneous, so Qt does not hand it on.)
    EXPECT_EQ(child->wheels, 1);
    EXPECT_EQ(CountOf(QEvent::Wheel), 1);

    // Clicks are the widgets' own business: not passed.
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, QPoint(30, 30));
    EXPECT_EQ(CountOf(QEvent::MouseButtonPress), 0);
    EXPECT_EQ(CountOf(QEvent::MouseButtonRelease), 0);
}

}  // namespace
}  // namespace marrowfin::demo
