#include "app/CommandClient.h"

#include "FakeInstanceChannel.h"

#include <gtest/gtest.h>

namespace {

struct CommandClientTest : ::testing::Test {
    FakeInstanceChannel channel;
    int starts = 0;
    bool startSucceeds = true;
    CommandClient client{channel, [this] {
                             ++starts;
                             return startSucceeds;
                         }};
    const CommandLine::Verb &verb(const char *name) { return *CommandLine::findVerb(name); }
};

TEST_F(CommandClientTest, RunningCopyAnswersAndItsAnswerIsPassedOn)
{
    channel.running = {":1.4"};
    channel.nextReply = InstanceChannel::Reply{0, "/tmp/x.conf\n", {}};
    const auto outcome = client.run(verb("settings-path"), {"settings-path"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "/tmp/x.conf\n");
    EXPECT_EQ(starts, 0);
    EXPECT_EQ(channel.lastCommand, QStringList{"settings-path"});
}

TEST_F(CommandClientTest, FailureOfTheCopyBecomesTheExitCodeAndMessage)
{
    channel.running = {":1.4"};
    channel.nextReply = InstanceChannel::Reply{3, {}, "glimpso: no such display"};
    const auto outcome = client.run(verb("settings-path"), {"settings-path"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.error, "glimpso: no such display");
}

TEST_F(CommandClientTest, QuitWithNothingRunningStartsNothing)
{
    const auto outcome = client.run(verb("quit"), {"quit"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "glimpso is not running");
    EXPECT_EQ(starts, 0);
    EXPECT_FALSE(channel.log.contains("send:quit"));
}

TEST_F(CommandClientTest, VerbWithNothingRunningStartsACopyWaitsForItAndSends)
{
    channel.runningLater = {{}, {}, {":1.9"}};
    channel.nextReply = InstanceChannel::Reply{0, "done", {}};
    const auto outcome = client.run(verb("settings-path"), {"settings-path"});
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "done");
}

TEST_F(CommandClientTest, CopyThatCannotBeStartedIsReported)
{
    startSucceeds = false;
    const auto outcome = client.run(verb("settings-path"), {"settings-path"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "glimpso: could not start glimpso");
}

TEST_F(CommandClientTest, CopyThatDoesNotAnswerIsReportedNotWaitedForever)
{
    channel.running = {":1.4"};
    channel.nextReply = std::nullopt;
    const auto outcome = client.run(verb("settings-path"), {"settings-path"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "glimpso: the running copy did not answer within 2 s");
}

} // namespace
