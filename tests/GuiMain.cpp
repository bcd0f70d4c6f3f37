#include <QApplication>

#include <gtest/gtest.h>

// Tests with windows, run under a display of their own.
int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
