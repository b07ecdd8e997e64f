#include "gifencoding/WorkQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

using gifencoding::WorkQueue;

TEST(WorkQueue, RunsJobsOfASerialQueueInOrder)
{
    std::vector<int> seen;
    {
        WorkQueue queue(1);
        for (int i = 0; i < 100; ++i)
            queue.post([&seen, i] { seen.push_back(i); });
        queue.runAndWait([] {});
        EXPECT_EQ(seen.size(), 100u);
    }
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(seen[std::size_t(i)], i);
}

TEST(WorkQueue, RunsEveryQueuedJobBeforeItIsDestroyed)
{
    std::atomic<int> count = 0;
    {
        WorkQueue queue(3);
        for (int i = 0; i < 50; ++i)
            queue.post([&count] { ++count; });
    }
    EXPECT_EQ(count.load(), 50);
}

TEST(WorkQueue, RunAndWaitPassesAnErrorBackToTheCaller)
{
    WorkQueue queue(1);
    EXPECT_THROW(queue.runAndWait([] { throw std::runtime_error("disk full"); }), std::runtime_error);
    int after = 0;
    queue.runAndWait([&after] { after = 1; });
    EXPECT_EQ(after, 1);
}
