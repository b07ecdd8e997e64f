#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Painting, fonts and widgets need a GUI application; the offscreen
    // platform gives one without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
