#include "SyntheticScene.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

using videowriting::PixelRect;
using videowriting::VideoFrame;

namespace {
constexpr std::uint32_t grey = 0xFF505050;
constexpr std::uint32_t white = 0xFFFFFFFF;
} // namespace

SyntheticScene::SyntheticScene(int width, int height)
    : width_(width), height_(height), pixels_(std::size_t(width) * std::size_t(height) * 4)
{
    fill(0, 0, width, height, grey);
}

void SyntheticScene::fill(int x, int y, int w, int h, std::uint32_t bgra)
{
    for (int row = std::max(y, 0); row < std::min(y + h, height_); ++row)
        for (int col = std::max(x, 0); col < std::min(x + w, width_); ++col)
            std::memcpy(pixels_.data() + (std::size_t(row) * std::size_t(width_) + std::size_t(col)) * 4, &bgra, 4);
}

int SyntheticScene::squareX(int index) const
{
    const int span = std::max(width_ - squareSize, 1);
    return (index * 4) % span;
}

VideoFrame SyntheticScene::frame(int index, double seconds)
{
    std::vector<PixelRect> changed;
    const int y = height_ / 2 - squareSize / 2;
    if (last_ >= 0) {
        fill(squareX(last_), y, squareSize, squareSize, grey);
        changed.push_back({squareX(last_), y, squareSize, squareSize});
    }
    fill(squareX(index), y, squareSize, squareSize, white);
    changed.push_back({squareX(index), y, squareSize, squareSize});
    // The stripe: frame number in its blue and green.
    const std::uint32_t stripe = 0xFF000000u | std::uint32_t(index & 0xFF) | (std::uint32_t((index >> 8) & 0xFF) << 8);
    const int stripeHeight = std::min(16, height_);
    fill(0, 0, width_, stripeHeight, stripe);
    changed.push_back({0, 0, width_, stripeHeight});
    last_ = index;
    VideoFrame f = unchanged(seconds);
    f.changedRects = std::move(changed);
    return f;
}

VideoFrame SyntheticScene::unchanged(double seconds) const
{
    VideoFrame f;
    f.bgra = pixels_.data();
    f.width = width_;
    f.height = height_;
    f.bytesPerLine = width_ * 4;
    f.seconds = seconds;
    f.changedRects = std::vector<PixelRect>{};
    return f;
}

std::vector<float> SyntheticScene::tone(double hertz, int channels, std::int64_t from, int frames, float level)
{
    std::vector<float> samples(std::size_t(frames) * std::size_t(channels));
    for (int i = 0; i < frames; ++i) {
        const double t = double(from + i) / 48000.0;
        const auto value = float(level * std::sin(2 * std::numbers::pi * hertz * t));
        for (int c = 0; c < channels; ++c)
            samples[std::size_t(i) * std::size_t(channels) + std::size_t(c)] = value;
    }
    return samples;
}
