// The main of the Qt test programs: a QApplication (the host's, in the
// library's life) offscreen, and the Qt window system for handles and posts.
// Linked in by listing marrowfin_qtsupport; a program's own main wins.
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/qt/qt_window_system.h"

int main(int argc, char** argv) {
    // Test discovery runs the program without the test environment: stay offscreen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    marrowfin::InstallQtWindowSystem();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
