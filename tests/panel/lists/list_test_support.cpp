#include "list_test_support.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QWheelEvent>
#include <QWindow>
#include <QtTest/QTest>

#include "platform/qt/window_message_event.h"
#include "render_support.h"

namespace marrowfin::test {

namespace {

const char* const kClassTexts[] = {"最近使用", "我的收藏", "建筑", "精品家具", "机械", "电气", "给排水",
                                   "暖通",     "园林",     "室内", "结构",     "市政", "道路", "桥梁"};

void InsertClasses(CClassListCtrl* list, int rows) {
    for (int i = 0; i < rows; ++i) list->InsertItem(i, QString::fromUtf8(kClassTexts[i % 14]));
}

}  // namespace

std::vector<Recorded> RecordingOwner::Take() {
    QCoreApplication::processEvents();
    std::vector<Recorded> out;
    out.swap(messages);
    return out;
}

bool RecordingOwner::event(QEvent* event) {
    if (event->type() == WindowMessageEvent::EventType()) {
        auto* m = static_cast<WindowMessageEvent*>(event);
        messages.push_back({m->Message(), m->WParam(), m->LParam()});
        return true;
    }
    return QWidget::event(event);
}

ClassBoard::ClassBoard(float rate, int rows, int left) {
    UseRate(rate);
    ParkMouse();
    owner.resize(ScaleUnits(300), ScaleUnits(330));
    list = Add(left, rows);
}

CClassListCtrl* ClassBoard::Add(int left, int rows) {
    auto* l = new CClassListCtrl(&owner);
    l->setGeometry(left, ScaleUnits(12), ScaleUnits(132), ScaleUnits(295));
    InsertClasses(l, rows);
    return l;
}

void ClassBoard::Fill(int rows) {
    list->DeleteAllItems();
    InsertClasses(list, rows);
}

SearchBoard::SearchBoard(float rate, int rowCount, int heightUnits) {
    UseRate(rate);
    ParkMouse();
    owner.resize(ScaleUnits(760), ScaleUnits(heightUnits + 30));
    list = new CSearchListCtrl(&owner);
    list->setGeometry(ScaleUnits(7), ScaleUnits(12), ScaleUnits(740), ScaleUnits(heightUnits));
    if (rowCount > 0) Fill(rowCount);
}

void SearchBoard::Fill(int count) {
    rows.assign(count, MakeRow("单开门.dwg", "门窗..平开门", RowFresh));
    list->SetRows(&rows);
}

BlockRow MakeRow(const char* name, const char* subclass, int state) {
    BlockRow r;
    r.name = QString::fromUtf8(name);
    r.klass = QStringLiteral("建筑");
    r.subclass = QString::fromUtf8(subclass);
    r.url = QStringLiteral("http://127.0.0.1/") + r.name;
    r.state = state;
    return r;
}

void ClickAt(QWidget* widget, QPoint pos, Qt::MouseButton button, bool twice) {
    QWidget* top = widget->window();
    if (twice) {
        QTest::mouseDClick(top->windowHandle(), button, {}, widget->mapTo(top, pos));
    } else {
        QTest::mouseClick(top->windowHandle(), button, {}, widget->mapTo(top, pos));
    }
    QCoreApplication::processEvents();
}

void WheelAt(QWidget* widget, QPoint pos, int delta) {
    QWheelEvent wheel(QPointF(pos), QPointF(widget->mapToGlobal(pos)), QPoint(), QPoint(0, delta), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &wheel);
    QCoreApplication::processEvents();
}

void Pump(int ms) {
    QElapsedTimer t;
    t.start();
    while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

bool ShowAndWait(QWidget* window) {
    window->show();
    const bool exposed = QTest::qWaitForWindowExposed(window);
    QCoreApplication::processEvents();
    return exposed;
}

bool Differs(const QImage& a, const QImage& b, const QRect& area) {
    const QRect r = area.intersected(a.rect()).intersected(b.rect());
    return a.copy(r) != b.copy(r);
}

bool SameBlock(const QImage& a, const QRect& area, const QImage& b, QPoint atB) {
    if (!a.rect().contains(area) || !b.rect().contains(QRect(atB, area.size()))) return false;
    return a.copy(area) == b.copy(QRect(atB, area.size()));
}

}  // namespace marrowfin::test
