#include "gifencoding/LZWEncoder.h"

namespace gifencoding {

LZWEncoder::LZWEncoder(std::vector<std::uint8_t> &out, int minCodeSize)
    : out_(out), minCodeSize_(minCodeSize), clearCode_(1 << minCodeSize), endCode_(clearCode_ + 1)
{
    out_.push_back(std::uint8_t(minCodeSize_));
    resetTable();
    emit(clearCode_);
}

void LZWEncoder::resetTable()
{
    keys_.fill(0);
    codeBits_ = minCodeSize_ + 1;
    nextCode_ = endCode_ + 1;
}

void LZWEncoder::add(const std::uint8_t *indices, std::size_t count)
{
    std::size_t i = 0;
    if (current_ < 0 && count > 0)
        current_ = indices[i++];
    for (; i < count; ++i) {
        const std::uint8_t index = indices[i];
        const std::uint32_t key = (std::uint32_t(current_) << 8 | index) + 1;
        std::size_t slot = (key * 2654435761u) >> (32 - 14);
        while (keys_[slot] != 0 && keys_[slot] != key)
            slot = (slot + 1) & (tableSize - 1);
        if (keys_[slot] == key) {
            current_ = codes_[slot];
            continue;
        }
        emit(current_);
        current_ = index;
        if (nextCode_ >= maxCode) {
            // The table is full: start a new one, as every decoder expects.
            emit(clearCode_);
            resetTable();
        } else {
            keys_[slot] = key;
            codes_[slot] = std::uint16_t(nextCode_++);
        }
    }
}

void LZWEncoder::finish()
{
    if (current_ >= 0)
        emit(current_);
    emit(endCode_);
    if (bitCount_ > 0) {
        block_[std::size_t(blockLength_++)] = std::uint8_t(bitBuffer_);
        bitBuffer_ = 0;
        bitCount_ = 0;
        if (blockLength_ == 255)
            flushBlock();
    }
    flushBlock();
    out_.push_back(0);
}

void LZWEncoder::emit(int code)
{
    bitBuffer_ |= std::uint64_t(code) << bitCount_;
    bitCount_ += codeBits_;
    while (bitCount_ >= 8) {
        block_[std::size_t(blockLength_++)] = std::uint8_t(bitBuffer_);
        bitBuffer_ >>= 8;
        bitCount_ -= 8;
        if (blockLength_ == 255)
            flushBlock();
    }
    // The decoder widens its codes once its table reaches the current width;
    // it adds each entry one code later than the coder, hence after the code.
    if (nextCode_ >= (1 << codeBits_) && codeBits_ < 12)
        ++codeBits_;
}

void LZWEncoder::flushBlock()
{
    if (blockLength_ == 0)
        return;
    out_.push_back(std::uint8_t(blockLength_));
    out_.insert(out_.end(), block_.begin(), block_.begin() + blockLength_);
    blockLength_ = 0;
}

} // namespace gifencoding
