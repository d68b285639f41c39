#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>

#include "platform/threads.h"

using namespace marrowfin;

TEST(Threads, AFailedStartAnswersFalseRunsNothingAndTheNextStartWorks) {
    auto token = std::make_shared<int>(0);  // tells whether the work was let go
    std::atomic<int> runs{0};
    FailThreadStartsForTests(2);
    std::thread t;
    EXPECT_FALSE(StartThread(t, [&runs, token] { ++runs; }));
    EXPECT_FALSE(StartDetachedThread([&runs, token] { ++runs; }));
    EXPECT_FALSE(t.joinable());
    EXPECT_EQ(token.use_count(), 1) << "the work of a failed start is destroyed";
    ASSERT_TRUE(StartThread(t, [&runs, token] { ++runs; }));
    t.join();
    // A throwing body ends its worker, not the process.
    ASSERT_TRUE(StartThread(t, [&runs] { ++runs; throw std::runtime_error("worker"); }));
    t.join();
    EXPECT_EQ(runs.load(), 2);
}
