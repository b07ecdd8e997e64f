// libFuzzer target for the image block cutter: whatever bytes come in, it must
// neither read outside them nor give back a block that breaks its own shape.
#include "gifencoding/ImageBlock.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // The first two bytes choose the position, the rest is the file.
    if (size < 2)
        return 0;
    const int left = data[0] * 257;
    const int top = data[1] * 3;
    const std::span<const std::uint8_t> gif(data + 2, size - 2);
    const auto block = gifencoding::ImageBlock::extract(gif, left, top);
    if (!block)
        return 0;
    const auto &b = *block;
    // Separator, position, size, packed field, at least the code size byte and a terminator.
    if (b.size() < 12 || b[0] != 0x2C || b.back() != 0)
        std::abort();
    if (b[1] != (left & 0xFF) || b[2] != ((left >> 8) & 0xFF) || b[3] != (top & 0xFF) ||
        b[4] != ((top >> 8) & 0xFF))
        std::abort();
    // Never more than the input plus a promoted global table of at most 768 bytes.
    if (b.size() > gif.size() + 768)
        std::abort();
    // A table announced in the packed field is really there.
    if (b[9] & 0x80) {
        const std::size_t table = 3u * (std::size_t(1) << ((b[9] & 7) + 1));
        if (b.size() < 10 + table + 2)
            std::abort();
    }
    return 0;
}
