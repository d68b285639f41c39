// The panel needs a QApplication: the host's, in the library's life.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment: stay offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
