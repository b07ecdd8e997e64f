#include "gifencoding/ImageBlock.h"

#include <cstddef>

namespace gifencoding::ImageBlock {

namespace {

constexpr std::uint8_t extensionIntroducer = 0x21;
constexpr std::uint8_t imageSeparator = 0x2C;
constexpr std::size_t logicalScreenEnd = 13;

std::size_t colourTableSize(std::uint8_t packed)
{
    return 3u * (std::size_t(1) << ((packed & 7) + 1));
}

void appendLE16(std::vector<std::uint8_t> &out, int value)
{
    out.push_back(std::uint8_t(value & 0xFF));
    out.push_back(std::uint8_t((value >> 8) & 0xFF));
}

// Steps over the data sub-blocks that start at `q`; gives the position of
// their zero terminator, or absent if the bytes end first.
std::optional<std::size_t> subBlocksEnd(std::span<const std::uint8_t> b, std::size_t q)
{
    while (true) {
        if (q >= b.size())
            return std::nullopt;
        if (b[q] == 0)
            return q;
        q += std::size_t(b[q]) + 1;
    }
}

} // namespace

std::optional<std::vector<std::uint8_t>> extract(std::span<const std::uint8_t> b, int left, int top)
{
    const std::size_t n = b.size();
    if (n < 14 || b[0] != 'G')
        return std::nullopt;

    const std::uint8_t g = b[10];
    const bool hasGlobal = (g & 0x80) != 0;
    const std::size_t globalSize = hasGlobal ? colourTableSize(g) : 0;
    std::size_t p = logicalScreenEnd + globalSize;
    if (n < p)
        return std::nullopt;

    // The coder's own extensions (its graphic control block among them) stay behind.
    while (true) {
        if (p >= n)
            return std::nullopt;
        if (b[p] != extensionIntroducer)
            break;
        std::size_t q = p + 2;
        while (q < n && b[q] != 0)
            q += std::size_t(b[q]) + 1;
        p = q + 1;
    }

    if (b[p] != imageSeparator || n < p + 10)
        return std::nullopt;

    std::vector<std::uint8_t> out;
    out.reserve(n - p + globalSize);
    out.push_back(imageSeparator);
    appendLE16(out, left);
    appendLE16(out, top);
    out.insert(out.end(), b.begin() + std::ptrdiff_t(p + 5), b.begin() + std::ptrdiff_t(p + 9));

    const std::uint8_t d = b[p + 9];
    std::size_t s = p + 10;
    if (d & 0x80) {
        const std::size_t localSize = colourTableSize(d);
        if (n < s + localSize)
            return std::nullopt;
        out.push_back(d);
        out.insert(out.end(), b.begin() + std::ptrdiff_t(s), b.begin() + std::ptrdiff_t(s + localSize));
        s += localSize;
    } else if (hasGlobal) {
        // The output has no global table, so every frame brings its palette along.
        out.push_back(std::uint8_t((d & 0x78) | 0x80 | (g & 7)));
        out.insert(out.end(), b.begin() + std::ptrdiff_t(logicalScreenEnd),
                   b.begin() + std::ptrdiff_t(logicalScreenEnd + globalSize));
    } else {
        out.push_back(d);
    }

    const auto terminator = subBlocksEnd(b, s + 1);
    if (!terminator)
        return std::nullopt;
    out.insert(out.end(), b.begin() + std::ptrdiff_t(s), b.begin() + std::ptrdiff_t(*terminator + 1));
    return out;
}

} // namespace gifencoding::ImageBlock
