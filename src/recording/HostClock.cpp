#include "recording/HostClock.h"

#include <chrono>

double HostClock::monotonicSeconds()
{
    // steady_clock is CLOCK_MONOTONIC on Linux, the clock the stream stamps frames with.
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

namespace {
class SystemClock : public HostClock
{
public:
    double now() const override { return monotonicSeconds(); }
};
} // namespace

HostClock &HostClock::system()
{
    static SystemClock clock;
    return clock;
}
