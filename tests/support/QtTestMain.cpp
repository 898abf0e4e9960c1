#include <QApplication>

#include <gtest/gtest.h>

/// Tests of windows: one application for all cases, on whatever platform QT_QPA_PLATFORM names.
int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
