// The skin tests need a QApplication (the host's, in the library's life).
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
