#pragma once

#include <cstdint>

namespace videowriting {

// Lays sound chunks on a track that begins at the first video frame, sample by
// sample. A sound track is a continuous run of samples, while the chunks come
// with times of their own, taken when they were read; this decides for each
// chunk what part of it is kept and how much silence goes before it:
//
// - samples from before the start are dropped;
// - a chunk that comes later than the samples so far reach (a pause of the
//   source, a lost buffer) is preceded by silence up to its time;
// - a chunk that overlaps what is already there loses its overlapping head;
// - differences within `tolerance` frames are jitter of the times and ignored,
//   so a steady source makes a seamless track.
class SoundTimeline {
public:
    struct Placement {
        // Frames of silence to put in first.
        std::int64_t silence = 0;
        // Frames of the chunk to leave out at its head, then frames to keep.
        std::int64_t skip = 0;
        std::int64_t keep = 0;
        friend bool operator==(const Placement &, const Placement &) = default;
    };

    // `tolerance` in frames; by default 20 ms.
    explicit SoundTimeline(int sampleRate, std::int64_t tolerance = -1);

    // The time of frame 0, that of the first video frame.
    void start(double seconds);
    bool started() const { return started_; }

    // A chunk of `frames` frames whose first frame was heard at `seconds`.
    // Before `start`, everything is dropped.
    Placement place(double seconds, std::int64_t frames);

    // The frame that `seconds` falls on.
    std::int64_t frameAt(double seconds) const;
    // Frames laid so far: where the next one goes.
    std::int64_t end() const { return end_; }

private:
    int sampleRate_;
    std::int64_t tolerance_;
    double start_ = 0;
    bool started_ = false;
    std::int64_t end_ = 0;
};

} // namespace videowriting
