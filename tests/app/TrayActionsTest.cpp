#include "app/TrayActions.h"

#include "app/CaptureCoordinator.h"
#include "output/OutputService.h"
#include "settings/AppSettings.h"

#include "NoticeFakes.h"
#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct NoCapture : CaptureServicing {
    void releaseKeptMemory() override {}
    QFuture<QImage> captureDisplay(std::uint32_t) override { return QtFuture::makeReadyFuture(QImage()); }
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t, double) override
    {
        return QtFuture::makeReadyFuture(QImage());
    }
};

struct OneScreen : ScreenList {
    QList<Screen> screens() const override { return {Screen{1, QRectF(0, 0, 100, 50), 1.0}}; }
    std::optional<int> mainIndex() const override { return 0; }
    QPointF mouseLocation() const override { return {}; }
    bool hasCaptureAccess() const override { return true; }
    void requestCaptureAccess() override {}
};

struct NoFocus : FocusKeeper {
    std::optional<Window> activeForeignWindow() override { return std::nullopt; }
    bool activate(const Window &) override { return true; }
};

struct TrayActionsTest : ::testing::Test {
    QTemporaryDir dir;
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    RecordingNotifier notifier;
    OutputService output{settings, notifier};
    NoCapture capture;
    OneScreen screens;
    NoFocus focus;
    FakeDesktopOpener desktop;
    CommandRouter router;
    QList<qint64> delays;
    int picks = 0;
    bool withPicker = false;
    std::unique_ptr<CaptureCoordinator> coordinator;
    std::unique_ptr<TrayActions> actions;

    CommandRouter::Reply run(const QStringList &arguments)
    {
        if (!actions) {
            CaptureCoordinator::Parts parts{settings, capture, output, notifier, screens, focus};
            parts.after = [this](qint64 seconds, std::function<void()>) { delays << seconds; };
            if (withPicker) {
                parts.pickWindow = [this](CaptureCoordinator::PickCompletion) { ++picks; };
                parts.captureWindow = [](std::uint32_t, const CaptureCoordinator::WindowCaptureOptions &, bool) {
                    return QtFuture::makeReadyFuture(RegionCompositor::Composed{});
                };
            }
            coordinator = std::make_unique<CaptureCoordinator>(std::move(parts));
            actions = std::make_unique<TrayActions>(*coordinator, settings, notifier, desktop);
            actions->registerCommands(router);
        }
        return router.handle(arguments);
    }

    void expectNotAvailable(const CommandRouter::Reply &reply, const QString &what)
    {
        EXPECT_EQ(reply.status, 1);
        EXPECT_EQ(reply.error, QStringLiteral("glimpso: %1 is not available yet").arg(what.toLower()));
        ASSERT_FALSE(notifier.notices.isEmpty());
        EXPECT_EQ(notifier.notices.last().title, "Not available yet");
        EXPECT_EQ(notifier.notices.last().body, what + " is not in this version of glimpso yet.");
    }
};

TEST_F(TrayActionsTest, DelayStoresTheSecondsAndStartsTheCountdown)
{
    const CommandRouter::Reply reply = run({"delay", "7"});
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(settings.captureDelaySeconds(), 7);
    EXPECT_EQ(delays, QList<qint64>{7});
}

TEST_F(TrayActionsTest, DelayRefusesWhatIsNotAWholeNumberOfSeconds)
{
    for (const QString bad : {"0", "-3", "3601", "2.5", "five", ""}) {
        const CommandRouter::Reply reply = run({"delay", bad});
        EXPECT_EQ(reply.status, 2) << qPrintable(bad);
        EXPECT_TRUE(reply.error.startsWith("glimpso: usage: glimpso delay N")) << qPrintable(bad);
    }
    EXPECT_TRUE(delays.isEmpty());
    EXPECT_EQ(settings.captureDelaySeconds(), 5);
}

TEST_F(TrayActionsTest, ParseDelayBounds)
{
    EXPECT_EQ(TrayActions::parseDelay("1"), 1);
    EXPECT_EQ(TrayActions::parseDelay("3600"), 3600);
    EXPECT_EQ(TrayActions::parseDelay("0"), std::nullopt);
    EXPECT_EQ(TrayActions::parseDelay("3601"), std::nullopt);
}

TEST_F(TrayActionsTest, WindowWithoutAPickerIsNotAvailableYet)
{
    expectNotAvailable(run({"window"}), "Window capture");
}

TEST_F(TrayActionsTest, WindowWithAPickerStartsThePick)
{
    withPicker = true;
    EXPECT_EQ(run({"window"}).status, 0);
    EXPECT_EQ(picks, 1);
}

TEST_F(TrayActionsTest, OpenFolderMakesTheFolderAndOpensIt)
{
    const QString folder = dir.filePath("Pictures/Screenshots");
    settings.setSaveDirectory(folder);
    const CommandRouter::Reply reply = run({"open-folder"});
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.output, folder + "\n");
    EXPECT_TRUE(QDir(folder).exists());
    EXPECT_EQ(desktop.opened, QList<QUrl>{QUrl::fromLocalFile(folder)});
}

TEST_F(TrayActionsTest, OpenFolderThatCannotBeMadeIsAnError)
{
    QFile blocker(dir.filePath("blocker"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    settings.setSaveDirectory(dir.filePath("blocker/Shots"));
    const CommandRouter::Reply reply = run({"open-folder"});
    EXPECT_EQ(reply.status, 1);
    ASSERT_EQ(notifier.errors.size(), 1);
    EXPECT_EQ(notifier.errors[0].kind(), AppError::Case::saveFolderUnavailable);
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(TrayActionsTest, WindowsNotInThisBuildSaySo)
{
    expectNotAvailable(run({"history"}), "The history panel");
    expectNotAvailable(run({"settings"}), "The settings window");
    expectNotAvailable(run({"settings", "cloud"}), "The settings window");
    expectNotAvailable(run({"updates"}), "Checking for updates");
    expectNotAvailable(run({"report"}), "Reporting a problem");
    run({});
    // Without a recorder the record entries say so too.
    expectNotAvailable(actions->record(CaptureKind::gif, TrayActions::RecordingArea::area), "GIF recording");
    expectNotAvailable(actions->record(CaptureKind::video, TrayActions::RecordingArea::screen), "Video recording");
}

TEST_F(TrayActionsTest, WrongArgumentsAreUsageErrors)
{
    EXPECT_EQ(run({"settings", "nowhere"}).status, 2);
    EXPECT_EQ(run({"history", "--json"}).status, 2);
    EXPECT_EQ(run({"edit-mode", "sideways"}).status, 2);
    EXPECT_TRUE(notifier.notices.isEmpty());
}

TEST_F(TrayActionsTest, StopWithoutARecordingSaysSo)
{
    run({});
    const CommandRouter::Reply reply = actions->stopRecording();
    EXPECT_EQ(reply.status, 1);
    EXPECT_EQ(reply.error, "glimpso: no recording is running");
}

TEST_F(TrayActionsTest, EditModePrintsAndStores)
{
    EXPECT_EQ(run({"edit-mode"}).output, "onScreen\n");
    EXPECT_EQ(run({"edit-mode", "afterCapture"}).status, 0);
    EXPECT_EQ(settings.editMode(), EditMode::afterCapture);
    EXPECT_EQ(run({"edit-mode"}).output, "afterCapture\n");
}

TEST_F(TrayActionsTest, RecordingAreaWords)
{
    EXPECT_EQ(TrayActions::recordingArea(QStringLiteral("area")), TrayActions::RecordingArea::area);
    EXPECT_EQ(TrayActions::recordingArea(QStringLiteral("window")), TrayActions::RecordingArea::window);
    EXPECT_EQ(TrayActions::recordingArea(QStringLiteral("screen")), TrayActions::RecordingArea::screen);
    EXPECT_EQ(TrayActions::recordingArea(QStringLiteral("all")), std::nullopt);
}

} // namespace
