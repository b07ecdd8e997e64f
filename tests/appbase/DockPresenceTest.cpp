#include "appbase/DockPresence.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <vector>

namespace {

struct DockPresenceTest : ::testing::Test {
    std::vector<bool> changes;
    DockPresence presence{[this](bool present) { changes.push_back(present); }};

    static void settle() { QCoreApplication::processEvents(); }
};

TEST_F(DockPresenceTest, FirstWindowRaisesPresenceAtOnce)
{
    presence.windowOpened();
    EXPECT_EQ(changes, std::vector<bool>{true});
    EXPECT_TRUE(presence.isPresent());
}

TEST_F(DockPresenceTest, TwoOpenedOneClosedKeepsIt)
{
    presence.windowOpened();
    presence.windowOpened();
    presence.windowClosed();
    settle();
    EXPECT_TRUE(presence.isPresent());
    EXPECT_EQ(presence.openWindows(), 1);
}

TEST_F(DockPresenceTest, BothClosedDropsItAfterTheCloseHasFinished)
{
    presence.windowOpened();
    presence.windowOpened();
    presence.windowClosed();
    presence.windowClosed();
    EXPECT_TRUE(presence.isPresent()); // not yet: the change waits for the event loop
    settle();
    EXPECT_FALSE(presence.isPresent());
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));
}

TEST_F(DockPresenceTest, KeepsHoldsPresenceWithNoWindow)
{
    bool keep = true;
    presence.keeps = [&] { return keep; };
    presence.windowOpened();
    presence.windowClosed();
    settle();
    EXPECT_TRUE(presence.isPresent());
    keep = false;
    presence.update();
    settle();
    EXPECT_FALSE(presence.isPresent());
}

TEST_F(DockPresenceTest, ClosingAtZeroStaysAtZero)
{
    presence.windowClosed();
    settle();
    EXPECT_EQ(presence.openWindows(), 0);
    EXPECT_TRUE(changes.empty());
}

} // namespace
