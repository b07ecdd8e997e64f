#include "app/HangupNotifier.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include "EventLoopWait.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

namespace {

TEST(HangupNotifier, SigHupBecomesACallOnTheMainThread)
{
    HangupNotifier notifier;
    int calls = 0;
    notifier.onHangup = [&calls] { ++calls; };
    ASSERT_EQ(std::raise(SIGHUP), 0);
    // The handler only writes a byte; the call comes from the event loop.
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(processEventsUntil([&] { return calls == 1; }));
    ASSERT_EQ(std::raise(SIGHUP), 0);
    ASSERT_TRUE(processEventsUntil([&] { return calls == 2; }));
}

} // namespace
