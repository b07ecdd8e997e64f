#pragma once

#include "videowriting/SoundChunk.h"
#include "videowriting/VideoFrame.h"

#include <cstdint>
#include <vector>

// A screen-like scene for the writer's tests and tools: a grey desktop with a
// white square moving along a line (one position a frame, so every frame
// differs where it moves) and a stripe whose colour says the frame number.
class SyntheticScene {
public:
    SyntheticScene(int width, int height);

    // Draws frame `index` and gives it with what changed since frame `index - 1`.
    videowriting::VideoFrame frame(int index, double seconds);
    // The same picture again, nothing changed.
    videowriting::VideoFrame unchanged(double seconds) const;

    int width() const { return width_; }
    int height() const { return height_; }
    const std::vector<std::uint8_t> &pixels() const { return pixels_; }

    // The square's left edge in frame `index`.
    int squareX(int index) const;
    static constexpr int squareSize = 32;

    // A sine of `hertz` at 48 kHz, interleaved, `channels` channels: `frames`
    // frames starting at frame `from` of the tone.
    static std::vector<float> tone(double hertz, int channels, std::int64_t from, int frames, float level = 0.5f);

private:
    void fill(int x, int y, int w, int h, std::uint32_t bgra);

    int width_;
    int height_;
    std::vector<std::uint8_t> pixels_;
    int last_ = -1;
};
