// The picker tests need a QApplication and the Qt window system for posts.
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/qt/qt_window_system.h"

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    marrowfin::InstallQtWindowSystem();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
