#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Reads a written file back with FFmpeg's demuxers and decoders, independently
// of the writer's own code: what tracks it has, how many packets and how long,
// the decoded pictures and sound.
namespace MediaReadBack {

struct Track {
    std::string codec;      // "h264", "hevc", "aac"
    bool video = false;
    int width = 0;
    int height = 0;
    int channels = 0;
    int sampleRate = 0;
    std::int64_t packets = 0;
    double start = 0;       // first presentation time, seconds
    double end = 0;         // last presentation time plus its duration
    double duration = 0;    // the track's own length, from its index
};

struct Facts {
    std::vector<Track> tracks;
    double duration = 0;    // the container's, seconds
    bool opened = false;

    const Track *video() const;
    std::vector<const Track *> sound() const;
};

Facts probe(const std::filesystem::path &path);

// A decoded picture: its time and its luma plane.
struct Picture {
    double seconds = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> u;   // chroma, half size each way
    std::vector<std::uint8_t> v;

    std::uint8_t lumaAt(int x, int y) const { return luma[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
};

// Every picture of the video track, in order, to `each`.
void decodeVideo(const std::filesystem::path &path, const std::function<void(const Picture &)> &each);

// The sound track `index` (0 = first sound track) decoded and mixed to one
// channel at its own rate, from its first sample; with the time of that sample.
struct Sound {
    std::vector<float> samples;
    int sampleRate = 0;
    double start = 0;
};
Sound decodeSound(const std::filesystem::path &path, int index = 0);

// The strongest frequency of `samples` between 50 Hz and 4 kHz, to 1 Hz.
double dominantFrequency(const std::vector<float> &samples, int sampleRate);

// What `ffmpeg -v error -i path -f null -` prints (its errors), and whether it ran.
std::optional<std::string> ffmpegErrors(const std::filesystem::path &path);

} // namespace MediaReadBack
