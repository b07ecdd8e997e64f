#pragma once

#include <span>

namespace videowriting {

// A run of sound samples as a sound source delivers them: 32-bit float,
// interleaved, `channels` per frame, at `sampleRate`. `seconds` is when the
// first of them was heard, on the media clock (MediaClock), the clock of the
// video frames.
struct SoundChunk {
    std::span<const float> samples;
    int channels = 2;
    int sampleRate = 48000;
    double seconds = 0;

    int frames() const { return channels > 0 ? int(samples.size() / std::size_t(channels)) : 0; }
};

} // namespace videowriting
