#include <gtest/gtest.h>

#include <atomic>
#include <memory>

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

// The order of posts from several threads is the window system's own (see the Qt layer's tests).
TEST(WindowMessages, PayloadsAreFreedWhenNobodyTakesThem) {
    std::atomic<int> freed{0};
    InstallWindowSystem(nullptr);
    EXPECT_FALSE(PostWindowMessage(1, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // no window system yet
    test::RecordingWindows windows;
    EXPECT_FALSE(PostWindowMessage(9, 2526, 0, 0, std::make_unique<CountedPayload>(freed)));  // a dead window
    EXPECT_EQ(freed, 2);
    EXPECT_FALSE(PostWindowMessage(0, 2526));
    EXPECT_TRUE(PostText(1, 2526, 4, u"path"));
    ASSERT_EQ(windows.Messages(2526).size(), 1u);
    EXPECT_EQ(windows.Messages(2526)[0].text, u"path");
    EXPECT_EQ(SendWindowMessage(1, 100, 5) + SendWindowMessage(9, 100, 5), 105);
}
