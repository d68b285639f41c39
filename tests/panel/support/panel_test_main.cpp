// The panel tests need a QApplication, as the host gives the library one.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment: stay offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
