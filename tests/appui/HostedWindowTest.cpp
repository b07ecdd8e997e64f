#include "appui/HostedWindow.h"

#include "appbase/DockPresence.h"

#include "EventLoopWait.h"
#include "SettingsFakes.h"

#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

struct HostedWindowTest : ::testing::Test {
    std::vector<bool> presenceChanges;
    DockPresence dock{[this](bool present) { presenceChanges.push_back(present); }};
    MemorySettingsStorage frames;
    int contentsMade = 0;

    std::unique_ptr<HostedWindow> make(HostedWindow::Config config)
    {
        return std::make_unique<HostedWindow>(dock, &frames, std::move(config), [this] {
            ++contentsMade;
            return new QLabel(QStringLiteral("content"));
        });
    }

    static HostedWindow::Config settingsConfig()
    {
        return {QStringLiteral("glimpso Settings"), QSize(640, 480), QStringLiteral("glimpso.settings")};
    }

    static QRect available()
    {
        return QGuiApplication::primaryScreen()->availableGeometry();
    }

    void close(HostedWindow &hosted)
    {
        hosted.window()->close();
        // The dock presence follows once the close has finished.
        processEventsUntil([&] { return presenceChanges.empty() || !dock.isPresent(); }, 2000);
    }
};

} // namespace

TEST_F(HostedWindowTest, HasNoWindowUntilShown)
{
    auto hosted = make(settingsConfig());
    EXPECT_EQ(hosted->window(), nullptr);
    EXPECT_FALSE(hosted->isOpen());
    EXPECT_EQ(contentsMade, 0);
    EXPECT_EQ(dock.openWindows(), 0);
}

TEST_F(HostedWindowTest, ShowOpensOneTopLevelWindowWithTheContentAtItsSize)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    ASSERT_NE(hosted->window(), nullptr);
    EXPECT_TRUE(hosted->window()->isWindow());
    EXPECT_TRUE(hosted->window()->isVisible());
    EXPECT_EQ(hosted->window()->windowTitle(), QStringLiteral("glimpso Settings"));
    EXPECT_EQ(hosted->window()->size(), QSize(640, 480));
    EXPECT_NE(hosted->window()->findChild<QLabel *>(), nullptr);
    EXPECT_EQ(contentsMade, 1);
}

TEST_F(HostedWindowTest, SecondShowRaisesTheSameWindowAndCountsItOnce)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    QWidget *first = hosted->window();
    hosted->show();
    EXPECT_EQ(hosted->window(), first);
    EXPECT_EQ(contentsMade, 1);
    EXPECT_EQ(dock.openWindows(), 1);
    EXPECT_EQ(presenceChanges, std::vector<bool>{true});
}

TEST_F(HostedWindowTest, ShowBringsAMinimisedWindowBack)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    hosted->window()->setWindowState(Qt::WindowMinimized);
    ASSERT_TRUE(hosted->window()->isMinimized());
    hosted->show();
    EXPECT_FALSE(hosted->window()->isMinimized());
    EXPECT_EQ(dock.openWindows(), 1);
}

TEST_F(HostedWindowTest, CentresOnTheScreenWhenNothingIsSaved)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    const QPoint centre = hosted->window()->geometry().center();
    EXPECT_LE((centre - available().center()).manhattanLength(), 2);
}

TEST_F(HostedWindowTest, AWindowLargerThanTheScreenKeepsItsTopLeftOnIt)
{
    auto config = settingsConfig();
    config.size = available().size() + QSize(400, 300);
    config.autosaveName.clear();
    auto hosted = make(config);
    hosted->show();
    EXPECT_TRUE(available().contains(hosted->window()->geometry().topLeft()));
}

TEST_F(HostedWindowTest, SavesItsFrameUnderItsAutosaveNameWhenClosed)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    hosted->window()->move(available().topLeft() + QPoint(37, 51));
    const QRect frame = hosted->window()->geometry();
    close(*hosted);
    const QString key = HostedWindow::frameKey(QStringLiteral("glimpso.settings"));
    ASSERT_TRUE(frames.contains(key));
    EXPECT_EQ(HostedWindow::frameFromText(frames.value(key).toString()), frame);
}

TEST_F(HostedWindowTest, AMoveIsSavedOnceTheWindowSettlesWithoutAClose)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    hosted->window()->move(available().topLeft() + QPoint(80, 60));
    const QString key = HostedWindow::frameKey(QStringLiteral("glimpso.settings"));
    const QString expected = HostedWindow::frameText(hosted->window()->geometry());
    EXPECT_TRUE(processEventsUntil([&] { return frames.value(key).toString() == expected; }, 3000));
}

TEST_F(HostedWindowTest, RestoresTheSavedFrameInANewRun)
{
    const QRect saved(available().topLeft() + QPoint(90, 70), QSize(700, 520));
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.settings")), HostedWindow::frameText(saved));
    auto config = settingsConfig();
    config.resizable = true;
    auto hosted = make(config);
    hosted->show();
    EXPECT_EQ(hosted->window()->geometry(), saved);
}

TEST_F(HostedWindowTest, AFixedSizeWindowTakesOnlyThePositionOfItsSavedFrame)
{
    const QRect saved(available().topLeft() + QPoint(90, 70), QSize(900, 900));
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.settings")), HostedWindow::frameText(saved));
    auto hosted = make(settingsConfig());
    hosted->show();
    EXPECT_EQ(hosted->window()->geometry(), QRect(saved.topLeft(), QSize(640, 480)));
}

TEST_F(HostedWindowTest, ASavedFrameSmallerThanTheSizeGrowsToIt)
{
    const QRect saved(available().topLeft() + QPoint(10, 10), QSize(200, 100));
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.settings")), HostedWindow::frameText(saved));
    auto config = settingsConfig();
    config.resizable = true;
    auto hosted = make(config);
    hosted->show();
    EXPECT_EQ(hosted->window()->geometry(), QRect(saved.topLeft(), QSize(640, 480)));
}

TEST_F(HostedWindowTest, AFrameSavedOnAScreenThatIsGoneIsCentredInstead)
{
    const QRect offScreen(available().bottomRight() + QPoint(5000, 5000), QSize(640, 480));
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.settings")), HostedWindow::frameText(offScreen));
    auto hosted = make(settingsConfig());
    hosted->show();
    EXPECT_LE((hosted->window()->geometry().center() - available().center()).manhattanLength(), 2);
}

TEST_F(HostedWindowTest, AnUnreadableSavedFrameIsCentredInstead)
{
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.settings")), QStringLiteral("left top"));
    auto hosted = make(settingsConfig());
    hosted->show();
    EXPECT_LE((hosted->window()->geometry().center() - available().center()).manhattanLength(), 2);
}

TEST_F(HostedWindowTest, WindowsWithOtherAutosaveNamesKeepTheirOwnFrames)
{
    const QRect saved(available().topLeft() + QPoint(90, 70), QSize(640, 480));
    frames.setValue(HostedWindow::frameKey(QStringLiteral("glimpso.trim")), HostedWindow::frameText(saved));
    auto hosted = make(settingsConfig());
    hosted->show();
    EXPECT_NE(hosted->window()->geometry().topLeft(), saved.topLeft());
}

TEST_F(HostedWindowTest, WithoutAnAutosaveNameNothingIsSaved)
{
    auto config = settingsConfig();
    config.autosaveName.clear();
    auto hosted = make(config);
    hosted->show();
    hosted->window()->move(available().topLeft() + QPoint(20, 20));
    close(*hosted);
    EXPECT_TRUE(frames.values.isEmpty());
}

TEST_F(HostedWindowTest, WithoutAnAutosaveNameItReopensWhereItWasLeft)
{
    auto config = settingsConfig();
    config.autosaveName.clear();
    auto hosted = make(config);
    hosted->show();
    hosted->window()->move(available().topLeft() + QPoint(25, 15));
    const QRect left = hosted->window()->geometry();
    close(*hosted);
    hosted->show();
    EXPECT_EQ(hosted->window()->geometry(), left);
}

TEST_F(HostedWindowTest, ResizableWindowHasItsSizeAsMinimumAndAFixedOneCannotResize)
{
    auto config = settingsConfig();
    config.resizable = true;
    auto resizable = make(config);
    resizable->show();
    EXPECT_EQ(resizable->window()->minimumSize(), QSize(640, 480));
    EXPECT_GT(resizable->window()->maximumWidth(), 640);

    auto fixed = make(settingsConfig());
    fixed->show();
    EXPECT_EQ(fixed->window()->minimumSize(), QSize(640, 480));
    EXPECT_EQ(fixed->window()->maximumSize(), QSize(640, 480));
}

TEST_F(HostedWindowTest, CountsInDockPresenceWhileOpen)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    EXPECT_EQ(dock.openWindows(), 1);
    EXPECT_TRUE(dock.isPresent());
    close(*hosted);
    EXPECT_EQ(dock.openWindows(), 0);
    EXPECT_FALSE(dock.isPresent());
    EXPECT_EQ(presenceChanges, (std::vector<bool>{true, false}));
}

TEST_F(HostedWindowTest, OnCloseRunsAfterTheWindowIsUncounted)
{
    auto hosted = make(settingsConfig());
    int closes = 0;
    int openAtClose = -1;
    hosted->onClose = [&] {
        ++closes;
        openAtClose = dock.openWindows();
    };
    hosted->show();
    close(*hosted);
    EXPECT_EQ(closes, 1);
    EXPECT_EQ(openAtClose, 0);
    EXPECT_FALSE(hosted->isOpen());
}

TEST_F(HostedWindowTest, MinimisingIsNotClosing)
{
    auto hosted = make(settingsConfig());
    int closes = 0;
    hosted->onClose = [&] { ++closes; };
    hosted->show();
    hosted->window()->setWindowState(Qt::WindowMinimized);
    QApplication::processEvents();
    EXPECT_EQ(closes, 0);
    EXPECT_EQ(dock.openWindows(), 1);
}

TEST_F(HostedWindowTest, ShowAfterCloseReopensTheSameContentWhereItWasLeft)
{
    auto hosted = make(settingsConfig());
    hosted->show();
    QWidget *window = hosted->window();
    hosted->window()->move(available().topLeft() + QPoint(44, 33));
    const QRect left = hosted->window()->geometry();
    close(*hosted);
    hosted->show();
    EXPECT_EQ(hosted->window(), window);
    EXPECT_EQ(contentsMade, 1);
    EXPECT_TRUE(hosted->window()->isVisible());
    EXPECT_EQ(hosted->window()->geometry(), left);
    EXPECT_EQ(dock.openWindows(), 1);
}

TEST_F(HostedWindowTest, TwoWindowsKeepThePresenceUntilBothAreClosed)
{
    auto settings = make(settingsConfig());
    auto config = settingsConfig();
    config.autosaveName = QStringLiteral("glimpso.trim");
    auto trim = make(config);
    settings->show();
    trim->show();
    EXPECT_EQ(dock.openWindows(), 2);
    settings->window()->close();
    QApplication::processEvents();
    EXPECT_TRUE(dock.isPresent());
    close(*trim);
    EXPECT_FALSE(dock.isPresent());
}

TEST_F(HostedWindowTest, TakesTheFocusUnlessItOpensUnfocused)
{
    auto focused = make(settingsConfig());
    focused->show();
    EXPECT_TRUE(processEventsUntil([&] { return QApplication::activeWindow() == focused->window(); }, 2000));
    EXPECT_FALSE(focused->window()->testAttribute(Qt::WA_ShowWithoutActivating));

    // The offscreen platform activates every window it shows, so what is
    // checked here is what the window asks of the window manager.
    auto config = settingsConfig();
    config.autosaveName = QStringLiteral("glimpso.quiet");
    config.opensUnfocused = true;
    auto quiet = make(config);
    quiet->show();
    EXPECT_TRUE(quiet->window()->isVisible());
    EXPECT_TRUE(quiet->window()->testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(HostedWindowTest, DestroyingAnOpenWindowSavesAndUncountsItWithoutOnClose)
{
    auto hosted = make(settingsConfig());
    int closes = 0;
    hosted->onClose = [&] { ++closes; };
    hosted->show();
    hosted->window()->move(available().topLeft() + QPoint(12, 34));
    const QRect frame = hosted->window()->geometry();
    hosted.reset();
    EXPECT_EQ(dock.openWindows(), 0);
    EXPECT_EQ(closes, 0);
    EXPECT_EQ(HostedWindow::frameFromText(frames.value(HostedWindow::frameKey(QStringLiteral("glimpso.settings"))).toString()),
              frame);
}

TEST(HostedWindowFrameText, ReadsBackWhatItWrites)
{
    const QRect frame(-120, 40, 800, 600);
    EXPECT_EQ(HostedWindow::frameText(frame), QStringLiteral("-120 40 800 600"));
    EXPECT_EQ(HostedWindow::frameFromText(HostedWindow::frameText(frame)), frame);
    EXPECT_FALSE(HostedWindow::frameFromText(QStringLiteral("1 2 3")).isValid());
    EXPECT_FALSE(HostedWindow::frameFromText(QStringLiteral("1 2 0 4")).isValid());
    EXPECT_FALSE(HostedWindow::frameFromText(QStringLiteral("a b c d")).isValid());
    EXPECT_FALSE(HostedWindow::frameFromText(QString()).isValid());
}
