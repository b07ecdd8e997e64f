#include "videowriting/MediaClock.h"

#include <ctime>

namespace videowriting {

double MediaClock::now()
{
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

} // namespace videowriting
