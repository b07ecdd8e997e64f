#include "app/LaunchEnvironment.h"

#include <QMap>
#include <gtest/gtest.h>

namespace {

using LaunchEnvironment::Feature;

std::vector<LaunchEnvironment::Request> readFrom(const QMap<QString, QString> &environment)
{
    return LaunchEnvironment::read([&](const char *name) -> std::optional<QString> {
        const auto it = environment.find(QLatin1String(name));
        if (it == environment.end())
            return std::nullopt;
        return *it;
    });
}

TEST(LaunchEnvironment, NothingSetDoesNothing)
{
    EXPECT_TRUE(readFrom({}).empty());
}

TEST(LaunchEnvironment, EachSetVariableActsInTheTablesOrder)
{
    const auto requests = readFrom({{"GLIMPSO_SHOW_HISTORY", "1"},
                                    {"GLIMPSO_OPEN_EDITOR", "/tmp/a.png"},
                                    {"GLIMPSO_SHOW_SETTINGS", "general"},
                                    {"GLIMPSO_TEST_TRIM", "/tmp/v.mp4"}});
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[0].feature, Feature::openEditor);
    EXPECT_EQ(requests[0].value, "/tmp/a.png");
    EXPECT_EQ(requests[1].feature, Feature::testTrim);
    EXPECT_EQ(requests[2].feature, Feature::showSettings);
    EXPECT_EQ(requests[3].feature, Feature::showHistory);
}

TEST(LaunchEnvironment, RecordWithoutItsReportPathDoesNothing)
{
    EXPECT_TRUE(readFrom({{"GLIMPSO_TEST_RECORD", "gif:3"}}).empty());
}

TEST(LaunchEnvironment, RecordWithItsReportPathCarriesBoth)
{
    const auto requests =
        readFrom({{"GLIMPSO_TEST_RECORD", "gif:3"}, {"GLIMPSO_TEST_RECORD_REPORT", "/tmp/report.txt"}});
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].feature, Feature::testRecord);
    EXPECT_EQ(requests[0].value, "gif:3");
    EXPECT_EQ(requests[0].partner, "/tmp/report.txt");
}

TEST(LaunchEnvironment, WindowTestNeedsItsOutputPath)
{
    EXPECT_TRUE(readFrom({{"GLIMPSO_TEST_WINDOW", "123"}}).empty());
    EXPECT_TRUE(readFrom({{"GLIMPSO_TEST_WINDOW_OUT", "/tmp/w.png"}}).empty());
    EXPECT_EQ(readFrom({{"GLIMPSO_TEST_WINDOW", ""}, {"GLIMPSO_TEST_WINDOW_OUT", "/tmp/w.png"}}).size(), 1u);
}

TEST(LaunchEnvironment, VariableNamesFollowTheFeatures)
{
    EXPECT_STREQ(LaunchEnvironment::variableName(Feature::testNotify), "GLIMPSO_TEST_NOTIFY");
    EXPECT_STREQ(LaunchEnvironment::variableName(Feature::showReport), "GLIMPSO_SHOW_REPORT");
}

} // namespace
