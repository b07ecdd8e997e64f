#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// Reads a written GIF back with two readers that share no code with the
// writer or with each other: giflib's DGifSlurp (composited here, disposal 1)
// and ImageMagick's `convert -coalesce`. Each gives the full picture after
// every frame, as RGB, and the frames' delays.
namespace GIFReadBack {

struct Frame {
    int delayCentiseconds = 0;
    std::vector<std::uint8_t> rgb; // width × height × 3, the whole logical screen
    // Where the frame's own image lies (giflib only).
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    int disposal = -1; // -1: no graphic control block (giflib only)
};

struct Animation {
    int width = 0;
    int height = 0;
    int loopCount = -1; // -1: no NETSCAPE block
    std::vector<Frame> frames;
};

Animation withGiflib(const std::filesystem::path &file);
Animation withImageMagick(const std::filesystem::path &file);

// The largest difference of one channel between two RGB pictures of the same size.
int largestDifference(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b);
// The mean absolute difference over all channels.
double meanDifference(const std::vector<std::uint8_t> &a, const std::vector<std::uint8_t> &b);

// giflib's own dump of the file (giftext); it also reads files without any image.
std::string giftext(const std::filesystem::path &file);

std::vector<std::uint8_t> readFile(const std::filesystem::path &file);

} // namespace GIFReadBack
