#include "app/MenuBarController.h"

#include "app/TrayIcons.h"
#include "appbase/InProcessNotices.h"
#include "settings/AppSettings.h"

#include "EventLoopWait.h"
#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <QAction>
#include <QMenu>

#include <gtest/gtest.h>

namespace {

QString shortcutShown(const QAction *action)
{
    return action->text().section(u'\t', 1);
}

QStringList titles(const QMenu *menu)
{
    QStringList list;
    for (const QAction *action : menu->actions())
        list << (action->isSeparator() ? QStringLiteral("—") : action->text().section(u'\t', 0, 0));
    return list;
}

struct MenuBarControllerTest : ::testing::Test {
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    RecordingNotifier notifier;
    QStringList calls;
    bool recordingNow = false;
    bool trayShown = false;
    std::unique_ptr<MenuBarController> controller;

    MenuBarController &menuBar()
    {
        if (!controller) {
            MenuBarController::Actions actions;
            actions.captureRegion = [this](bool all, CaptureIntent intent) {
                calls << QStringLiteral("region all=%1 intent=%2").arg(all).arg(intent == CaptureIntent::text ? "text" : "image");
            };
            actions.captureWindow = [this] { calls << "window"; };
            actions.captureAfterDelay = [this](qint64 seconds) { calls << QStringLiteral("delay %1").arg(seconds); };
            actions.record = [this](CaptureKind kind, TrayActions::RecordingArea area) {
                calls << QStringLiteral("record %1 %2").arg(CaptureKinds::rawValue(kind)).arg(int(area));
            };
            actions.showHistory = [this] { calls << "history"; };
            actions.openFolder = [this] { calls << "folder"; };
            actions.openSettings = [this] { calls << "settings"; };
            actions.checkForUpdates = [this] { calls << "updates"; };
            actions.reportProblem = [this] { calls << "report"; };
            actions.quit = [this] { calls << "quit"; };
            actions.isRecording = [this] { return recordingNow; };
            actions.stopRecording = [this] { calls << "stop"; };
            controller = std::make_unique<MenuBarController>(std::move(actions), settings, notifier,
                                                             [this] { return trayShown; }, 50);
        }
        return *controller;
    }

    QAction *item(const QString &title, const QString &submenu = {})
    {
        QMenu *within = submenu.isEmpty() ? nullptr : menuBar().findItem(submenu)->menu();
        QAction *found = menuBar().findItem(title, within);
        EXPECT_NE(found, nullptr) << qPrintable(title);
        return found;
    }
};

TEST_F(MenuBarControllerTest, TheWholeTreeInItsOrder)
{
    QMenu *menu = menuBar().menu();
    EXPECT_EQ(titles(menu), (QStringList{"Screenshot", "Capture Text", "GIF", "Video", "—", "Capture History",
                                         "Edit Captures", "Open Screenshots Folder", "—", "Settings…",
                                         "Check for Updates…", "Report a Problem…", "—", "Quit glimpso"}));
    EXPECT_EQ(titles(item("Screenshot")->menu()),
              (QStringList{"Capture Region", "Capture Window", "Capture All Displays", "—", "Capture After Delay"}));
    EXPECT_EQ(titles(item("GIF")->menu()), (QStringList{"Record Region", "Record Window", "Record Screen"}));
    EXPECT_EQ(titles(item("Video")->menu()), (QStringList{"Record Region", "Record Window", "Record Screen"}));
}

TEST_F(MenuBarControllerTest, ItemsShowTheirShortcuts)
{
    EXPECT_EQ(shortcutShown(item("Capture Region")), "Ctrl+Shift+2");
    EXPECT_EQ(shortcutShown(item("Capture All Displays")), "Ctrl+Shift+1");
    EXPECT_EQ(shortcutShown(item("Capture Text")), settings.hotkeyText().displayString());
    EXPECT_EQ(shortcutShown(item("Capture History")), settings.hotkeyHistory().displayString());
    EXPECT_EQ(shortcutShown(item("Record Region", "GIF")), settings.hotkeyGIF().displayString());
    EXPECT_EQ(shortcutShown(item("Record Region", "Video")), settings.hotkeyVideo().displayString());
    EXPECT_EQ(shortcutShown(item("Settings…")), "Ctrl+,");
    EXPECT_EQ(shortcutShown(item("Quit glimpso")), "Ctrl+Q");
    EXPECT_EQ(shortcutShown(item("Open Screenshots Folder")), "");
}

TEST_F(MenuBarControllerTest, EveryItemHasItsIcon)
{
    const QList<QPair<QString, Lucide::Icon>> rows = {
        {"Screenshot", Lucide::scan},           {"Capture Region", Lucide::scan},
        {"Capture Window", Lucide::appWindow},  {"Capture All Displays", Lucide::monitor},
        {"Capture After Delay", Lucide::timer}, {"Capture Text", Lucide::scanText},
        {"GIF", Lucide::film},                  {"Video", Lucide::video},
        {"Capture History", Lucide::history},   {"Edit Captures", Lucide::squarePen},
        {"Open Screenshots Folder", Lucide::folderOpen}, {"Settings…", Lucide::settings},
        {"Check for Updates…", Lucide::refresh}, {"Report a Problem…", Lucide::messageWarning},
        {"Quit glimpso", Lucide::power},
    };
    const QColor ink = menuBar().menu()->palette().color(QPalette::WindowText);
    for (const auto &[title, icon] : rows) {
        const QImage shown = item(title)->icon().pixmap(15, 15).toImage().convertToFormat(QImage::Format_ARGB32);
        const QImage expected = Lucide(icon).icon(15, 1.75, ink).pixmap(15, 15).toImage().convertToFormat(QImage::Format_ARGB32);
        int inked = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                inked += qAlpha(shown.pixel(x, y)) > 0;
        EXPECT_GT(inked, 5) << qPrintable(title);
        EXPECT_EQ(shown, expected) << qPrintable(title);
    }
    EXPECT_EQ(item("Record Window", "GIF")->icon().pixmap(15, 15).toImage().convertToFormat(QImage::Format_ARGB32),
              Lucide(Lucide::appWindow).icon(15, 1.75, ink).pixmap(15, 15).toImage().convertToFormat(QImage::Format_ARGB32));
}

TEST_F(MenuBarControllerTest, AnUnassignedShortcutShowsNothing)
{
    EXPECT_EQ(shortcutShown(item("Record Window", "GIF")), "");
}

TEST_F(MenuBarControllerTest, AChangedShortcutIsShownAtOnce)
{
    menuBar();
    settings.hotkeyRegion.set(Hotkey{0, Hotkey::commandFlag | Hotkey::optionFlag});
    EXPECT_EQ(shortcutShown(item("Capture Region")), "Ctrl+Alt+A");
    settings.hotkeyRegion.set(Hotkey::unassigned());
    EXPECT_EQ(shortcutShown(item("Capture Region")), "");
    EXPECT_EQ(item("Capture Region")->text(), "Capture Region");
}

TEST_F(MenuBarControllerTest, EachItemDoesItsAction)
{
    const QList<QPair<QPair<QString, QString>, QString>> rows = {
        {{"Capture Region", ""}, "region all=0 intent=image"},
        {{"Capture Window", ""}, "window"},
        {{"Capture All Displays", ""}, "region all=1 intent=image"},
        {{"Capture Text", ""}, "region all=0 intent=text"},
        {{"Record Region", "GIF"}, "record gif 0"},
        {{"Record Window", "GIF"}, "record gif 1"},
        {{"Record Screen", "GIF"}, "record gif 2"},
        {{"Record Region", "Video"}, "record video 0"},
        {{"Record Window", "Video"}, "record video 1"},
        {{"Record Screen", "Video"}, "record video 2"},
        {{"Capture History", ""}, "history"},
        {{"Open Screenshots Folder", ""}, "folder"},
        {{"Settings…", ""}, "settings"},
        {{"Check for Updates…", ""}, "updates"},
        {{"Report a Problem…", ""}, "report"},
        {{"Quit glimpso", ""}, "quit"},
    };
    for (const auto &[where, expected] : rows) {
        calls.clear();
        item(where.first, where.second)->trigger();
        EXPECT_EQ(calls, QStringList{expected}) << qPrintable(where.first);
    }
}

TEST_F(MenuBarControllerTest, RecordingTagsOutsideTheRangeAreClamped)
{
    EXPECT_EQ(TrayActions::recordingArea(-1), TrayActions::RecordingArea::area);
    EXPECT_EQ(TrayActions::recordingArea(0), TrayActions::RecordingArea::area);
    EXPECT_EQ(TrayActions::recordingArea(1), TrayActions::RecordingArea::window);
    EXPECT_EQ(TrayActions::recordingArea(2), TrayActions::RecordingArea::screen);
    EXPECT_EQ(TrayActions::recordingArea(3), TrayActions::RecordingArea::screen);
    EXPECT_EQ(TrayActions::recordingArea(99), TrayActions::RecordingArea::screen);
}

TEST_F(MenuBarControllerTest, TheDelayMenuTicksTheStoredDelay)
{
    for (const qint64 stored : {3, 5, 10}) {
        settings.captureDelaySeconds.set(stored);
        menuBar().fillDelayMenu();
        const QList<QAction *> entries = menuBar().delayMenu()->actions();
        ASSERT_EQ(entries.size(), 3);
        EXPECT_EQ(entries[0]->text(), "3 Seconds");
        EXPECT_EQ(entries[1]->text(), "5 Seconds");
        EXPECT_EQ(entries[2]->text(), "10 Seconds");
        for (const QAction *entry : entries)
            EXPECT_EQ(entry->isChecked(), entry->data().toLongLong() == stored) << stored;
    }
}

TEST_F(MenuBarControllerTest, AStoredDelayOfAnotherValueTicksNothing)
{
    for (const qint64 stored : {0, 1, 4, 7, 60, -3}) {
        settings.captureDelaySeconds.set(stored);
        menuBar().fillDelayMenu();
        for (const QAction *entry : menuBar().delayMenu()->actions())
            EXPECT_FALSE(entry->isChecked()) << stored;
    }
}

TEST_F(MenuBarControllerTest, TheDelayMenuIsFilledAnewEachTimeItOpens)
{
    menuBar().fillDelayMenu();
    settings.captureDelaySeconds.set(10);
    Q_EMIT menuBar().delayMenu()->aboutToShow();
    EXPECT_EQ(menuBar().delayMenu()->actions().size(), 3);
    EXPECT_TRUE(menuBar().delayMenu()->actions()[2]->isChecked());
}

TEST_F(MenuBarControllerTest, ChoosingADelayStartsIt)
{
    menuBar().fillDelayMenu();
    menuBar().delayMenu()->actions()[0]->trigger();
    EXPECT_EQ(calls, QStringList{"delay 3"});
}

TEST_F(MenuBarControllerTest, TheEditMenuTicksTheModeAndStoresTheChoice)
{
    menuBar().fillEditMenu();
    QList<QAction *> entries = menuBar().editMenu()->actions();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0]->text(), "On Screen");
    EXPECT_EQ(entries[1]->text(), "In Editor Window");
    EXPECT_TRUE(entries[0]->isChecked());
    EXPECT_FALSE(entries[1]->isChecked());

    entries[1]->trigger();
    EXPECT_EQ(settings.editMode(), EditMode::afterCapture);
    menuBar().fillEditMenu();
    entries = menuBar().editMenu()->actions();
    EXPECT_FALSE(entries[0]->isChecked());
    EXPECT_TRUE(entries[1]->isChecked());
}

TEST_F(MenuBarControllerTest, WithoutATrayItSaysSoOnceAfterAWhileAndKeepsTheMenu)
{
    menuBar();
    EXPECT_TRUE(notifier.notices.isEmpty());
    ASSERT_TRUE(processEventsUntil([&] { return !notifier.notices.isEmpty(); }, 3000));
    processEventsUntil([] { return false; }, 200);
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "glimpso has no tray icon here");
    EXPECT_TRUE(notifier.notices[0].body.contains("glimpso --help"));
    EXPECT_NE(menuBar().menu(), nullptr);
    EXPECT_NE(menuBar().trayIcon(), nullptr);
}

TEST_F(MenuBarControllerTest, ATrayThatComesSoonIsNotMissed)
{
    menuBar();
    trayShown = true;
    processEventsUntil([] { return false; }, 300);
    EXPECT_TRUE(notifier.notices.isEmpty());
}

TEST_F(MenuBarControllerTest, WithATrayNothingIsSaid)
{
    trayShown = true;
    menuBar();
    processEventsUntil([] { return false; }, 300);
    EXPECT_TRUE(notifier.notices.isEmpty());
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "glimpso");
}

TEST_F(MenuBarControllerTest, DuringARecordingTheIconIsAStopButton)
{
    menuBar();
    recordingNow = true;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "Stop recording");
    EXPECT_EQ(menuBar().trayIcon()->contextMenu(), nullptr);
    recordingNow = false;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "glimpso");
    EXPECT_EQ(menuBar().trayIcon()->contextMenu(), menuBar().menu());
}

TEST_F(MenuBarControllerTest, TheTooltipSaysWhatGlimpsoIsBusyWithUnlessARecordingRuns)
{
    menuBar().setActivity("Uploading 42%");
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "glimpso — Uploading 42%");
    recordingNow = true;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    menuBar().setActivity("Uploading 50%");
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "Stop recording");
    recordingNow = false;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "glimpso — Uploading 50%");
    menuBar().setActivity(QString());
    EXPECT_EQ(menuBar().trayIcon()->toolTip(), "glimpso");
}

TEST_F(MenuBarControllerTest, DuringARecordingAClickStopsItAndOpensNoMenu)
{
    menuBar();
    recordingNow = true;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    EXPECT_TRUE(menuBar().showsRecording());

    menuBar().activated(QSystemTrayIcon::Trigger);

    EXPECT_EQ(calls, QStringList{"stop"});
    EXPECT_FALSE(menuBar().menu()->isVisible());
}

TEST_F(MenuBarControllerTest, AfterTheRecordingAClickOpensTheMenuAgain)
{
    menuBar();
    recordingNow = true;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    recordingNow = false;
    Q_EMIT InProcessNotices::instance().recordingChanged();
    EXPECT_FALSE(menuBar().showsRecording());

    menuBar().activated(QSystemTrayIcon::Trigger);

    EXPECT_TRUE(calls.isEmpty());
    EXPECT_TRUE(menuBar().menu()->isVisible());
    menuBar().menu()->close();
}

TEST_F(MenuBarControllerTest, ASecondClickSoonAfterTheFirstOpensTheMenuToo)
{
    menuBar().activated(QSystemTrayIcon::DoubleClick);
    EXPECT_TRUE(menuBar().menu()->isVisible());
    menuBar().menu()->close();
}

TEST_F(MenuBarControllerTest, AHotkeyClosesTheOpenMenu)
{
    menuBar().menu()->popup(QPoint(10, 10));
    ASSERT_TRUE(menuBar().menu()->isVisible());
    Q_EMIT InProcessNotices::instance().hotkeyWillFire();
    EXPECT_FALSE(menuBar().menu()->isVisible());
}

TEST_F(MenuBarControllerTest, AHotkeyLeavesTheMenuOpenWhenTheSettingSaysSo)
{
    settings.keepMenuOpenDuringCapture.set(true);
    menuBar().menu()->popup(QPoint(10, 10));
    Q_EMIT InProcessNotices::instance().hotkeyWillFire();
    EXPECT_TRUE(menuBar().menu()->isVisible());
    menuBar().menu()->close();
}

// The icons are drawn for every size a panel asks, and hold something.
TEST(TrayIcons, DrawnAtEachSize)
{
    for (const int pixels : TrayIcons::sizes) {
        for (const QImage &image : {TrayIcons::marquee(pixels, Qt::black), TrayIcons::recording(pixels, Qt::black)}) {
            EXPECT_EQ(image.size(), QSize(pixels, pixels));
            int inked = 0;
            for (int y = 0; y < pixels; ++y)
                for (int x = 0; x < pixels; ++x)
                    inked += qAlpha(image.pixel(x, y)) > 128;
            EXPECT_GT(inked, pixels) << pixels;
            EXPECT_LT(inked, pixels * pixels / 2) << pixels;
        }
    }
}

TEST(TrayIcons, TheMarqueeLeavesItsMiddleAndItsEdgeEmpty)
{
    const QImage image = TrayIcons::marquee(32, Qt::black);
    EXPECT_EQ(qAlpha(image.pixel(16, 16)), 0);
    EXPECT_EQ(qAlpha(image.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(image.pixel(31, 31)), 0);
    // A hollow handle on the top left corner, centred on (3.25, 3.25) of 18
    // units, 3.4 wide: its outline is inked, its middle is punched out of the
    // dashes that pass through it.
    int outline = 0;
    for (int y = 0; y <= 10; ++y)
        for (int x = 0; x <= 10; ++x)
            outline += qAlpha(image.pixel(x, y)) > 128;
    EXPECT_GT(outline, 0);
    EXPECT_EQ(qAlpha(image.pixel(5, 5)), 0);
    EXPECT_EQ(qAlpha(image.pixel(5, 6)), 0);
}

TEST(TrayIcons, TheRecordingIconHasARedDotInARing)
{
    const QImage image = TrayIcons::recording(32, Qt::white);
    const QColor middle = image.pixelColor(16, 16);
    EXPECT_EQ(middle.red(), 0xFF);
    EXPECT_LT(middle.green(), 0x50);
    // The ring, 2 units in at the left: white.
    const QColor ring = image.pixelColor(4, 16);
    EXPECT_GT(ring.alpha(), 128);
    EXPECT_GT(ring.green(), 200);
}

TEST(TrayIcons, InkFollowsThePanel)
{
    const QImage onDark = TrayIcons::marqueeIcon(true).pixmap(22, 22).toImage();
    const QImage onLight = TrayIcons::marqueeIcon(false).pixmap(22, 22).toImage();
    auto brightestInked = [](const QImage &image) {
        int best = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 200)
                    best = std::max(best, qGray(image.pixel(x, y)));
        return best;
    };
    EXPECT_GT(brightestInked(onDark), 200);
    EXPECT_LT(brightestInked(onLight), 50);
}

} // namespace
