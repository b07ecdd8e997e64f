#pragma once

#include "videowriting/SoundChunk.h"

#include <functional>
#include <string>

namespace videowriting {

// A live source of sound for a recording: the system's sound (what the
// speakers play) or the microphone. Chunks come on a thread of the source's
// own, each stamped on the media clock (MediaClock) with when its first
// sample was heard, so that they line up with the frames.
class SoundSource {
public:
    enum class Kind { systemSound, microphone };
    using OnChunk = std::function<void(const SoundChunk &chunk)>;
    // Once, when the source stops by itself (the sound server went away).
    using OnFailure = std::function<void(const std::string &why)>;

    virtual ~SoundSource();

    // Starts the capture; throws std::runtime_error with the reason when it
    // can't (no sound server, no such device).
    virtual void start(OnChunk onChunk, OnFailure onFailure) = 0;
    // Ends it; once this returns, no more chunks come.
    virtual void stop() = 0;
};

} // namespace videowriting
