// The end-to-end programs run as a host would: one QApplication, one world.
#include <gtest/gtest.h>

#include <QApplication>

#include "e2e_world.h"

#ifndef MARROWFIN_E2E_RATE
#define MARROWFIN_E2E_RATE 1.0f
#endif

namespace {

class WorldEnvironment final : public ::testing::Environment {
public:
    void SetUp() override { marrowfin::test::MakeWorld(MARROWFIN_E2E_RATE, 2); }
    void TearDown() override { marrowfin::test::EndWorld(); }
};

}  // namespace

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment: stay offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new WorldEnvironment);
    return RUN_ALL_TESTS();
}
