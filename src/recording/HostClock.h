#pragma once

// The one clock of a recording: frame times, the start and the end are all
// read from it, in seconds. The host clock is the system's monotonic clock
// (CLOCK_MONOTONIC); tests hand in one of their own.
class HostClock
{
public:
    virtual ~HostClock() = default;
    virtual double now() const = 0;

    // The system's monotonic clock, in seconds.
    static double monotonicSeconds();
    // A clock that reads monotonicSeconds().
    static HostClock &system();
};
