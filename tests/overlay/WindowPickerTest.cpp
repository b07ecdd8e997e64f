#include "overlay/WindowPicker.h"
#include "overlay/WindowPickerLook.h"
#include "overlay/WindowPickerWindow.h"

#include "EventLoopWait.h"
#include "SettingsFakes.h"

#include "acquire/CaptureServicing.h"
#include "acquire/DesktopSpace.h"
#include "acquire/WindowList.h"
#include "appbase/AppError.h"
#include "appbase/InProcessNotices.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr qint64 kOwnProcess = 777;

struct FakeWindowList : WindowList {
    QList<Entry> entries;
    int reads = 0;
    QList<Entry> onScreenEntries() override
    {
        ++reads;
        return entries;
    }
};

struct FakeCapture : CaptureServicing {
    QList<std::uint32_t> asked;
    QFuture<QImage> captureDisplay(std::uint32_t id) override
    {
        asked << id;
        if (id == 0xbad)
            return QtFuture::makeExceptionalFuture<QImage>(AppError::captureFailed("no picture"));
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(QColor(200, 200, 200));
        return QtFuture::makeReadyFuture(image);
    }
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t id, double) override { return captureDisplay(id); }
};

struct FakeScreens : ScreenList {
    QList<Screen> list;
    QPointF mouse;
    QList<Screen> screens() const override { return list; }
    std::optional<int> mainIndex() const override { return 0; }
    QPointF mouseLocation() const override { return mouse; }
};

WindowList::Entry window(std::uint32_t id, QRectF frame, QString app, qint64 pid = 100)
{
    WindowList::Entry e;
    e.windowID = id;
    e.processID = pid;
    e.appName = std::move(app);
    e.frame = frame;
    return e;
}

struct PickerHarness {
    PickerHarness()
    {
        const QRect primary = QGuiApplication::primaryScreen()->geometry();
        const DesktopSpace space(primary);
        mainFrame = space.toGlobal(QRectF(primary));
        // A second display to the right of the first, level with its bottom.
        sideFrame = QRectF(mainFrame.right(), 0, 400, 300);
        screens.list = {{1u, mainFrame, 1.0}, {2u, sideFrame, 1.0}};
        screens.mouse = QPointF(50, 50);
        windows.entries = {
            window(0x10, {20, 20, 100, 80}, "XClock"),
            window(0x20, {0, 0, 300, 200}, "XTerm"),
            window(0x30, {200, 200, 300, 39}, "Thin"),
            window(0x40, {10, 10, 500, 400}, "glimpso", kOwnProcess),
            // Across both displays.
            window(0x50, {mainFrame.right() - 100, 100, 250, 120}, "Wide"),
        };
    }

    void pick()
    {
        picker.pick([this](const std::optional<WindowTarget> &target, Qt::KeyboardModifiers modifiers) {
            results << qMakePair(target, modifiers);
        });
        ASSERT_TRUE(processEventsUntil([&] { return picker.windowCount() == 2; }));
    }

    WindowPickerWindow *windowAt(int index) const { return picker.windows().value(index); }

    QRectF mainFrame, sideFrame;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings{storage, login};
    FakeWindowList windows;
    FakeCapture capture;
    FakeScreens screens;
    WindowPicker picker{windows, capture, screens, settings, kOwnProcess};
    QList<QPair<std::optional<WindowTarget>, Qt::KeyboardModifiers>> results;
};

QRgb pixelAt(WindowPickerWindow *w, QPointF global)
{
    return w->grab().toImage().pixel(w->toLocal(global).toPoint());
}

} // namespace

TEST(WindowPicker, ListsTheWindowsOnceAndPutsAWindowOnEveryDisplay)
{
    QSignalSpy presented(&InProcessNotices::instance(), &InProcessNotices::overlayDidPresent);
    PickerHarness h;
    h.pick();
    EXPECT_EQ(h.windows.reads, 1);
    EXPECT_TRUE(h.picker.isPicking());
    EXPECT_EQ(h.capture.asked, (QList<std::uint32_t>{1u, 2u}));
    EXPECT_EQ(presented.count(), 1);
    // glimpso's own and the 39-point window are not targets.
    QList<std::uint32_t> ids;
    for (const WindowTarget &target : h.picker.targets())
        ids << target.windowID;
    EXPECT_EQ(ids, (QList<std::uint32_t>{0x10, 0x20, 0x50}));
    // The window under the pointer lights up at once.
    ASSERT_TRUE(h.picker.hovered());
    EXPECT_EQ(h.picker.hovered()->windowID, 0x10u);
    for (WindowPickerWindow *w : h.picker.windows()) {
        EXPECT_TRUE(w->isVisible());
        EXPECT_TRUE(w->windowFlags() & Qt::WindowStaysOnTopHint);
    }
}

TEST(WindowPicker, TheFrontWindowWinsWhereTwoOverlap)
{
    PickerHarness h;
    h.pick();
    h.picker.update({150, 150});
    EXPECT_EQ(h.picker.hovered()->windowID, 0x20u);
    h.picker.update({30, 30});
    EXPECT_EQ(h.picker.hovered()->windowID, 0x10u);
    // Over the thin window only the desktop is there.
    h.picker.update({250, 220});
    EXPECT_FALSE(h.picker.hovered());
}

TEST(WindowPicker, AClickWithShiftHandsTheTargetAndTheFlagBack)
{
    QSignalSpy dismissed(&InProcessNotices::instance(), &InProcessNotices::overlayDidDismiss);
    PickerHarness h;
    h.pick();
    WindowPickerWindow *main = h.windowAt(0);
    QTest::mouseClick(main, Qt::LeftButton, Qt::ShiftModifier, main->toLocal(QPointF(150, 150)).toPoint());
    ASSERT_EQ(h.results.size(), 1);
    ASSERT_TRUE(h.results[0].first);
    EXPECT_EQ(h.results[0].first->windowID, 0x20u);
    EXPECT_EQ(h.results[0].first->appName, "XTerm");
    EXPECT_TRUE(h.results[0].second.testFlag(Qt::ShiftModifier));
    EXPECT_FALSE(h.picker.isPicking());
    EXPECT_EQ(h.picker.windowCount(), 0);
    EXPECT_EQ(dismissed.count(), 1);
}

TEST(WindowPicker, AClickOnTheEmptyDesktopLetsThePickGoOn)
{
    PickerHarness h;
    h.pick();
    WindowPickerWindow *main = h.windowAt(0);
    QTest::mouseClick(main, Qt::LeftButton, Qt::NoModifier, main->toLocal(QPointF(600, 500)).toPoint());
    EXPECT_TRUE(h.results.isEmpty());
    EXPECT_TRUE(h.picker.isPicking());
}

TEST(WindowPicker, EscapeLeavesWithNothingAndNoModifiers)
{
    PickerHarness h;
    h.pick();
    QTest::keyClick(h.windowAt(0), Qt::Key_Escape, Qt::ShiftModifier);
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_FALSE(h.results[0].first);
    EXPECT_EQ(h.results[0].second, Qt::NoModifier);
}

TEST(WindowPicker, EscapeFromTheGlobalShortcutLeavesToo)
{
    PickerHarness h;
    h.pick();
    Q_EMIT InProcessNotices::instance().overlayEscape();
    ASSERT_TRUE(processEventsUntil([&] { return !h.results.isEmpty(); }));
    EXPECT_FALSE(h.results[0].first);
}

TEST(WindowPicker, ASecondPickWhileOneIsUpIsRefused)
{
    PickerHarness h;
    h.pick();
    std::optional<std::optional<WindowTarget>> second;
    h.picker.pick([&](const std::optional<WindowTarget> &target, Qt::KeyboardModifiers) { second = target; });
    ASSERT_TRUE(second);
    EXPECT_FALSE(*second);
    EXPECT_TRUE(h.picker.isPicking());
    h.picker.cancel();
    EXPECT_EQ(h.results.size(), 1);
}

TEST(WindowPicker, ADisplayWithoutAPictureShowsTheVeilOverBlack)
{
    PickerHarness h;
    h.screens.list[1].displayID = 0xbad;
    h.pick();
    EXPECT_EQ(qGray(pixelAt(h.windowAt(1), h.sideFrame.center())), 0);
}

TEST(WindowPicker, TheHoveredWindowIsUndimmedAndTheRestVeiled)
{
    PickerHarness h;
    h.pick();
    h.picker.update({150, 150});
    WindowPickerWindow *main = h.windowAt(0);
    EXPECT_EQ(qGray(pixelAt(main, {150, 120})), 200);
    // 0.25 black over grey 200.
    EXPECT_NEAR(qGray(pixelAt(main, {600, 500})), 150, 2);
}

TEST(WindowPicker, TheHintShowsOnlyOnTheDisplayThatHoldsThePointer)
{
    PickerHarness h;
    h.pick();
    for (int i = 0; i < 2; ++i) {
        WindowPickerWindow *w = h.windowAt(i);
        const QImage picture = w->grab().toImage();
        // The pill's middle, 80 below the top minus half a pill.
        const int gray = qGray(picture.pixel(picture.width() / 2, 80 - 4));
        if (i == 0)
            EXPECT_LT(gray, 80) << "the pointer's display";
        else
            EXPECT_NEAR(gray, 150, 2) << "the other display";
    }
}

TEST(WindowPicker, TheLabelOfAWindowAcrossTwoDisplaysShowsOnEach)
{
    PickerHarness h;
    h.pick();
    h.picker.update({h.mainFrame.right() - 50, 150});
    ASSERT_EQ(h.picker.hovered()->windowID, 0x50u);
    for (int i = 0; i < 2; ++i) {
        WindowPickerWindow *w = h.windowAt(i);
        const QRectF hole = w->toLocal(h.picker.hovered()->frame);
        // Near the hole's bottom edge, where the label's pill lies, dark.
        const QImage picture = w->grab().toImage();
        // In the pill's bottom padding, below its text.
        const QRectF label = WindowPickerLook::labelPill(QSizeF(60, 16), hole, w->size());
        // The pill is pushed inside each display: against its right edge on
        // the first, its left edge on the second.
        const QPoint inside(i == 0 ? w->width() - 8 - 20 : 8 + 20, int(label.bottom()) - 3);
        EXPECT_LT(qGray(picture.pixel(inside)), 100) << "display " << i;
    }
}

TEST(WindowPickerLook, LabelsTheWindowWithItsSizeInWholePoints)
{
    EXPECT_EQ(WindowPickerLook::label("XTerm", QSizeF(484.4, 316.6)), QStringLiteral("XTerm \u00b7 484 \u00d7 317"));
}

TEST(WindowPickerLook, TheHintTellsWhatShiftWillDo)
{
    EXPECT_TRUE(WindowPickerLook::hint(true).contains("Hold Shift for the colour background"));
    EXPECT_TRUE(WindowPickerLook::hint(false).contains("Hold Shift for a transparent background"));
    EXPECT_TRUE(WindowPickerLook::hint(false).startsWith("Click a window"));
    EXPECT_TRUE(WindowPickerLook::hint(false).endsWith("Esc to cancel"));
}

TEST(WindowPickerLook, PillsAreCentredAndKeptInsideTheView)
{
    const QRectF centred = WindowPickerLook::pill({100, 16}, 500, 80, 1000);
    EXPECT_EQ(centred, QRectF(438, 52, 124, 28));
    EXPECT_EQ(WindowPickerLook::pill({100, 16}, 10, 80, 1000).left(), 8);
    EXPECT_EQ(WindowPickerLook::pill({100, 16}, 995, 80, 1000).right(), 992);
    // The label sits 12 above the hole's bottom, never lower than 8 above the view's.
    EXPECT_EQ(WindowPickerLook::labelPill({100, 16}, QRectF(100, 100, 300, 200), {1000, 800}).bottom(), 288);
    EXPECT_EQ(WindowPickerLook::labelPill({100, 16}, QRectF(100, 700, 300, 200), {1000, 800}).bottom(), 792);
    EXPECT_EQ(WindowPickerLook::hintPill({100, 16}, {1000, 800}).bottom(), 80);
}
