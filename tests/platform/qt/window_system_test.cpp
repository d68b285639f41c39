// The Qt window layer: handles, posting from threads, payload ownership, timers.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/qt/qt_window_system.h"
#include "platform/qt/window_message_event.h"
#include "platform/qt/window_timers.h"
#include "support/event_pump.h"

namespace marrowfin {
namespace {

// Counts live payloads so a test can see one freed.
struct CountedPayload final : MessagePayload {
    static inline std::atomic<int> alive{0};
    explicit CountedPayload(int v) : value(v) { ++alive; }
    ~CountedPayload() override { --alive; }
    int value;
};

class Receiver final : public QObject {
public:
    struct Seen {
        uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
        int payloadValue;
    };
    std::vector<Seen> seen;
    bool keepPayloads = true;
    std::vector<std::unique_ptr<MessagePayload>> kept;

protected:
    bool event(QEvent* e) override {
        if (e->type() != WindowMessageEvent::EventType()) return QObject::event(e);
        auto* m = static_cast<WindowMessageEvent*>(e);
        int v = -1;
        if (auto* p = dynamic_cast<CountedPayload*>(m->Payload())) v = p->value;
        seen.push_back({m->Message(), m->WParam(), m->LParam(), v});
        if (keepPayloads && m->Payload()) kept.push_back(m->TakePayload());
        m->result = static_cast<std::intptr_t>(m->WParam() * 2);
        return true;
    }
};

using test::Pump;

TEST(QtWindowSystem, HandlesLiveAndDieWithTheirObjects) {
    EXPECT_FALSE(IsWindow(0));
    auto* a = new Receiver;
    auto* b = new Receiver;
    WindowHandle ha = HandleOf(a);
    WindowHandle hb = HandleOf(b);
    EXPECT_NE(ha, 0u);
    EXPECT_NE(ha, hb);
    EXPECT_EQ(HandleOf(a), ha) << "a second ask gives the same handle";
    EXPECT_TRUE(IsWindow(ha));
    EXPECT_EQ(ObjectOf(ha), a);
    delete a;
    EXPECT_FALSE(IsWindow(ha));
    EXPECT_EQ(ObjectOf(ha), nullptr);
    EXPECT_TRUE(IsWindow(hb));
    // A new object never gets an old handle back.
    auto* c = new Receiver;
    EXPECT_NE(HandleOf(c), ha);
    EXPECT_EQ(HandleOf(nullptr), 0u);
    delete b;
    delete c;
}

TEST(QtWindowSystem, SendAnswersAtOncePostWaitsForTheLoop) {
    Receiver r;
    WindowHandle h = HandleOf(&r);
    EXPECT_EQ(SendWindowMessage(h, 0x9dc, 21, 7), 42);
    ASSERT_EQ(r.seen.size(), 1u);
    EXPECT_TRUE(PostWindowMessage(h, 0x9dd, 3, -5));
    EXPECT_EQ(r.seen.size(), 1u) << "a post is not delivered before the loop runs";
    Pump(20);
    ASSERT_EQ(r.seen.size(), 2u);
    EXPECT_EQ(r.seen[1].message, 0x9ddu);
    EXPECT_EQ(r.seen[1].wParam, 3u);
    EXPECT_EQ(r.seen[1].lParam, -5);
    // Sending to nothing answers 0 and frees the payload.
    EXPECT_EQ(SendWindowMessage(0, 1, 1), 0);
    {
        WindowHandle dead = 0;
        {
            Receiver gone;
            dead = HandleOf(&gone);
        }
        EXPECT_EQ(SendWindowMessage(dead, 1, 5, 0, std::make_unique<CountedPayload>(1)), 0);
        EXPECT_EQ(CountedPayload::alive.load(), 0);
    }
}

TEST(QtWindowSystem, PostsFromWorkersArriveInOrderPerThread) {
    Receiver r;
    WindowHandle h = HandleOf(&r);
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    std::vector<std::thread> workers;
    for (int t = 0; t < kThreads; ++t) {
        workers.emplace_back([h, t] {
            for (int i = 0; i < kEach; ++i)
                PostWindowMessage(h, 0x9de, static_cast<std::uintptr_t>(t), i, std::make_unique<CountedPayload>(i));
        });
    }
    for (auto& w : workers) w.join();
    Pump(50);
    ASSERT_EQ(r.seen.size(), static_cast<size_t>(kThreads * kEach));
    std::vector<int> next(kThreads, 0);
    for (const auto& s : r.seen) {
        ASSERT_LT(s.wParam, static_cast<std::uintptr_t>(kThreads));
        EXPECT_EQ(s.lParam, next[s.wParam]) << "thread " << s.wParam << " out of order";
        EXPECT_EQ(s.payloadValue, next[s.wParam]);
        ++next[s.wParam];
    }
    EXPECT_EQ(CountedPayload::alive.load(), kThreads * kEach) << "taken payloads belong to the receiver";
    r.kept.clear();
    EXPECT_EQ(CountedPayload::alive.load(), 0);
}

TEST(QtWindowSystem, PayloadsOfDroppedMessagesAreFreed) {
    // Posted to a window that dies before the loop runs: Qt drops the event.
    auto* r = new Receiver;
    WindowHandle h = HandleOf(r);
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(PostWindowMessage(h, 0x9de, 0, 0, std::make_unique<CountedPayload>(i)));
    EXPECT_EQ(CountedPayload::alive.load(), 10);
    delete r;
    EXPECT_EQ(CountedPayload::alive.load(), 0);
    // Posted to a handle already dead: refused and freed at once.
    EXPECT_FALSE(PostWindowMessage(h, 0x9de, 0, 0, std::make_unique<CountedPayload>(1)));
    EXPECT_EQ(CountedPayload::alive.load(), 0);
    EXPECT_FALSE(PostText(h, 0x7ef, 2, u"/a/b.dwg"));
    // A receiver that doesn't take the payload: freed with the event.
    Receiver lazy;
    lazy.keepPayloads = false;
    PostWindowMessage(HandleOf(&lazy), 1, 0, 0, std::make_unique<CountedPayload>(9));
    Pump(20);
    ASSERT_EQ(lazy.seen.size(), 1u);
    EXPECT_EQ(lazy.seen[0].payloadValue, 9);
    EXPECT_EQ(CountedPayload::alive.load(), 0);

    // A worker racing the window's death never leaks nor crashes.
    for (int round = 0; round < 20; ++round) {
        auto* victim = new Receiver;
        WindowHandle vh = HandleOf(victim);
        std::atomic<bool> go{true};
        std::thread worker([&] {
            while (go.load()) PostWindowMessage(vh, 2, 0, 0, std::make_unique<CountedPayload>(round));
        });
        Pump(2);
        delete victim;
        go = false;
        worker.join();
        Pump(2);
        EXPECT_EQ(CountedPayload::alive.load(), 0) << "round " << round;
    }
}

TEST(WindowTimers, RestartingAnIdCollapsesABurstIntoOneTick) {
    Receiver r;
    WindowHandle h = HandleOf(&r);
    EXPECT_FALSE(SetTimer(0, 1008, 10));
    EXPECT_FALSE(KillTimer(h, 1008)) << "nothing runs yet";
    // Ten restarts in a row, each within the interval: only the last one ticks.
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(SetTimer(h, 1008, 60));
        Pump(15);
    }
    EXPECT_TRUE(r.seen.empty()) << "a restart must replace the running timer";
    EXPECT_TRUE(IsTimerRunning(h, 1008));
    Pump(90);
    ASSERT_GE(r.seen.size(), 1u);
    EXPECT_EQ(r.seen[0].message, WM_TIMER_MESSAGE);
    EXPECT_EQ(r.seen[0].wParam, 1008u);
    EXPECT_TRUE(KillTimer(h, 1008));
    EXPECT_FALSE(IsTimerRunning(h, 1008));
    size_t ticks = r.seen.size();
    Pump(100);
    EXPECT_EQ(r.seen.size(), ticks) << "a killed timer stays quiet";

    // Two ids run side by side and are told apart by wParam.
    r.seen.clear();
    SetTimer(h, 2, 20);
    SetTimer(h, 3, 20);
    Pump(70);
    KillTimer(h, 2);
    KillTimer(h, 3);
    int twos = 0, threes = 0;
    for (const auto& s : r.seen) (s.wParam == 2 ? twos : threes)++;
    EXPECT_GE(twos, 1);
    EXPECT_GE(threes, 1);
}

// A one-shot timer kills itself first in its handler, then maybe restarts.
class OneShot final : public QObject {
public:
    int ticks = 0;
    bool restart = true;

protected:
    bool event(QEvent* e) override {
        if (e->type() != WindowMessageEvent::EventType()) return QObject::event(e);
        auto* m = static_cast<WindowMessageEvent*>(e);
        if (m->Message() != WM_TIMER_MESSAGE) return true;
        KillTimer(HandleOf(this), m->WParam());
        ++ticks;
        if (restart && ticks < 3) SetTimer(HandleOf(this), m->WParam(), 10);
        return true;
    }
};

TEST(WindowTimers, HandlersMayKillAndRestartTheirOwnTimerAndDeathEndsThem) {
    OneShot s;
    SetTimer(HandleOf(&s), 7, 10);
    Pump(150);
    EXPECT_EQ(s.ticks, 3);
    EXPECT_FALSE(IsTimerRunning(HandleOf(&s), 7));

    auto* doomed = new OneShot;
    WindowHandle dh = HandleOf(doomed);
    SetTimer(dh, 9, 5);
    delete doomed;  // its timers go with it
    Pump(30);
    EXPECT_FALSE(IsTimerRunning(dh, 9));
    EXPECT_FALSE(SetTimer(dh, 9, 5));
}

}  // namespace
}  // namespace marrowfin
