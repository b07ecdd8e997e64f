#include "app/HangupNotifier.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

namespace {

bool processUntil(const std::function<bool()> &condition)
{
    QDeadlineTimer deadline(10000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

TEST(HangupNotifier, SigHupBecomesACallOnTheMainThread)
{
    HangupNotifier notifier;
    int calls = 0;
    notifier.onHangup = [&calls] { ++calls; };
    ASSERT_EQ(std::raise(SIGHUP), 0);
    // The handler only writes a byte; the call comes from the event loop.
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(processUntil([&] { return calls == 1; }));
    ASSERT_EQ(std::raise(SIGHUP), 0);
    ASSERT_TRUE(processUntil([&] { return calls == 2; }));
}

} // namespace
