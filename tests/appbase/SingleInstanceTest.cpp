#include "appbase/SingleInstance.h"

#include "FakeInstanceChannel.h"

#include <gtest/gtest.h>

namespace {

struct SingleInstanceTest : ::testing::Test {
    FakeInstanceChannel channel;
    int quits = 0;
    SingleInstance instance{channel, 4242, [this] { ++quits; }};
};

TEST_F(SingleInstanceTest, LaunchWithNoOtherCopyDoesNotHandOffAndPostsNothing)
{
    EXPECT_FALSE(instance.handOffToRunningCopy());
    EXPECT_EQ(channel.log, QStringList{"otherCopies"});
}

TEST_F(SingleInstanceTest, SecondLaunchHandsOffAndShouldExit)
{
    channel.running = {":1.7"};
    EXPECT_TRUE(instance.handOffToRunningCopy());
    EXPECT_EQ(channel.log, (QStringList{"otherCopies", "handOff"}));
}

TEST_F(SingleInstanceTest, OnlyTheFirstHandOffActionCounts)
{
    int first = 0, second = 0;
    instance.onHandOff([&] { ++first; });
    instance.onHandOff([&] { ++second; });
    ASSERT_TRUE(channel.handOffAction);
    channel.handOffAction();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(channel.log.count("observeHandOff"), 1);
}

TEST_F(SingleInstanceTest, ClaimTellsTheOthersFirstThenListensThenAsksThoseLeftToQuit)
{
    channel.running = {":1.3", ":1.5"};
    instance.claim();
    EXPECT_EQ(channel.log, (QStringList{"claim:4242", "observeClaim", "otherCopies", "quit::1.3", "quit::1.5"}));
}

TEST_F(SingleInstanceTest, ClaimTwicePostsOnce)
{
    instance.claim();
    instance.claim();
    EXPECT_EQ(channel.log.count("claim:4242"), 1);
    EXPECT_TRUE(instance.hasClaimed());
}

TEST_F(SingleInstanceTest, OwnClaimIsNotObeyed)
{
    instance.claim();
    channel.claimAction("4242");
    channel.claimAction("");
    EXPECT_EQ(quits, 0);
}

TEST_F(SingleInstanceTest, LaterClaimOfAnotherCopyEndsThisOne)
{
    instance.claim();
    channel.claimAction("999");
    EXPECT_EQ(quits, 1);
}

} // namespace
