#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

// A PulseAudio server of the test's own (tests/support/private-pulse.sh), in
// a folder of its own, ended and removed with the object. Its default output
// is the null sink "speakers", its default input the monitor of the null sink
// "microphone".
class PrivatePulse {
public:
    PrivatePulse();
    ~PrivatePulse();
    PrivatePulse(const PrivatePulse &) = delete;
    PrivatePulse &operator=(const PrivatePulse &) = delete;

    // Empty when it didn't start; then reason() says why.
    bool isRunning() const { return !server_.empty(); }
    const std::string &reason() const { return reason_; }
    // "unix:/tmp/.../native"
    const std::string &server() const { return server_; }

    // Ends the server at once, as a crash would.
    void kill();

private:
    std::filesystem::path folder_;
    pid_t pid_ = -1;
    std::string server_;
    std::string reason_;
};

// Plays into a sink of a private server, sample-exact: silence, with the
// samples given at the sample position given, and says when, on the media
// clock, a sample position is heard.
class PulsePlayer {
public:
    PulsePlayer(const std::string &server, const char *sink, int channels);
    ~PulsePlayer();

    // Writes `seconds` of sound: `make(frame)` gives the value of each frame
    // (all channels alike), counted from the first frame ever played. Returns
    // when the sound server has taken it (in real time, near enough).
    template <typename Make>
    void play(double seconds, Make make);
    // When the frame `frame` is heard, on the media clock, as far as the
    // server's latency tells in the fifth of a second after it was written.
    double heardAt(long long frame) const;
    // The same, from the last estimate only (for a frame just written).
    double latestHeardAt(long long frame) const;
    bool isOpen() const { return stream_ != nullptr; }

private:
    void write(const std::vector<float> &samples);

    void *stream_ = nullptr;
    int channels_;
    long long written_ = 0;
    // After each block: the frames written, and the media clock time at which
    // frame 0 is heard as the server's latency then tells.
    std::vector<std::pair<long long, double>> origins_;
};

template <typename Make>
void PulsePlayer::play(double seconds, Make make)
{
    const int block = 480;
    const long long end = written_ + (long long)(seconds * 48000);
    std::vector<float> samples;
    while (written_ < end) {
        samples.assign(std::size_t(block) * std::size_t(channels_), 0.0f);
        for (int i = 0; i < block; ++i)
            for (int c = 0; c < channels_; ++c)
                samples[std::size_t(i * channels_ + c)] = make(written_ + i);
        write(samples);
    }
}
