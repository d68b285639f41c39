// The Qt window layer: handles, posting from threads, payload ownership, timers.
#include <gtest/gtest.h>

#include <thread>

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

struct Receiver final : QObject {
    struct Seen {
        uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
        int payloadValue;
    };
    std::vector<Seen> seen;
    bool keepPayloads = true;
    int restartsLeft = -1;  // from 0 up: a timer handler that kills its timer, then restarts it so often
    std::vector<std::unique_ptr<MessagePayload>> kept;

    bool event(QEvent* e) override {
        if (e->type() != WindowMessageEvent::EventType()) return QObject::event(e);
        auto* m = static_cast<WindowMessageEvent*>(e);
        int v = -1;
        if (auto* p = dynamic_cast<CountedPayload*>(m->Payload())) v = p->value;
        seen.push_back({m->Message(), m->WParam(), m->LParam(), v});
        if (keepPayloads && m->Payload()) kept.push_back(m->TakePayload());
        m->result = static_cast<std::intptr_t>(m->WParam() * 2);
        if (m->Message() == WM_TIMER_MESSAGE && restartsLeft >= 0) {
            KillTimer(HandleOf(this), m->WParam());
            if (restartsLeft-- > 0) SetTimer(HandleOf(this), m->WParam(), 10);
        }
        return true;
    }
};

using test::Pump;

TEST(QtWindowSystem, HandlesSendPostAndPostsFromWorkersInOrderPerThreadRacingADeath) {
    auto* a = new Receiver;
    auto* b = new Receiver;
    const WindowHandle ha = HandleOf(a), hb = HandleOf(b);
    EXPECT_TRUE(ha != 0 && ha != hb && HandleOf(a) == ha && ObjectOf(ha) == a);
    EXPECT_EQ(SendWindowMessage(ha, 0x9dc, 21, 7), 42);  // answered at once
    EXPECT_TRUE(PostWindowMessage(hb, 0x9dd, 3, -5));
    EXPECT_EQ(a->seen.size() + b->seen.size(), 1u) << "a post is not delivered before the loop runs";
    Pump(20);
    ASSERT_EQ(b->seen.size(), 1u);
    EXPECT_EQ(std::make_tuple(b->seen[0].message, b->seen[0].wParam, b->seen[0].lParam), std::make_tuple(0x9ddu, 3u, -5));
    delete a;
    EXPECT_FALSE(IsWindow(ha) || ObjectOf(ha) || IsWindow(0) || HandleOf(nullptr));
    auto* c = new Receiver;
    EXPECT_NE(HandleOf(c), ha) << "a new object never gets an old handle back";
    // Sending or posting to the dead answers 0 or false and frees the payload at once.
    EXPECT_EQ(SendWindowMessage(ha, 1, 5, 0, std::make_unique<CountedPayload>(1)), 0);
    EXPECT_TRUE(!PostWindowMessage(ha, 0x9de, 0, 0, std::make_unique<CountedPayload>(1)) && CountedPayload::alive == 0);
    // Posted to a window that dies before the loop runs: Qt drops the events and their payloads.
    for (int i = 0; i < 10; ++i) PostWindowMessage(hb, 0x9de, 0, 0, std::make_unique<CountedPayload>(i));
    delete b;
    EXPECT_EQ(CountedPayload::alive.load(), 0);
    // A receiver that doesn't take the payload: freed with the event.
    c->keepPayloads = false;
    PostWindowMessage(HandleOf(c), 1, 0, 0, std::make_unique<CountedPayload>(9));
    Pump(20);
    ASSERT_EQ(c->seen.size(), 1u);
    EXPECT_EQ(std::make_pair(c->seen[0].payloadValue, CountedPayload::alive.load()), std::make_pair(9, 0));
    delete c;

    // Posts from workers arrive in order per thread.
    Receiver r;
    const WindowHandle h = HandleOf(&r);
    constexpr int kThreads = 4, kEach = 500;
    std::vector<std::thread> workers;
    for (int t = 0; t < kThreads; ++t)
        workers.emplace_back([h, t] {
            for (int i = 0; i < kEach; ++i)
                PostWindowMessage(h, 0x9de, static_cast<std::uintptr_t>(t), i, std::make_unique<CountedPayload>(i));
        });
    for (auto& w : workers) w.join();
    Pump(50);
    ASSERT_EQ(r.seen.size(), static_cast<size_t>(kThreads * kEach));
    std::vector<int> next(kThreads, 0);
    for (const auto& s : r.seen) {
        ASSERT_LT(s.wParam, static_cast<std::uintptr_t>(kThreads));
        EXPECT_EQ(s.lParam, next[s.wParam]) << "thread " << s.wParam << " out of order";
        EXPECT_EQ(s.payloadValue, next[s.wParam]++);
    }
    EXPECT_EQ(CountedPayload::alive.load(), kThreads * kEach) << "taken payloads belong to the receiver";
    r.kept.clear();
    // A worker racing the window's death never leaks nor crashes.
    for (int round = 0; round < 20; ++round) {
        auto* victim = new Receiver;
        const WindowHandle vh = HandleOf(victim);
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

TEST(WindowTimers, RestartsCollapseABurstKillsAndDeathEndThem) {
    Receiver r;
    const WindowHandle h = HandleOf(&r);
    EXPECT_FALSE(SetTimer(0, 1008, 10) || KillTimer(h, 1008));
    // Ten restarts in a row, each within the interval: only the last one ticks.
    for (int i = 0; i < 10; ++i, Pump(15)) EXPECT_TRUE(SetTimer(h, 1008, 60));
    EXPECT_TRUE(r.seen.empty()) << "a restart must replace the running timer";
    Pump(90);
    ASSERT_GE(r.seen.size(), 1u);
    EXPECT_TRUE(r.seen[0].message == WM_TIMER_MESSAGE && r.seen[0].wParam == 1008 && KillTimer(h, 1008));
    r.seen.clear();
    // Two ids run side by side, told apart by wParam; killed, they stay quiet.
    EXPECT_TRUE(SetTimer(h, 2, 20) && SetTimer(h, 3, 20));
    Pump(70);
    EXPECT_TRUE(KillTimer(h, 2) && KillTimer(h, 3) && !IsTimerRunning(h, 2));
    std::set<std::uintptr_t> ids;
    for (const auto& s : r.seen) ids.insert(s.wParam);
    EXPECT_EQ(ids, (std::set<std::uintptr_t>{2, 3}));
    const size_t ticks = r.seen.size();
    Pump(100);
    EXPECT_EQ(r.seen.size(), ticks) << "a killed timer stays quiet";

    // A handler may kill its own timer first, then restart it.
    r.restartsLeft = 2;
    SetTimer(h, 7, 10);
    Pump(150);
    EXPECT_TRUE(r.seen.size() == ticks + 3 && !IsTimerRunning(h, 7));
    auto* doomed = new Receiver;
    const WindowHandle dh = HandleOf(doomed);
    SetTimer(dh, 9, 5);
    delete doomed;  // its timers go with it
    Pump(30);
    EXPECT_FALSE(IsTimerRunning(dh, 9) || SetTimer(dh, 9, 5));
}

}  // namespace
}  // namespace marrowfin
