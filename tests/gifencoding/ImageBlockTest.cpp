#include "gifencoding/GIFWriter.h"
#include "gifencoding/ImageBlock.h"
#include "gifencoding/OneImageGIFCoder.h"

#include "TestImages.h"

#include <gtest/gtest.h>

using gifencoding::GIFWriter;
using Bytes = std::vector<std::uint8_t>;

namespace {

// A 2 × 1 image with a global table of 4 colours (size bits 1), interlace
// and sort bits set in the image's packed field, preceded by a graphic
// control block and a comment.
Bytes globalTableGIF()
{
    return {'G', 'I', 'F', '8', '9', 'a', 2, 0, 1, 0, 0x81, 0, 0,
            // global table: 4 colours
            10, 11, 12, 20, 21, 22, 30, 31, 32, 40, 41, 42,
            // graphic control block with a delay of 7 and transparency
            0x21, 0xF9, 4, 0x05, 7, 0, 3, 0,
            // comment
            0x21, 0xFE, 3, 'a', 'b', 'c', 0,
            // image: left 1, top 2, 2 × 1, packed interlace 0x40 | sort 0x20
            0x2C, 1, 0, 2, 0, 2, 0, 1, 0, 0x60,
            // LZW minimum code size and two data sub-blocks
            2, 2, 0x44, 0x01, 1, 0x05, 0,
            0x3B};
}

Bytes localTableGIF()
{
    return {'G', 'I', 'F', '8', '7', 'a', 2, 0, 1, 0, 0x00, 0, 0,
            0x2C, 0, 0, 0, 0, 2, 0, 1, 0, 0x80,
            1, 2, 3, 4, 5, 6,
            2, 2, 0x44, 0x01, 0,
            0x3B};
}

TEST(ImageBlock, PromotesAGlobalTableKeepingInterlaceAndSortBits)
{
    const auto block = GIFWriter::imageBlock(globalTableGIF(), 5, 6);
    ASSERT_TRUE(block);
    const Bytes expected = {0x2C, 5, 0, 6, 0, 2, 0, 1, 0,
                            0x80 | 0x40 | 0x20 | 0x01,
                            10, 11, 12, 20, 21, 22, 30, 31, 32, 40, 41, 42,
                            2, 2, 0x44, 0x01, 1, 0x05, 0};
    EXPECT_EQ(*block, expected);
}

TEST(ImageBlock, CopiesALocalTableAsItStands)
{
    const auto block = GIFWriter::imageBlock(localTableGIF(), 0x0102, 0x0304);
    ASSERT_TRUE(block);
    const Bytes expected = {0x2C, 0x02, 0x01, 0x04, 0x03, 2, 0, 1, 0, 0x80,
                            1, 2, 3, 4, 5, 6, 2, 2, 0x44, 0x01, 0};
    EXPECT_EQ(*block, expected);
}

TEST(ImageBlock, LeavesThePackedFieldAloneWithoutAnyTable)
{
    Bytes gif = localTableGIF();
    gif[22] = 0x40;
    gif.erase(gif.begin() + 23, gif.begin() + 29);
    const auto block = GIFWriter::imageBlock(gif, 0, 0);
    ASSERT_TRUE(block);
    EXPECT_EQ((*block)[9], 0x40);
    EXPECT_EQ(Bytes(block->begin() + 10, block->end()), (Bytes{2, 2, 0x44, 0x01, 0}));
}

TEST(ImageBlock, WritesTheLowSixteenBitsOfThePosition)
{
    const auto block = GIFWriter::imageBlock(localTableGIF(), 0x12345, -1);
    ASSERT_TRUE(block);
    EXPECT_EQ(Bytes(block->begin() + 1, block->begin() + 5), (Bytes{0x45, 0x23, 0xFF, 0xFF}));
}

TEST(ImageBlock, CutsTheBlockOutOfWhatTheCoderWrites)
{
    const auto gif = gifencoding::OneImageGIFCoder().encode(TestImages::gradient(30, 20, 3));
    ASSERT_TRUE(gif);
    const auto block = GIFWriter::imageBlock(*gif, 7, 9);
    ASSERT_TRUE(block);
    EXPECT_EQ((*block)[0], 0x2C);
    EXPECT_EQ((*block)[1], 7);
    EXPECT_EQ((*block)[3], 9);
    EXPECT_EQ((*block)[5], 30);
    EXPECT_EQ((*block)[7], 20);
    EXPECT_EQ(block->back(), 0);
    // Everything but the trailer after the separator is carried over unchanged.
    EXPECT_EQ(gif->back(), 0x3B);
    const auto tail = Bytes(block->begin() + 5, block->end());
    const auto source = Bytes(gif->end() - 1 - std::ptrdiff_t(tail.size()), gif->end() - 1);
    EXPECT_EQ(tail, source);
}

TEST(ImageBlock, IsAbsentForTooFewBytesOrNoSignature)
{
    const Bytes gif = localTableGIF();
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 13), 0, 0));
    Bytes notGIF = gif;
    notGIF[0] = 'X';
    EXPECT_FALSE(GIFWriter::imageBlock(notGIF, 0, 0));
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes{}, 0, 0));
}

TEST(ImageBlock, IsAbsentWhenTheGlobalTableIsCutShort)
{
    const Bytes gif = globalTableGIF();
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 20), 0, 0));
}

TEST(ImageBlock, IsAbsentWithoutAnImageSeparatorAfterTheExtensions)
{
    Bytes gif = globalTableGIF();
    const auto separator = gif.begin() + 40;
    ASSERT_EQ(*separator, 0x2C);
    gif.erase(separator, gif.end() - 1); // extensions, then the trailer
    EXPECT_FALSE(GIFWriter::imageBlock(gif, 0, 0));
}

TEST(ImageBlock, IsAbsentWhenTheBytesEndInsideAnExtension)
{
    const Bytes gif = globalTableGIF();
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 30), 0, 0));
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 33), 0, 0));
}

TEST(ImageBlock, IsAbsentWhenTheImageDescriptorOrLocalTableIsCutShort)
{
    const Bytes gif = localTableGIF();
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 20), 0, 0));
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 26), 0, 0));
}

TEST(ImageBlock, IsAbsentWhenTheDataSubBlocksHaveNoTerminator)
{
    const Bytes gif = localTableGIF();
    // Up to the LZW code size and one sub-block, without its terminator.
    EXPECT_FALSE(GIFWriter::imageBlock(Bytes(gif.begin(), gif.begin() + 32), 0, 0));
    Bytes longBlock = gif;
    longBlock[30] = 200; // a sub-block that claims more bytes than there are
    EXPECT_FALSE(GIFWriter::imageBlock(longBlock, 0, 0));
}

} // namespace
