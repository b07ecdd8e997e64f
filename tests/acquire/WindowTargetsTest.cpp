#include "acquire/WindowTargets.h"

#include <gtest/gtest.h>

namespace {

constexpr qint64 kOwnProcess = 4242;

WindowList::Entry entry(std::uint32_t id, QRectF frame, QString app = QStringLiteral("XTerm"))
{
    WindowList::Entry e;
    e.windowID = id;
    e.processID = 100 + id;
    e.appName = std::move(app);
    e.frame = frame;
    return e;
}

} // namespace

TEST(WindowTargets, KeepsTheListsFrontToBackOrder)
{
    const QList<WindowTarget> targets =
        WindowTargets::select({entry(1, {0, 0, 100, 100}), entry(2, {50, 50, 200, 200})}, kOwnProcess);
    ASSERT_EQ(targets.size(), 2);
    EXPECT_EQ(targets[0].windowID, 1u);
    EXPECT_EQ(targets[1].windowID, 2u);
    EXPECT_EQ(targets[0].appName, "XTerm");
    EXPECT_EQ(targets[0].frame, QRectF(0, 0, 100, 100));
}

TEST(WindowTargets, AWindowOf39PointsIsNeverATarget)
{
    const QList<WindowTarget> targets = WindowTargets::select(
        {entry(1, {0, 0, 300, 39}), entry(2, {0, 0, 39, 300}), entry(3, {0, 0, 40, 40})}, kOwnProcess);
    ASSERT_EQ(targets.size(), 1);
    EXPECT_EQ(targets[0].windowID, 3u);
    // So a point inside the small one hovers nothing of it.
    EXPECT_FALSE(WindowTargets::hit(WindowTargets::select({entry(1, {0, 0, 300, 39})}, kOwnProcess), {10, 10}));
}

TEST(WindowTargets, GlimpsosOwnWindowsAreNeverTargets)
{
    WindowList::Entry editor = entry(1, {0, 0, 800, 600}, QStringLiteral("glimpso"));
    editor.processID = kOwnProcess;
    const QList<WindowTarget> targets = WindowTargets::select({editor, entry(2, {0, 0, 800, 600})}, kOwnProcess);
    ASSERT_EQ(targets.size(), 1);
    EXPECT_EQ(targets[0].windowID, 2u);
}

TEST(WindowTargets, AWindowThatNamesNoProcessIsStillATarget)
{
    // Old X programs (xclock) don't set _NET_WM_PID.
    WindowList::Entry clock = entry(1, {0, 0, 164, 164}, QStringLiteral("XClock"));
    clock.processID.reset();
    EXPECT_EQ(WindowTargets::select({clock}, kOwnProcess).size(), 1);
}

TEST(WindowTargets, DocksMenusFullyTransparentAndNamelessWindowsAreDropped)
{
    WindowList::Entry dock = entry(1, {0, 0, 800, 40});
    dock.isNormalLayer = false;
    WindowList::Entry invisible = entry(2, {0, 0, 800, 600});
    invisible.opacity = 0.0;
    WindowList::Entry faint = entry(3, {0, 0, 800, 600});
    faint.opacity = 0.1;
    WindowList::Entry noID = entry(4, {0, 0, 800, 600});
    noID.windowID.reset();
    WindowList::Entry noFrame = entry(5, {});
    noFrame.frame.reset();
    const QList<WindowTarget> targets = WindowTargets::select({dock, invisible, faint, noID, noFrame}, kOwnProcess);
    ASSERT_EQ(targets.size(), 1);
    EXPECT_EQ(targets[0].windowID, 3u);
}

TEST(WindowTargets, AWindowPartlyOffScreenKeepsItsWholeFrame)
{
    const QList<WindowTarget> targets = WindowTargets::select({entry(1, {-200, 500, 640, 480})}, kOwnProcess);
    ASSERT_EQ(targets.size(), 1);
    EXPECT_EQ(targets[0].frame, QRectF(-200, 500, 640, 480));
    EXPECT_TRUE(WindowTargets::hit(targets, {-100, 600}));
}

TEST(WindowTargets, ThePointInAnOverlapHoversTheFrontWindow)
{
    // The one behind is larger and holds the point too.
    const QList<WindowTarget> targets =
        WindowTargets::select({entry(1, {100, 100, 200, 200}), entry(2, {0, 0, 1000, 1000})}, kOwnProcess);
    EXPECT_EQ(WindowTargets::hit(targets, {150, 150})->windowID, 1u);
    EXPECT_EQ(WindowTargets::hit(targets, {50, 50})->windowID, 2u);
}

TEST(WindowTargets, NoWindowUnderThePointHoversNothing)
{
    const QList<WindowTarget> targets = WindowTargets::select({entry(1, {100, 100, 200, 200})}, kOwnProcess);
    EXPECT_FALSE(WindowTargets::hit(targets, {10, 10}));
    EXPECT_FALSE(WindowTargets::hit({}, {10, 10}));
    // The left and bottom edges are the frame's, the right and top ones not.
    EXPECT_TRUE(WindowTargets::hit(targets, {100, 100}));
    EXPECT_FALSE(WindowTargets::hit(targets, {300, 150}));
    EXPECT_FALSE(WindowTargets::hit(targets, {150, 300}));
}
