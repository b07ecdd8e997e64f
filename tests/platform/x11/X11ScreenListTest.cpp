#include "platform/x11/X11ScreenList.h"

#include "acquire/DesktopSpace.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

// On the offscreen platform Qt has one screen; its frame in global points has
// the origin at its bottom left, and its pixels start at its top left.
TEST(X11ScreenList, ThePrimaryScreenIsFirstAtTheOrigin)
{
    X11ScreenList list;
    const auto screens = list.screens();
    ASSERT_FALSE(screens.isEmpty());
    const QScreen *primary = QGuiApplication::primaryScreen();
    EXPECT_EQ(screens[0].frame, QRectF(0, 0, primary->geometry().width(), primary->geometry().height()));
    EXPECT_EQ(screens[0].scale, primary->devicePixelRatio());
    ASSERT_TRUE(screens[0].displayID.has_value());
    EXPECT_EQ(*screens[0].displayID, DesktopSpace::displayID(primary->name(), 0));
    EXPECT_EQ(X11ScreenList::rootPixels(*screens[0].displayID),
              DesktopSpace::nativePixelRect(primary->geometry(), primary->devicePixelRatio()));
    EXPECT_FALSE(X11ScreenList::rootPixels(*screens[0].displayID + 1).has_value());
}
