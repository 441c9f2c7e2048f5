#include <QApplication>

#include <gtest/gtest.h>

// The main function of test programs with windows.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
