#pragma once

#include <cstdint>
#include <filesystem>

namespace videowriting {

// Makes a whole MP4 out of a fragmented recording that was cut off: the part
// up to its last whole fragment (FragmentScanner) is copied packet by packet
// into a plain MP4 with a complete index, without decoding or encoding
// anything. Throws MediaError when nothing in it can be read.
namespace LeftoverRemuxer {

struct Result {
    double seconds = 0;
    std::int64_t packets = 0;
    // The leftover was a finished file (it ends in whole boxes and an index).
    bool wasComplete = false;
};

Result remux(const std::filesystem::path &leftover, const std::filesystem::path &output);

} // namespace LeftoverRemuxer

} // namespace videowriting
