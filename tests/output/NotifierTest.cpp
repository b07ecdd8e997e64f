#include "output/Notifier.h"

#include "appbase/AppError.h"
#include "settings/AppSettings.h"

#include "NoticeFakes.h"
#include "SettingsFakes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Status = NotificationBackend::SendResult::Status;
using Kind = NoticeAction::Kind;

struct NotifierTest : ::testing::Test, NotifierWithFakes {

    QList<SettingsTab> settingsShown;
    int updatesShown = 0;
    int reportsShown = 0;

    void SetUp() override
    {
        notifier.routes.showSettings = [this](SettingsTab tab) { settingsShown.append(tab); };
        notifier.routes.showUpdates = [this] { ++updatesShown; };
        notifier.routes.reportProblem = [this] { ++reportsShown; };
    }
};

struct ErrorRow {
    AppError error;
    QString title;
    NoticeAction action;
};

TEST_F(NotifierTest, EachAppErrorCaseHasItsTitleMessageAndAction)
{
    const QList<ErrorRow> rows = {
        {AppError::captureFailed("no pixels"), "glimpso couldn't do that", NoticeAction::none()},
        {AppError::fileIOFailed("The disk is full."), "The capture couldn't be saved", NoticeAction::none()},
        {AppError::uploadFailed("HTTP 403: Access Denied"), "Upload didn't work", NoticeAction::showSettings(SettingsTab::cloud)},
        {AppError::saveFolderUnavailable("/media/usb/Shots"), "glimpso can't save there", NoticeAction::showSettings(SettingsTab::general)},
        {AppError::consentRevoked(), "glimpso needs Screen Recording permission", NoticeAction::none()},
        {AppError::displayNotFound(), "glimpso couldn't do that", NoticeAction::none()},
        {AppError::croppingFailed(), "glimpso couldn't do that", NoticeAction::none()},
        {AppError::noDisplayAtRegion(), "glimpso couldn't do that", NoticeAction::none()},
        {AppError::uploadNotConfigured(), "Upload didn't work", NoticeAction::showSettings(SettingsTab::cloud)},
        {AppError::keychainDenied(), "Upload didn't work", NoticeAction::showSettings(SettingsTab::cloud)},
    };
    ASSERT_EQ(rows.size(), int(AppError::Case::keychainDenied) + 1) << "a case of AppError has no row here";
    for (const ErrorRow &row : rows) {
        const Notifier::ErrorNotice notice = Notifier::errorNotice(row.error);
        EXPECT_EQ(notice.title, row.title) << qPrintable(row.error.caseName());
        EXPECT_EQ(notice.body, row.error.errorDescription()) << qPrintable(row.error.caseName());
        EXPECT_EQ(notice.action, row.action) << qPrintable(row.error.caseName());
    }
}

TEST_F(NotifierTest, SaveFolderErrorNamesTheFolder)
{
    const Notifier::ErrorNotice notice = Notifier::errorNotice(AppError::saveFolderUnavailable("/media/usb/Shots"));
    EXPECT_TRUE(notice.body.startsWith(QStringLiteral("glimpso can't save to “Shots”."))) << qPrintable(notice.body);
}

TEST_F(NotifierTest, AnErrorOfAnotherKindCouldNotBeDone)
{
    const Notifier::ErrorNotice notice = Notifier::errorNotice(std::runtime_error("No such file or directory"));
    EXPECT_EQ(notice.title, "glimpso couldn't do that");
    EXPECT_EQ(notice.body, "No such file or directory");
    EXPECT_EQ(notice.action, NoticeAction::none());
}

TEST_F(NotifierTest, AnAppErrorSeenAsAPlainExceptionKeepsItsCase)
{
    const std::exception &plain = static_cast<const std::exception &>(AppError::uploadNotConfigured());
    EXPECT_EQ(Notifier::errorNotice(plain).title, "Upload didn't work");
}

TEST_F(NotifierTest, ErrorPostsForFiveSecondsAndRecordsTitleAndMessage)
{
    QStringList recorded;
    notifier.recordError = [&](const QString &line) { recorded << line; };
    server.available = false;
    server.answers.push_back({Status::noServer, 0, "no server"});

    notifier.error(AppError::fileIOFailed("The disk is full."));

    ASSERT_EQ(toast.shown.size(), 1);
    EXPECT_EQ(toast.shown[0].title, "The capture couldn't be saved");
    EXPECT_EQ(toast.shown[0].body, "File write failed: The disk is full.");
    EXPECT_EQ(toast.shown[0].seconds, 5.0);
    EXPECT_EQ(recorded, QStringList{"The capture couldn't be saved: File write failed: The disk is full."});
}

TEST_F(NotifierTest, UserInfoOfEachAction)
{
    EXPECT_EQ(Notifier::userInfo(NoticeAction::reveal("/p/a.png")), (QVariantMap{{"reveal", "/p/a.png"}}));
    EXPECT_EQ(Notifier::userInfo(NoticeAction::open("https://example.com/a b")),
              (QVariantMap{{"open", "https://example.com/a%20b"}}));
    EXPECT_EQ(Notifier::userInfo(NoticeAction::showSettings(SettingsTab::cloud)), (QVariantMap{{"settings", "cloud"}}));
    EXPECT_EQ(Notifier::userInfo(NoticeAction::none()), QVariantMap());
    EXPECT_EQ(Notifier::userInfo(NoticeAction::showUpdates()), (QVariantMap{{"updates", true}}));
    EXPECT_EQ(Notifier::userInfo(NoticeAction::reportProblem()), (QVariantMap{{"report", true}}));
}

TEST_F(NotifierTest, OnlyAFileToRevealHasTheCaptureFileCategory)
{
    EXPECT_EQ(Notifier::category(NoticeAction::reveal("/p/a.png")), "capture-file");
    for (const NoticeAction &action : {NoticeAction::open("https://x"), NoticeAction::showSettings(SettingsTab::general),
                                       NoticeAction::none(), NoticeAction::showUpdates(), NoticeAction::reportProblem()})
        EXPECT_TRUE(Notifier::category(action).isEmpty()) << int(action.kind);
}

TEST_F(NotifierTest, ACaptureFileNotificationHasOpenAndShowInFolder)
{
    const auto notification = Notifier::notification("Screenshot saved", "a.png", NoticeAction::reveal("/p/a.png"), false);
    const QList<QPair<QString, QString>> expected = {
        {"default", ""}, {"open-file", "Open"}, {"reveal-file", "Show in Folder"}};
    EXPECT_EQ(notification.buttons, expected);
    EXPECT_EQ(notification.title, "Screenshot saved");
    EXPECT_EQ(notification.body, "a.png");
}

TEST_F(NotifierTest, OtherNotificationsAreClickedWholeOrNotAtAll)
{
    const QList<QPair<QString, QString>> whole = {{"default", ""}};
    EXPECT_EQ(Notifier::notification("t", "b", NoticeAction::open("https://x"), false).buttons, whole);
    EXPECT_EQ(Notifier::notification("t", "b", NoticeAction::reportProblem(), false).buttons, whole);
    EXPECT_TRUE(Notifier::notification("t", "b", NoticeAction::none(), false).buttons.isEmpty());
}

TEST_F(NotifierTest, TheSoundFollowsTheSetting)
{
    notifier.post("Copied", "a.png", 2.0, NoticeAction::none());
    settings.notificationSound.set(true);
    notifier.post("Copied", "b.png", 2.0, NoticeAction::none());
    ASSERT_EQ(server.sent.size(), 2);
    EXPECT_FALSE(server.sent[0].sound);
    EXPECT_TRUE(server.sent[1].sound);
}

TEST_F(NotifierTest, ASentNotificationShowsNoToast)
{
    notifier.post("Screenshot saved", "a.png", 2.0, NoticeAction::reveal("/p/a.png"));
    EXPECT_EQ(server.sent.size(), 1);
    EXPECT_TRUE(toast.shown.isEmpty());
}

TEST_F(NotifierTest, WithoutAServerAPlainNoticeIsAToastOfItsOwnLengthThatLetsClicksThrough)
{
    server.answers.push_back({Status::noServer, 0, "ServiceUnknown"});
    notifier.post("Copied text", "hello", 2.0, NoticeAction::none());
    ASSERT_EQ(toast.shown.size(), 1);
    EXPECT_EQ(toast.shown[0].title, "Copied text");
    EXPECT_EQ(toast.shown[0].body, "hello");
    EXPECT_EQ(toast.shown[0].seconds, 2.0);
    EXPECT_FALSE(toast.shown[0].onClick);
}

TEST_F(NotifierTest, WithoutAServerAClickableNoticeStandsAtLeastFourSeconds)
{
    for (const NoticeAction &action : {NoticeAction::reveal("/p/a.png"), NoticeAction::reportProblem(),
                                       NoticeAction::showUpdates(), NoticeAction::open("https://x")}) {
        toast.shown.clear();
        server.answers.push_back({Status::noServer, 0, "ServiceUnknown"});
        notifier.post("t", "b", 2.0, action);
        ASSERT_EQ(toast.shown.size(), 1);
        EXPECT_EQ(toast.shown[0].seconds, 4.0) << int(action.kind);
        EXPECT_TRUE(toast.shown[0].onClick) << int(action.kind);
    }
    toast.shown.clear();
    server.answers.push_back({Status::noServer, 0, "ServiceUnknown"});
    notifier.post("t", "b", 6.0, NoticeAction::reveal("/p/a.png"));
    EXPECT_EQ(toast.shown[0].seconds, 6.0);
}

TEST_F(NotifierTest, ARefusedNotificationBecomesAToast)
{
    server.answers.push_back({Status::failed, 0, "org.freedesktop.DBus.Error.AccessDenied: no"});
    notifier.post("Uploaded — link copied", "https://x/a.png", 2.0, NoticeAction::open("https://x/a.png"));
    ASSERT_EQ(toast.shown.size(), 1);
    EXPECT_EQ(toast.shown[0].title, "Uploaded — link copied");
}

TEST_F(NotifierTest, ClickingTheToastOfAReportProblemNoticeOpensTheReport)
{
    server.answers.push_back({Status::noServer, 0, "ServiceUnknown"});
    notifier.post("glimpso quit unexpectedly", "Click to tell us about it.", 6.0, NoticeAction::reportProblem());
    ASSERT_EQ(toast.shown.size(), 1);
    toast.shown[0].onClick();
    EXPECT_EQ(reportsShown, 1);
}

TEST_F(NotifierTest, ClickingTheSystemNotificationOfAReportProblemNoticeDoesNothing)
{
    notifier.post("glimpso quit unexpectedly", "Click to tell us about it.", 6.0, NoticeAction::reportProblem());
    server.click(1, "default");
    EXPECT_EQ(reportsShown, 0);
}

TEST_F(NotifierTest, ClickingASystemNotificationPerformsItsAction)
{
    notifier.post("Screenshot saved", "a.png", 2.0, NoticeAction::reveal("/p/a.png"));
    notifier.post("Upload didn't work", "HTTP 403", 5.0, NoticeAction::showSettings(SettingsTab::cloud));
    server.click(1, "default");
    server.click(2, "default");
    EXPECT_EQ(desktop.revealed, QStringList{"/p/a.png"});
    EXPECT_EQ(settingsShown, QList<SettingsTab>{SettingsTab::cloud});
}

TEST_F(NotifierTest, AClosedOrUnknownNotificationIsNotActedOn)
{
    notifier.post("Screenshot saved", "a.png", 2.0, NoticeAction::reveal("/p/a.png"));
    server.close(1);
    server.click(1, "default");
    server.click(7, "default");
    EXPECT_TRUE(desktop.revealed.isEmpty());
}

TEST_F(NotifierTest, OnlyFourKeysOfAClickedNotificationArePassedOn)
{
    const QVariantMap all{{"reveal", "/a"}, {"open", "https://x"}, {"updates", true}, {"settings", "cloud"},
                          {"report", true}, {"other", 1}};
    EXPECT_EQ(Notifier::clickedNotificationInfo(all),
              (QVariantMap{{"reveal", "/a"}, {"open", "https://x"}, {"updates", true}, {"settings", "cloud"}}));
}

TEST_F(NotifierTest, PerformRevealShowsTheFileForTheDefaultClickAndShowInFolder)
{
    notifier.perform({{"reveal", "/p/a.png"}}, QString());
    notifier.perform({{"reveal", "/p/a.png"}}, "default");
    notifier.perform({{"reveal", "/p/a.png"}}, "reveal-file");
    EXPECT_EQ(desktop.revealed, (QStringList{"/p/a.png", "/p/a.png", "/p/a.png"}));
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(NotifierTest, PerformOpenFileOpensTheFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("glimpso-2026-01-01-120000.png");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("png");
    file.close();

    notifier.perform({{"reveal", path}}, "open-file");

    EXPECT_EQ(desktop.opened, QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_TRUE(desktop.revealed.isEmpty());
}

TEST_F(NotifierTest, PerformOpenFileOfAMovedFileDoesNothing)
{
    QTemporaryDir dir;
    notifier.perform({{"reveal", dir.filePath("gone.png")}}, "open-file");
    EXPECT_TRUE(desktop.opened.isEmpty());
    EXPECT_TRUE(desktop.revealed.isEmpty());
}

TEST_F(NotifierTest, PerformOpenOpensALinkThatParses)
{
    notifier.perform({{"open", "https://example.com/a.png"}}, QString());
    notifier.perform({{"open", "not a link at all"}}, QString());
    EXPECT_EQ(desktop.opened, QList<QUrl>{QUrl("https://example.com/a.png")});
}

TEST_F(NotifierTest, PerformUpdatesSettingsAndReport)
{
    notifier.perform({{"updates", true}}, QString());
    notifier.perform({{"settings", "shortcuts"}}, QString());
    notifier.perform({{"settings", "nowhere"}}, QString());
    notifier.perform({{"report", true}}, QString());
    EXPECT_EQ(updatesShown, 1);
    EXPECT_EQ(settingsShown, QList<SettingsTab>{SettingsTab::shortcuts});
    EXPECT_EQ(reportsShown, 1);
}

TEST_F(NotifierTest, PerformReadsTheKeysInOrderAndStopsAtTheFirst)
{
    notifier.perform({{"open", "https://example.com"}, {"updates", true}, {"report", true}}, QString());
    notifier.perform({{"updates", true}, {"settings", "cloud"}}, QString());
    notifier.perform({{"settings", "cloud"}, {"report", true}}, QString());
    EXPECT_EQ(desktop.opened.size(), 1);
    EXPECT_EQ(updatesShown, 1);
    EXPECT_EQ(settingsShown.size(), 1);
    EXPECT_EQ(reportsShown, 0);
}

TEST_F(NotifierTest, PerformOfNothingDoesNothing)
{
    notifier.perform(QVariantMap(), QString());
    EXPECT_TRUE(desktop.opened.isEmpty());
    EXPECT_TRUE(desktop.revealed.isEmpty());
    EXPECT_EQ(updatesShown + reportsShown + int(settingsShown.size()), 0);
}

TEST_F(NotifierTest, AMissingWindowMakesTheClickDoNothing)
{
    notifier.routes = {};
    notifier.perform({{"updates", true}}, QString());
    notifier.perform({{"settings", "cloud"}}, QString());
    notifier.perform({{"report", true}}, QString());
    SUCCEED();
}

TEST_F(NotifierTest, APostClearsAStandingProgressToast)
{
    notifier.showProgress("Uploading…", "a.png", 600.0);
    ASSERT_TRUE(notifier.showingProgress());
    ASSERT_EQ(toast.shown.size(), 1);

    notifier.post("Uploaded — link copied", "https://x/a.png", 2.0, NoticeAction::none());

    EXPECT_FALSE(notifier.showingProgress());
    EXPECT_EQ(toast.dismissals, 1);
}

TEST_F(NotifierTest, AnErrorClearsAStandingProgressToast)
{
    notifier.showProgress("Uploading…", "a.png", 600.0);
    notifier.error(AppError::uploadFailed("HTTP 500"));
    EXPECT_FALSE(notifier.showingProgress());
    EXPECT_EQ(toast.dismissals, 1);
}

TEST_F(NotifierTest, ProgressMovesOnInPlaceOnceItStands)
{
    notifier.changeProgress("Uploading… 0%", "a.png", 600.0);
    ASSERT_TRUE(notifier.showingProgress());
    notifier.changeProgress("Uploading… 40%", "a.png · 4 MB of 10 MB", 600.0);
    ASSERT_EQ(toast.shown.size(), 1);
    EXPECT_EQ(toast.changes, 1);
    EXPECT_EQ(toast.shown.first().title, "Uploading… 40%");
    EXPECT_EQ(toast.shown.first().body, "a.png · 4 MB of 10 MB");
}

TEST_F(NotifierTest, APostWithoutProgressLeavesTheToastAlone)
{
    notifier.post("Copied", "a.png", 2.0, NoticeAction::none());
    notifier.clearProgress();
    EXPECT_EQ(toast.dismissals, 0);
}

TEST_F(NotifierTest, NotificationsOffAreExplainedOnceEver)
{
    int explained = 0;
    notifier.onNotificationsOff = [&] {
        // The key is set before the explanation shows.
        EXPECT_TRUE(storage.value(Notifier::deniedNoticeShownKey).toBool());
        ++explained;
    };
    server.available = false;

    notifier.prepare();
    notifier.prepare();
    Notifier nextLaunch{settings, storage, server, toast, desktop};
    nextLaunch.onNotificationsOff = [&] { ++explained; };
    nextLaunch.prepare();

    EXPECT_EQ(explained, 1);
}

TEST_F(NotifierTest, NotificationsOnAreNotExplained)
{
    int explained = 0;
    notifier.onNotificationsOff = [&] { ++explained; };
    notifier.prepare();
    EXPECT_EQ(explained, 0);
    EXPECT_FALSE(storage.contains(Notifier::deniedNoticeShownKey));
}

TEST_F(NotifierTest, APostNeverExplainsThatNotificationsAreOff)
{
    int explained = 0;
    notifier.onNotificationsOff = [&] { ++explained; };
    server.answers.push_back({Status::noServer, 0, "ServiceUnknown"});
    notifier.post("Copied", "a.png", 2.0, NoticeAction::none());
    EXPECT_EQ(explained, 0);
    EXPECT_EQ(server.probes, 0);
}

} // namespace
