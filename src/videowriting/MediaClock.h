#pragma once

namespace videowriting {

// The one clock of a recording: frames and sound samples carry times on it, in
// seconds. It is CLOCK_MONOTONIC, which every part of the process (and the X
// server's own timestamps) can read; it doesn't jump when the wall clock is set
// and keeps counting across a suspend only as far as the kernel says.
namespace MediaClock {
double now();
}

} // namespace videowriting
