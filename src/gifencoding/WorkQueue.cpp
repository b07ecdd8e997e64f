#include "gifencoding/WorkQueue.h"

#include <algorithm>
#include <future>

namespace gifencoding {

WorkQueue::WorkQueue(unsigned threads)
{
    threads_.reserve(threads);
    for (unsigned i = 0; i < std::max(threads, 1u); ++i)
        threads_.emplace_back([this] { work(); });
}

WorkQueue::~WorkQueue()
{
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (auto &t : threads_)
        t.join();
}

void WorkQueue::post(std::function<void()> job)
{
    {
        std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
}

void WorkQueue::runAndWait(std::function<void()> job)
{
    std::packaged_task<void()> task(std::move(job));
    auto done = task.get_future();
    post([&task] { task(); });
    done.get();
}

void WorkQueue::work()
{
    while (true) {
        std::function<void()> job;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
            if (jobs_.empty())
                return;
            job = std::move(jobs_.front());
            jobs_.pop_front();
        }
        job();
    }
}

} // namespace gifencoding
