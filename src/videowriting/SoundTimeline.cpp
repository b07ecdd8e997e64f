#include "videowriting/SoundTimeline.h"

#include <algorithm>
#include <cmath>

namespace videowriting {

SoundTimeline::SoundTimeline(int sampleRate, std::int64_t tolerance)
    : sampleRate_(sampleRate), tolerance_(tolerance >= 0 ? tolerance : sampleRate / 50)
{
}

void SoundTimeline::start(double seconds)
{
    start_ = seconds;
    started_ = true;
    end_ = 0;
}

std::int64_t SoundTimeline::frameAt(double seconds) const
{
    return std::llround((seconds - start_) * sampleRate_);
}

SoundTimeline::Placement SoundTimeline::place(double seconds, std::int64_t frames)
{
    Placement placement;
    if (!started_ || frames <= 0) {
        placement.skip = std::max<std::int64_t>(frames, 0);
        return placement;
    }
    const std::int64_t at = frameAt(seconds);
    // Where the chunk's first kept frame lands.
    std::int64_t from = at;
    // The first chunk goes exactly where its time says; later ones join on
    // seamlessly unless they are off by more than the jitter of the times.
    if (end_ > 0 && std::abs(at - end_) <= tolerance_)
        from = end_;
    if (from + frames <= 0 || from + frames <= end_) {
        // Entirely before the start, or entirely over what is there.
        placement.skip = frames;
        return placement;
    }
    // Drop the head that lies before the start or over what is there.
    const std::int64_t firstKept = std::max<std::int64_t>({from, 0, end_});
    placement.skip = firstKept - from;
    placement.keep = frames - placement.skip;
    placement.silence = firstKept - end_;
    end_ = firstKept + placement.keep;
    return placement;
}

} // namespace videowriting
