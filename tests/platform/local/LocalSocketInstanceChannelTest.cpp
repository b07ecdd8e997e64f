#include "platform/local/LocalSocketInstanceChannel.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFuture>
#include <QTemporaryDir>
#include <QtConcurrent>
#include <gtest/gtest.h>

namespace {

// The serving copy needs its event loop while the other side blocks, so the
// other side runs on a worker thread and the test spins events until it is done.
template <typename T>
T awaitServed(QFuture<T> future)
{
    QDeadlineTimer deadline(10000);
    while (!future.isFinished() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    EXPECT_TRUE(future.isFinished());
    return future.result();
}

bool spinUntil(const std::function<bool()> &condition)
{
    QDeadlineTimer deadline(5000);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

struct LocalSocketInstanceChannelTest : ::testing::Test {
    QTemporaryDir dir;
    QString path = dir.filePath("glimpso.sock");
};

TEST_F(LocalSocketInstanceChannelTest, NobodyListeningMeansNoOtherCopy)
{
    LocalSocketInstanceChannel channel(path);
    EXPECT_TRUE(channel.otherCopies().isEmpty());
    EXPECT_FALSE(channel.sendCommand({"quit"}, 300));
}

TEST_F(LocalSocketInstanceChannelTest, CommandsReachTheServingCopyAndComeBackWithTheAnswer)
{
    LocalSocketInstanceChannel server(path);
    QStringList seen;
    server.serveCommands([&](const QStringList &arguments) {
        seen = arguments;
        return InstanceChannel::Reply{7, "out", "err"};
    });
    EXPECT_TRUE(server.otherCopies().isEmpty()); // it is the running copy itself

    auto reply = awaitServed(QtConcurrent::run([this] {
        LocalSocketInstanceChannel client(path);
        return client.sendCommand({"delay", "3"}, 2000);
    }));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 7);
    EXPECT_EQ(reply->output, "out");
    EXPECT_EQ(reply->error, "err");
    EXPECT_EQ(seen, (QStringList{"delay", "3"}));
}

TEST_F(LocalSocketInstanceChannelTest, SecondCopySeesTheFirstAndItsHandOffArrives)
{
    LocalSocketInstanceChannel first(path);
    int handOffs = 0;
    first.observeHandOff([&] { ++handOffs; });

    const int others = awaitServed(QtConcurrent::run([this] {
        LocalSocketInstanceChannel second(path);
        const int count = int(second.otherCopies().size());
        second.postHandOff();
        return count;
    }));
    EXPECT_EQ(others, 1);
    EXPECT_TRUE(spinUntil([&] { return handOffs == 1; }));
}

TEST_F(LocalSocketInstanceChannelTest, ClaimCarriesTheProcessId)
{
    LocalSocketInstanceChannel first(path);
    QString claimant;
    first.observeClaim([&](const QString &pid) { claimant = pid; });
    awaitServed(QtConcurrent::run([this] {
        LocalSocketInstanceChannel second(path);
        second.postClaim("31337");
        return 0;
    }));
    EXPECT_TRUE(spinUntil([&] { return claimant == "31337"; }));
}

TEST_F(LocalSocketInstanceChannelTest, StaleSocketOfACrashedCopyIsTakenOver)
{
    {
        QFile stale(path);
        ASSERT_TRUE(stale.open(QIODevice::WriteOnly)); // a leftover file nobody answers on
    }
    LocalSocketInstanceChannel channel(path);
    channel.serveCommands([](const QStringList &) { return InstanceChannel::Reply{}; });
    auto reply = awaitServed(QtConcurrent::run([this] {
        LocalSocketInstanceChannel client(path);
        return client.sendCommand({"quit"}, 2000);
    }));
    EXPECT_TRUE(reply.has_value());
}

TEST_F(LocalSocketInstanceChannelTest, WithdrawnCopyNoLongerCounts)
{
    LocalSocketInstanceChannel first(path);
    first.serveCommands([](const QStringList &) { return InstanceChannel::Reply{}; });
    first.withdraw();
    LocalSocketInstanceChannel second(path);
    EXPECT_TRUE(second.otherCopies().isEmpty());
}

} // namespace
