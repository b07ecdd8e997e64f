#include "platform/x11/X11DisplayWatch.h"

#include "EventLoopWait.h"
#include "XvfbServer.h"

#include <xcb/dpms.h>
#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {

class X11DisplayWatchTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(QSize(320, 240));
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        c = xcb_connect(server->display().constData(), nullptr);
        ASSERT_FALSE(xcb_connection_has_error(c));
    }
    void TearDown() override
    {
        if (c)
            xcb_disconnect(c);
    }
    void sync() { std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr)); }

    std::unique_ptr<XvfbServer> server;
    xcb_connection_t *c = nullptr;
};

TEST_F(X11DisplayWatchTest, TheScreenSaverStartingIsTold)
{
    X11DisplayWatch watch(server->display());
    QList<InterruptionWatch::Reason> told;
    watch.start([&](InterruptionWatch::Reason reason) { told << reason; });
    ASSERT_TRUE(watch.watchesScreenSaver());
    EXPECT_TRUE(watch.watchesDisplays());
    EXPECT_FALSE(processEventsUntil([&] { return !told.isEmpty(); }, 200)) << "nothing happened yet";
    xcb_force_screen_saver(c, XCB_SCREEN_SAVER_ACTIVE);
    sync();
    ASSERT_TRUE(processEventsUntil([&] { return !told.isEmpty(); }, 3000));
    EXPECT_EQ(told.first(), InterruptionWatch::Reason::screensAsleep);
    watch.stop();
    xcb_force_screen_saver(c, XCB_SCREEN_SAVER_RESET);
    sync();
}

TEST_F(X11DisplayWatchTest, DisplaysGoingToPowerSavingAreTold)
{
    X11DisplayWatch watch(server->display(), 20);
    QList<InterruptionWatch::Reason> told;
    watch.start([&](InterruptionWatch::Reason reason) { told << reason; });
    if (!watch.watchesPower())
        GTEST_SKIP() << "this X server has no DPMS";
    EXPECT_FALSE(processEventsUntil([&] { return !told.isEmpty(); }, 100));
    xcb_dpms_enable(c);
    xcb_dpms_force_level(c, XCB_DPMS_DPMS_MODE_OFF);
    sync();
    ASSERT_TRUE(processEventsUntil([&] { return !told.isEmpty(); }, 3000));
    EXPECT_EQ(told.first(), InterruptionWatch::Reason::screensAsleep);
    watch.stop();
}

TEST_F(X11DisplayWatchTest, StopEndsTheWatch)
{
    X11DisplayWatch watch(server->display());
    int told = 0;
    watch.start([&](InterruptionWatch::Reason) { ++told; });
    watch.stop();
    xcb_force_screen_saver(c, XCB_SCREEN_SAVER_ACTIVE);
    sync();
    EXPECT_FALSE(processEventsUntil([&] { return told > 0; }, 300));
    xcb_force_screen_saver(c, XCB_SCREEN_SAVER_RESET);
    sync();
}

} // namespace
