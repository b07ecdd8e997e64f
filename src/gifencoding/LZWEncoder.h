#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace gifencoding {

// The variable-length LZW coding of GIF image data, fed colour indices in
// pieces (a row at a time, say) so the caller never needs the whole picture's
// indices at once. Writes the minimum code size byte, the data sub-blocks of
// at most 255 bytes and their zero terminator, exactly as an image block
// carries them. Codes are the standard ones: a clear code first, a clear code
// whenever the 4096-entry table is full, an end code last.
class LZWEncoder {
public:
    // `minCodeSize` is the image's bits per pixel, at least 2, at most 8.
    // Bytes are appended to `out`, which must outlive the encoder.
    LZWEncoder(std::vector<std::uint8_t> &out, int minCodeSize);

    // Codes the next `count` indices; each must be below 2^minCodeSize.
    void add(const std::uint8_t *indices, std::size_t count);
    // Ends the data: the last string, the end code, the terminator. Call once.
    void finish();

private:
    static constexpr int maxCode = 4095;
    static constexpr std::size_t tableSize = 1 << 14; // a power of two, four times the codes

    void emit(int code);
    void resetTable();
    void flushBlock();

    std::vector<std::uint8_t> &out_;
    const int minCodeSize_;
    const int clearCode_;
    const int endCode_;
    int codeBits_ = 0;
    int nextCode_ = 0;
    int current_ = -1; // the string being matched, as its code; -1 before the first index

    // Open addressing: key (prefix code << 8 | index) + 1, 0 for an empty slot.
    std::array<std::uint32_t, tableSize> keys_{};
    std::array<std::uint16_t, tableSize> codes_{};

    std::uint64_t bitBuffer_ = 0;
    int bitCount_ = 0;
    std::array<std::uint8_t, 256> block_{};
    int blockLength_ = 0;
};

} // namespace gifencoding
