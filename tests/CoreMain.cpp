#include <QCoreApplication>

#include <gtest/gtest.h>

// Tests without windows: an event loop, and nothing of a display.
int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
