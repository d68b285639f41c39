#include <gtest/gtest.h>

#include <atomic>
#include <utility>
#include <thread>
#include <vector>

#include "platform/ticks.h"
#include "platform/window_messages.h"
#include "support/recording_windows.h"

using namespace marrowfin;

TEST(Ticks, DifferencesSurviveTheWrap) {
    const uint32_t now = GetTickCount();
    // Move the clock to 100 ms before the 32-bit wrap.
    ShiftTicksForTest(static_cast<int64_t>(0xFFFFFFFFu - 100u) - now);
    const uint32_t before = GetTickCount();
    ShiftTicksForTest(250);
    const uint32_t after = GetTickCount();
    EXPECT_LT(after, 1000u);  // wrapped, yet the difference is right
    EXPECT_GE(TicksSince(before), 250u);
    EXPECT_LT(after - before, 5000u);
    ShiftTicksForTest(-static_cast<int64_t>(0xFFFFFFFFu - 100u) + now - 250);
}

namespace {

struct CountedPayload : MessagePayload {
    explicit CountedPayload(std::atomic<int>& c) : freed(c) {}
    ~CountedPayload() override { ++freed; }
    std::atomic<int>& freed;
};

}  // namespace

TEST(WindowMessages, PayloadsAreFreedWhenNobodyTakesThemAndPostsKeepTheirOrder) {
    std::atomic<int> freed{0};
    InstallWindowSystem(nullptr);
    EXPECT_FALSE(PostWindowMessage(1, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // no window system yet
    {
        test::RecordingWindows windows;
        EXPECT_FALSE(PostWindowMessage(9, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // a dead window
        EXPECT_EQ(freed, 2);
        EXPECT_FALSE(PostWindowMessage(0, 2526));
        EXPECT_EQ(SendWindowMessage(1, 100, 5) + SendWindowMessage(9, 100, 5), 105);
        // Posts from several threads arrive, each thread's in its own order.
        std::vector<std::thread> workers;
        for (int t = 0; t < 4; ++t)
            workers.emplace_back([t] {
                for (int i = 0; i < 100; ++i) PostText(1, 2526, static_cast<std::uintptr_t>(t * 1000 + i), u"path");
            });
        for (auto& w : workers) w.join();
        const auto posted = windows.Messages(2526);
        ASSERT_EQ(posted.size(), 400u);
        int last[4] = {-1, -1, -1, -1};
        for (const auto& m : posted) {
            const int t = static_cast<int>(m.wParam / 1000), i = static_cast<int>(m.wParam % 1000);
            EXPECT_GT(i, std::exchange(last[t], i));
            EXPECT_EQ(m.text, u"path");
        }
    }
}
