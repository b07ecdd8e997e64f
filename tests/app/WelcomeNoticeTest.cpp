#include "app/WelcomeNotice.h"

#include "settings/AppSettings.h"

#include "RecordingNotifier.h"
#include "SettingsFakes.h"

#include <gtest/gtest.h>

namespace {

struct WelcomeNoticeTest : ::testing::Test {
    MemorySettingsStorage storage;
    InertLoginItem loginItem;
    AppSettings settings{storage, loginItem};
    RecordingNotifier notifier;
};

TEST_F(WelcomeNoticeTest, TheFirstLaunchSaysWhichShortcutsCapture)
{
    EXPECT_TRUE(WelcomeNotice::showOnce(storage, settings, notifier));
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, "glimpso is ready");
    EXPECT_EQ(notifier.notices[0].body, "Ctrl+Shift+2 to capture · Ctrl+Shift+1 for all displays · change in Settings");
    EXPECT_EQ(notifier.notices[0].duration, 6.0);
    EXPECT_EQ(notifier.notices[0].action, NoticeAction::none());
}

TEST_F(WelcomeNoticeTest, ShowsAtMostOnce)
{
    WelcomeNotice::showOnce(storage, settings, notifier);
    EXPECT_FALSE(WelcomeNotice::showOnce(storage, settings, notifier));
    EXPECT_EQ(notifier.notices.size(), 1);
    EXPECT_TRUE(storage.value("settings.welcomeShown").toBool());
}

TEST_F(WelcomeNoticeTest, TheKeyIsSetBeforeTheNoticeGoesOut)
{
    struct CheckingNotifier : RecordingNotifier {
        MemorySettingsStorage *storage = nullptr;
        bool keySetAtPost = false;
        void post(const QString &title, const QString &body, double duration, const NoticeAction &action) override
        {
            keySetAtPost = storage->value("settings.welcomeShown").toBool();
            RecordingNotifier::post(title, body, duration, action);
        }
    } checking;
    checking.storage = &storage;
    WelcomeNotice::showOnce(storage, settings, checking);
    EXPECT_TRUE(checking.keySetAtPost);
}

TEST_F(WelcomeNoticeTest, ChangedAndUnassignedShortcutsShowAsTheyAre)
{
    settings.hotkeyRegion.set(Hotkey{0, Hotkey::commandFlag | Hotkey::optionFlag});
    settings.hotkeyAllDisplays.set(Hotkey::unassigned());
    WelcomeNotice::showOnce(storage, settings, notifier);
    EXPECT_EQ(notifier.notices[0].body, "Ctrl+Alt+A to capture · — for all displays · change in Settings");
}

TEST_F(WelcomeNoticeTest, AStoredFalseStillShowsIt)
{
    storage.setValue("settings.welcomeShown", false);
    EXPECT_TRUE(WelcomeNotice::showOnce(storage, settings, notifier));
}

} // namespace
