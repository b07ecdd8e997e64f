#include <QCoreApplication>
#include <gtest/gtest.h>

// The network tests wait for replies in event loops, which need an
// application object; no window is involved.
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
