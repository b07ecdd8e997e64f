#include "overlay/RegionSelector.h"

#include "acquire/DesktopSpace.h"
#include "appbase/InProcessNotices.h"
#include "overlay/SelectorView.h"
#include "SettingsFakes.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QSignalSpy>

namespace {

// The snapshot of the one screen the offscreen platform has.
ScreenSnapshot offscreenDisplay()
{
    QScreen *screen = QGuiApplication::primaryScreen();
    const QRect geometry = screen->geometry();
    QImage image(geometry.size(), QImage::Format_RGB32);
    image.fill(Qt::darkGray);
    const DesktopSpace space(geometry);
    return {DesktopSpace::displayID(screen->name(), 0), image, space.toGlobal(QRectF(geometry)), 1.0};
}

struct SelectorHarness {
    SelectorHarness()
        : settings(storage, login),
          selector({offscreenDisplay()}, settings, RegionSelector::Options{CaptureIntent::image, {}},
                   [this](const RegionResult &result) { results << result; })
    {
    }
    QList<RegionResult> results;
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings;
    RegionSelector selector;
};

} // namespace

TEST(RegionSelector, FindsTheQtScreenOfASnapshot)
{
    EXPECT_EQ(RegionSelector::screenFor(offscreenDisplay()), QGuiApplication::primaryScreen());
    ScreenSnapshot gone = offscreenDisplay();
    gone.displayID += 1;
    EXPECT_EQ(RegionSelector::screenFor(gone), nullptr);
}

TEST(RegionSelector, PresentShowsOneWindowPerDisplayAndAnnouncesIt)
{
    QSignalSpy presented(&InProcessNotices::instance(), &InProcessNotices::overlayDidPresent);
    SelectorHarness h;
    h.selector.present();
    ASSERT_EQ(h.selector.views().size(), 1u);
    const SelectorView &view = *h.selector.views().front();
    EXPECT_TRUE(view.isVisible());
    EXPECT_EQ(view.geometry(), QGuiApplication::primaryScreen()->geometry());
    EXPECT_TRUE(view.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(view.windowFlags() & Qt::FramelessWindowHint);
    EXPECT_EQ(presented.count(), 1);
}

TEST(RegionSelector, FinishTwiceCompletesOnceAndDismissesOnce)
{
    QSignalSpy dismissed(&InProcessNotices::instance(), &InProcessNotices::overlayDidDismiss);
    SelectorHarness h;
    h.selector.present();
    h.selector.finish(RegionResult::cancelled());
    h.selector.finish(RegionResult::area(QRectF(0, 0, 10, 10), {}));
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(std::holds_alternative<RegionResult::Cancelled>(h.results.first().value));
    EXPECT_EQ(dismissed.count(), 1);
    EXPECT_TRUE(h.selector.views().empty());
    EXPECT_EQ(h.selector.canvas(), nullptr);
}

TEST(RegionSelector, ARelayedEscapeCancels)
{
    SelectorHarness h;
    h.selector.present();
    Q_EMIT InProcessNotices::instance().overlayEscape();
    QCoreApplication::processEvents();
    ASSERT_EQ(h.results.size(), 1);
    EXPECT_TRUE(std::holds_alternative<RegionResult::Cancelled>(h.results.first().value));
}

TEST(RegionSelector, EscapeIsNoLongerHeardAfterTheEnd)
{
    SelectorHarness h;
    h.selector.present();
    h.selector.finish(RegionResult::cancelled());
    Q_EMIT InProcessNotices::instance().overlayEscape();
    QCoreApplication::processEvents();
    EXPECT_EQ(h.results.size(), 1);
}

TEST(RegionSelector, TheArmedSelectionIsThereForTheTextHotkey)
{
    SelectorHarness h;
    h.selector.present();
    EXPECT_FALSE(h.selector.armedSelection());
    SelectionCanvas *canvas = h.selector.canvas();
    ASSERT_TRUE(canvas);
    const QRectF frame = canvas->bounds();
    canvas->mouseDown(frame.center());
    canvas->mouseUp(frame.center() + QPointF(40, 30));
    const auto armed = h.selector.armedSelection();
    ASSERT_TRUE(armed);
    EXPECT_EQ(armed->rect.size(), QSizeF(40, 30));
    EXPECT_EQ(armed->snapshots.size(), 1);
}
