#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace gifencoding {

// A queue of jobs run by a fixed set of threads of its own. With one thread it
// is a serial queue: jobs run one after another in the order they were put on
// it, which is how the writer keeps all file state on one thread without locks.
// With several it is a concurrent pool, jobs start in order and end in any.
// The destructor runs what is queued, then joins the threads.
class WorkQueue {
public:
    explicit WorkQueue(unsigned threads);
    ~WorkQueue();
    WorkQueue(const WorkQueue &) = delete;
    WorkQueue &operator=(const WorkQueue &) = delete;

    void post(std::function<void()> job);
    // Runs `job` on the queue and waits for it; for a serial queue, after
    // everything put on it before.
    void runAndWait(std::function<void()> job);

private:
    void work();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> jobs_;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

} // namespace gifencoding
