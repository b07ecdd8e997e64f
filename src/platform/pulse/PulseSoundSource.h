#pragma once

#include "videowriting/SoundSource.h"

#include <atomic>
#include <string>
#include <vector>

struct pa_context;
struct pa_stream;
struct pa_threaded_mainloop;

// Sound capture through libpulse, which PulseAudio and PipeWire's pulse server
// both answer: the system's sound is the monitor of the default output
// ("@DEFAULT_MONITOR@"), the microphone the default input. Samples come as
// 32-bit floats at 48 kHz, two channels for the system's sound and one for the
// microphone, in chunks of about 10 ms, on libpulse's own thread.
//
// A chunk's time is when its first sample was heard: the media clock when the
// chunk is read, less the stream's latency at that moment (the age of the
// oldest sample not yet read; for the system's sound it is negative while the
// output hasn't played that sample yet), as the server last measured it.
class PulseSoundSource final : public videowriting::SoundSource {
public:
    // `server` empty: the user's default server.
    explicit PulseSoundSource(Kind kind, std::string server = {});
    ~PulseSoundSource() override;

    void start(OnChunk onChunk, OnFailure onFailure) override;
    void stop() override;

    static int channels(Kind kind) { return kind == Kind::systemSound ? 2 : 1; }
    static constexpr int sampleRate = 48000;

private:
    static void contextChanged(pa_context *context, void *self);
    static void streamChanged(pa_stream *stream, void *self);
    static void readable(pa_stream *stream, std::size_t bytes, void *self);
    void read();
    void fail(const std::string &why);
    void waitUntil(bool (*ready)(PulseSoundSource &), const char *what);
    [[noreturn]] void giveUp(const std::string &why);
    void tearDown();

    Kind kind_;
    std::string server_;
    pa_threaded_mainloop *loop_ = nullptr;
    pa_context *context_ = nullptr;
    pa_stream *stream_ = nullptr;
    OnChunk onChunk_;
    OnFailure onFailure_;
    std::atomic<bool> running_ = false;
    bool failed_ = false;
    std::vector<float> buffer_;
};
