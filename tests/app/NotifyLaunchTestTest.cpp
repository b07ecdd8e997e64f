#include "app/NotifyLaunchTest.h"

#include "output/Notifier.h"
#include "settings/AppSettings.h"

#include "NoticeFakes.h"
#include "SettingsFakes.h"

#include <gtest/gtest.h>

namespace {

struct NotifyLaunchTestTest : ::testing::Test, NotifierWithFakes {
};

TEST_F(NotifyLaunchTestTest, EachErrorWordShowsItsFailure)
{
    const QList<QPair<QString, QString>> rows = {
        {"error:consent", "glimpso needs Screen Recording permission"},
        {"error:upload", "Upload didn't work"},
        {"error:folder", "glimpso can't save there"},
        {"error:io", "The capture couldn't be saved"},
    };
    for (const auto &[value, title] : rows) {
        server.sent.clear();
        EXPECT_TRUE(NotifyLaunchTest::run(value, notifier)) << qPrintable(value);
        ASSERT_EQ(server.sent.size(), 1) << qPrintable(value);
        EXPECT_EQ(server.sent[0].title, title);
    }
    EXPECT_EQ(server.sent[0].body, "File write failed: The disk is full.");
}

TEST_F(NotifyLaunchTestTest, AClickOpensThatSettingsPage)
{
    QList<SettingsTab> shown;
    notifier.routes.showSettings = [&](SettingsTab tab) { shown << tab; };
    EXPECT_TRUE(NotifyLaunchTest::run("click:shortcuts", notifier));
    EXPECT_EQ(shown, QList<SettingsTab>{SettingsTab::shortcuts});
}

TEST_F(NotifyLaunchTestTest, OtherWordsDoNothing)
{
    EXPECT_FALSE(NotifyLaunchTest::run("error:everything", notifier));
    EXPECT_FALSE(NotifyLaunchTest::run("shout:loudly", notifier));
    EXPECT_TRUE(server.sent.isEmpty());
}

} // namespace
