#pragma once

#include "videowriting/MediaHandles.h"
#include "videowriting/SoundChunk.h"
#include "videowriting/SoundTimeline.h"

#include <functional>
#include <vector>

namespace videowriting {

// One AAC sound track at 48 kHz: chunks from a sound source are converted to
// the track's channels and rate, laid on the track's timeline (SoundTimeline:
// nothing before the first video frame, silence over gaps) and encoded in the
// encoder's frames of 1024 samples.
class SoundEncoder {
public:
    using PacketSink = std::function<void(AVPacket *)>;
    static constexpr int sampleRate = 48000;

    // Throws MediaError when AAC can't be opened with these settings.
    SoundEncoder(int channels, std::int64_t bitRate);

    const AVCodecContext *context() const { return context_.get(); }
    // Samples the encoder puts before the first one it is given: the track's
    // time starts that much before its sound.
    int delay() const { return context_->initial_padding; }

    // Time of sample 0: the first video frame.
    void start(double seconds);
    void add(const SoundChunk &chunk, const PacketSink &sink);
    // Silence up to `endTime` where sound is missing, then the rest.
    void finish(double endTime, const PacketSink &sink);

private:
    void ensureResampler(const SoundChunk &chunk);
    void push(const float *const *planes, int frames, const PacketSink &sink);
    void pushSilence(std::int64_t frames, const PacketSink &sink);
    void encodeFull(const PacketSink &sink, bool all);
    void send(AVFrame *frame, const PacketSink &sink);

    CodecContextPtr context_;
    ResamplerPtr resampler_;
    int resamplerRate_ = 0;
    int resamplerChannels_ = 0;
    AudioFifoPtr fifo_;
    FramePtr frame_;
    PacketPtr packet_;
    SoundTimeline timeline_;
    std::int64_t encodedFrames_ = 0;
    std::vector<std::vector<float>> converted_;
};

} // namespace videowriting
