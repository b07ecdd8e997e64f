#include "platform/pulse/PulseSoundSource.h"

#include "videowriting/MediaClock.h"

#include <pulse/error.h>
#include <pulse/thread-mainloop.h>
#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/stream.h>
#include <pulse/timeval.h>

#include <algorithm>
#include <chrono>
#include <sys/time.h>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace MediaClock = videowriting::MediaClock;
using videowriting::SoundChunk;

namespace {
// How long the server may take to answer before the capture is given up.
constexpr auto answerTime = std::chrono::seconds(3);
} // namespace

PulseSoundSource::PulseSoundSource(Kind kind, std::string server) : kind_(kind), server_(std::move(server)) {}

PulseSoundSource::~PulseSoundSource()
{
    stop();
}

void PulseSoundSource::start(OnChunk onChunk, OnFailure onFailure)
{
    stop();
    onChunk_ = std::move(onChunk);
    onFailure_ = std::move(onFailure);
    failed_ = false;
    loop_ = pa_threaded_mainloop_new();
    if (!loop_)
        throw std::runtime_error("The sound capture couldn't start");
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), "glimpso");
    if (!context_)
        giveUp("The sound capture couldn't start");
    pa_context_set_state_callback(context_, contextChanged, this);
    pa_threaded_mainloop_lock(loop_);
    if (pa_threaded_mainloop_start(loop_) < 0) {
        pa_threaded_mainloop_unlock(loop_);
        giveUp("The sound capture couldn't start");
    }
    // Never start a sound server of our own: no server means no sound.
    if (pa_context_connect(context_, server_.empty() ? nullptr : server_.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) <
        0) {
        const std::string why = pa_strerror(pa_context_errno(context_));
        pa_threaded_mainloop_unlock(loop_);
        giveUp("No sound server: " + why);
    }
    waitUntil(
        [](PulseSoundSource &s) {
            const pa_context_state_t state = pa_context_get_state(s.context_);
            return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
        },
        "the sound server");
    if (pa_context_get_state(context_) != PA_CONTEXT_READY) {
        const std::string why = pa_strerror(pa_context_errno(context_));
        pa_threaded_mainloop_unlock(loop_);
        giveUp("No sound server: " + why);
    }

    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, sampleRate, std::uint8_t(channels(kind_))};
    stream_ = pa_stream_new(context_, kind_ == Kind::systemSound ? "System sound" : "Microphone", &spec, nullptr);
    if (!stream_) {
        pa_threaded_mainloop_unlock(loop_);
        giveUp("The sound capture couldn't start");
    }
    pa_stream_set_state_callback(stream_, streamChanged, this);
    pa_stream_set_read_callback(stream_, readable, this);
    // Chunks of about 10 ms, so that their times are fine-grained.
    pa_buffer_attr attributes;
    std::memset(&attributes, 0xFF, sizeof attributes);
    attributes.fragsize = std::uint32_t(pa_usec_to_bytes(10'000, &spec));
    const char *device = kind_ == Kind::systemSound ? "@DEFAULT_MONITOR@" : nullptr;
    // Latencies as measured, never interpolated: libpulse's interpolation
    // runs on from a measure taken while the output was idle and reports a
    // latency half a second off for as long after the output starts playing.
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE);
    if (pa_stream_connect_record(stream_, device, &attributes, flags) < 0) {
        const std::string why = pa_strerror(pa_context_errno(context_));
        pa_threaded_mainloop_unlock(loop_);
        giveUp("The sound capture couldn't start: " + why);
    }
    waitUntil(
        [](PulseSoundSource &s) {
            const pa_stream_state_t state = pa_stream_get_state(s.stream_);
            return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
        },
        "the sound device");
    if (pa_stream_get_state(stream_) != PA_STREAM_READY) {
        const std::string why = pa_strerror(pa_context_errno(context_));
        pa_threaded_mainloop_unlock(loop_);
        giveUp("The sound capture couldn't start: " + why);
    }
    running_ = true;
    pa_threaded_mainloop_unlock(loop_);
}

// Under the loop's lock; waits on the loop's signal until `ready` holds.
void PulseSoundSource::waitUntil(bool (*ready)(PulseSoundSource &), const char *what)
{
    const auto deadline = std::chrono::steady_clock::now() + answerTime;
    while (!ready(*this)) {
        if (std::chrono::steady_clock::now() >= deadline) {
            pa_threaded_mainloop_unlock(loop_);
            giveUp(std::string("No answer from ") + what);
        }
        // The state callbacks signal; a timer-less wait, woken at least by them.
        pa_threaded_mainloop_unlock(loop_);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pa_threaded_mainloop_lock(loop_);
    }
}

void PulseSoundSource::giveUp(const std::string &why)
{
    tearDown();
    throw std::runtime_error(why);
}

void PulseSoundSource::stop()
{
    running_ = false;
    tearDown();
}

void PulseSoundSource::tearDown()
{
    if (!loop_)
        return;
    pa_threaded_mainloop_lock(loop_);
    if (stream_) {
        pa_stream_set_read_callback(stream_, nullptr, nullptr);
        pa_stream_set_state_callback(stream_, nullptr, nullptr);
        pa_stream_disconnect(stream_);
        pa_stream_unref(stream_);
        stream_ = nullptr;
    }
    if (context_) {
        pa_context_set_state_callback(context_, nullptr, nullptr);
        pa_context_disconnect(context_);
        pa_context_unref(context_);
        context_ = nullptr;
    }
    pa_threaded_mainloop_unlock(loop_);
    pa_threaded_mainloop_stop(loop_);
    pa_threaded_mainloop_free(loop_);
    loop_ = nullptr;
}

void PulseSoundSource::contextChanged(pa_context *context, void *self)
{
    auto *source = static_cast<PulseSoundSource *>(self);
    if (source->running_ && !PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
        source->fail(std::string("the sound server went away: ") + pa_strerror(pa_context_errno(context)));
}

void PulseSoundSource::streamChanged(pa_stream *stream, void *self)
{
    auto *source = static_cast<PulseSoundSource *>(self);
    if (source->running_ && !PA_STREAM_IS_GOOD(pa_stream_get_state(stream)))
        source->fail("the sound device went away");
}

void PulseSoundSource::fail(const std::string &why)
{
    if (failed_)
        return;
    failed_ = true;
    if (onFailure_)
        onFailure_(why);
}

void PulseSoundSource::readable(pa_stream *, std::size_t, void *self)
{
    static_cast<PulseSoundSource *>(self)->read();
}

// On libpulse's thread.
void PulseSoundSource::read()
{
    const double now = MediaClock::now();
    const int channelCount = channels(kind_);
    const std::size_t frameBytes = sizeof(float) * std::size_t(channelCount);
    // How long ago the oldest sample waiting to be read was heard, as the
    // server measured it at its last timing update, and how long ago that
    // update was: the sample is that much older now. For the system's sound (a
    // monitor) the latency can be negative: the output hasn't played the
    // sample yet, and it is heard that much later. Without timing information
    // yet, the newest sample is taken as heard just now.
    pa_usec_t latency = 0;
    int negative = 0;
    double first = now - double(pa_stream_readable_size(stream_) / frameBytes) / sampleRate;
    const pa_timing_info *timing = pa_stream_get_timing_info(stream_);
    if (timing && pa_stream_get_latency(stream_, &latency, &negative) == 0) {
        timeval wallNow{};
        gettimeofday(&wallNow, nullptr);
        const double sinceUpdate =
            std::clamp(double(pa_timeval_diff(&wallNow, &timing->timestamp)) / 1e6, 0.0, 1.0);
        first = (negative ? now + double(latency) / 1e6 : now - double(latency) / 1e6) - sinceUpdate;
    }
    // The latency changes when the output starts or stops playing; a fresh
    // measure is asked for at every read, so that the next chunk's time uses
    // one at most a chunk old (libpulse's own updates grow to seconds apart).
    if (pa_operation *update = pa_stream_update_timing_info(stream_, nullptr, nullptr))
        pa_operation_unref(update);
    std::size_t framesRead = 0;
    for (;;) {
        const void *data = nullptr;
        std::size_t bytes = 0;
        if (pa_stream_peek(stream_, &data, &bytes) < 0 || bytes == 0)
            return;
        const std::size_t frames = bytes / frameBytes;
        const double seconds = first + double(framesRead) / sampleRate;
        framesRead += frames;
        // A hole (data lost on the way) is left as a gap: the track fills it with silence.
        if (data && frames > 0 && onChunk_) {
            buffer_.resize(frames * std::size_t(channelCount));
            std::memcpy(buffer_.data(), data, frames * frameBytes);
            onChunk_(SoundChunk{buffer_, channelCount, sampleRate, seconds});
        }
        pa_stream_drop(stream_);
    }
}
