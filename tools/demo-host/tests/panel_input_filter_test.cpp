// The host's event filter that offers input to GaDllPretanslateMsg: once per
// user event, although Qt hands an ignored event on to the parents.
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

// Counts what reaches it and ignores it, so that Qt hands the event on to its parent.
class Counting : public QWidget {
public:
    using QWidget::QWidget;
    int keys = 0, moves = 0, wheels = 0;

protected:
    void keyPressEvent(QKeyEvent* e) override { ++keys, e->ignore(); }
    void keyReleaseEvent(QKeyEvent* e) override { e->ignore(); }
    void mouseMoveEvent(QMouseEvent* e) override { ++moves, e->ignore(); }
    void wheelEvent(QWheelEvent* e) override { ++wheels, e->ignore(); }
};

class FilterTest : public ::testing::Test {
protected:
    void SetUp() override {
        qApp->installEventFilter(&filter);
        top.setMouseTracking(true);
        child->setMouseTracking(true);
        child->setGeometry(10, 10, 100, 60);
        child->setFocusPolicy(Qt::StrongFocus);
        top.resize(200, 120);
        top.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&top));
        child->setFocus();
        QCoreApplication::processEvents();
        seen.clear();
    }
    int CountOf(QEvent::Type type) const {
        int n = 0;
        for (const auto& m : seen) n += m.second == type;
        return n;
    }

    std::vector<std::pair<QObject*, QEvent::Type>> seen;
    int answer = 0;
    PanelInputFilter filter{[this](MarrowfinMsg* m) {
        seen.emplace_back(static_cast<QObject*>(m->receiver), static_cast<QEvent*>(m->event)->type());
        return answer;
    }};
    Counting top;
    Counting* child = new Counting(&top);
};

TEST_F(FilterTest, KeysArePassedOnceAtTheChildAndASwallowedKeyReachesNoWidget) {
    QTest::keyClick(child, Qt::Key_A);
    QTest::keyClick(child, Qt::Key_A);
    EXPECT_EQ(child->keys, 2);  // both widgets had each press ...
    EXPECT_EQ(top.keys, 2);
    EXPECT_EQ(CountOf(QEvent::KeyPress), 2);  // ... the panel was asked once per press and release
    EXPECT_EQ(CountOf(QEvent::KeyRelease), 2);
    EXPECT_EQ(seen.front().first, child);
    EXPECT_EQ(filter.passed(), 4);
    answer = 1;
    QTest::keyClick(child, Qt::Key_B);
    EXPECT_EQ(child->keys + top.keys, 4);
    EXPECT_EQ(filter.swallowed(), 2);
    answer = 0;
    // Two separate presses with the same (zero) time, at the child and then
    // straight at the parent: the second is a new event, not the first climbing.
    QKeyEvent first(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier);
    QCoreApplication::sendEvent(child, &first);
    QKeyEvent second(QEvent::KeyPress, Qt::Key_C, Qt::NoModifier);
    QCoreApplication::sendEvent(&top, &second);
    EXPECT_EQ(CountOf(QEvent::KeyPress), 5);
}

TEST_F(FilterTest, MovesAndWheelsArePassedOncePerEventAndClicksNever) {
    QWindow* window = top.windowHandle();
    QTest::mouseMove(window, QPoint(30, 30));
    QTest::mouseMove(window, QPoint(40, 35));
    QCoreApplication::processEvents();
    EXPECT_GE(child->moves, 2);
    EXPECT_GE(top.moves, 2);  // the child ignored them: the parent had copies
    EXPECT_EQ(CountOf(QEvent::MouseMove), child->moves);
    for (const auto& m : seen) EXPECT_TRUE(m.first->isWidgetType());  // never the window-level delivery
    QWheelEvent wheel(QPointF(20, 20), child->mapToGlobal(QPointF(20, 20)), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(child, &wheel);
    EXPECT_EQ(child->wheels, 1);
    EXPECT_EQ(CountOf(QEvent::Wheel), 1);
    QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, QPoint(30, 30));
    EXPECT_EQ(CountOf(QEvent::MouseButtonPress) + CountOf(QEvent::MouseButtonRelease), 0);
}

}  // namespace
}  // namespace marrowfin::demo
