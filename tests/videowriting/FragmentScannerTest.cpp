#include "videowriting/FragmentScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using videowriting::FragmentScanner;
using Layout = FragmentScanner::Layout;

namespace {

// Builds a file of top-level boxes.
struct Boxes {
    std::vector<std::uint8_t> bytes;

    Boxes &box(const char *type, std::uint32_t size)
    {
        put32(size);
        bytes.insert(bytes.end(), type, type + 4);
        bytes.resize(bytes.size() + size - 8, 0);
        return *this;
    }
    Boxes &largeBox(const char *type, std::uint64_t size)
    {
        put32(1);
        bytes.insert(bytes.end(), type, type + 4);
        put32(std::uint32_t(size >> 32));
        put32(std::uint32_t(size));
        bytes.resize(bytes.size() + size - 16, 0);
        return *this;
    }
    Boxes &raw(std::vector<std::uint8_t> more)
    {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    Boxes &fragment(std::uint32_t data = 100) { return box("moof", 40).box("mdat", data); }
    Boxes &header() { return box("ftyp", 24).box("moov", 300); }
    Boxes cut(std::size_t size) const
    {
        Boxes b;
        b.bytes.assign(bytes.begin(), bytes.begin() + std::ptrdiff_t(size));
        return b;
    }
    Layout scan() const { return FragmentScanner::scan(bytes); }

    void put32(std::uint32_t v)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(std::uint8_t(v >> shift));
    }
};

} // namespace

TEST(FragmentScanner, AFinishedFileIsReadableToItsEnd)
{
    Boxes file;
    file.header().fragment().fragment().box("mfra", 50);
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 2, true}));
}

TEST(FragmentScanner, AFileEndingInAWholeFragmentWithoutTheIndexWasNotFinished)
{
    Boxes file;
    file.header().fragment().fragment();
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 2, false}));
}

TEST(FragmentScanner, AFileCutInsideAFragmentsDataEndsBeforeThatFragment)
{
    Boxes file;
    file.header().fragment().fragment();
    const std::size_t firstEnd = 24 + 300 + 140;
    const Boxes cut = file.cut(file.bytes.size() - 30);
    EXPECT_EQ(cut.scan(), (Layout{firstEnd, 1, false}));
}

TEST(FragmentScanner, AFileCutAfterAMoofEndsBeforeIt)
{
    Boxes file;
    file.header().fragment().box("moof", 40);
    EXPECT_EQ(file.scan(), (Layout{24 + 300 + 140, 1, false}));
}

TEST(FragmentScanner, AnIndexInTheMiddleIsNoEnd)
{
    Boxes file;
    file.header().fragment().box("mfra", 50).fragment();
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 2, false}));
}

TEST(FragmentScanner, AFileCutInsideABoxHeaderEndsBeforeIt)
{
    Boxes file;
    file.header().fragment();
    const std::size_t whole = file.bytes.size();
    file.raw({0, 0, 0});
    EXPECT_EQ(file.scan(), (Layout{whole, 1, false}));
}

TEST(FragmentScanner, OnlyAHeaderIsReadableButHoldsNoFragment)
{
    Boxes file;
    file.header();
    EXPECT_EQ(file.scan(), (Layout{324, 0, false}));
}

TEST(FragmentScanner, WithoutAWholeMovieHeaderNothingIsReadable)
{
    Boxes file;
    file.box("ftyp", 24).box("moov", 300);
    EXPECT_EQ(file.cut(200).scan(), (Layout{0, 0, false}));
    EXPECT_EQ(Boxes().scan(), (Layout{0, 0, false}));
    Boxes noMovie;
    noMovie.box("ftyp", 24).fragment();
    EXPECT_EQ(noMovie.scan(), (Layout{0, 0, false}));
}

TEST(FragmentScanner, DataWithoutItsMoofIsNotAFragment)
{
    Boxes file;
    file.header().box("mdat", 100).fragment();
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 1, false}));
}

TEST(FragmentScanner, LargeBoxesAreRead)
{
    Boxes file;
    file.header().box("moof", 40).largeBox("mdat", 5000);
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 1, false}));
}

TEST(FragmentScanner, ImpossibleSizesEndTheReadablePart)
{
    Boxes tooSmall;
    tooSmall.header().fragment().raw({0, 0, 0, 4, 'f', 'r', 'e', 'e'});
    EXPECT_EQ(tooSmall.scan().readable, 24u + 300 + 140);
    Boxes toEnd;
    toEnd.header().fragment().raw({0, 0, 0, 0, 'm', 'd', 'a', 't', 1, 2, 3});
    EXPECT_EQ(toEnd.scan().readable, 24u + 300 + 140);
    Boxes largeTooSmall;
    largeTooSmall.header().raw({0, 0, 0, 1, 'm', 'd', 'a', 't', 0, 0, 0, 0, 0, 0, 0, 8});
    EXPECT_EQ(largeTooSmall.scan().readable, 324u);
    Boxes beyond;
    beyond.header().raw({0xFF, 0xFF, 0xFF, 0xFF, 'm', 'o', 'o', 'f'});
    EXPECT_EQ(beyond.scan().readable, 324u);
}

TEST(FragmentScanner, ABoxBetweenFragmentsIsKept)
{
    Boxes file;
    file.header().fragment().box("free", 16).fragment();
    EXPECT_EQ(file.scan(), (Layout{file.bytes.size(), 2, false}));
}

TEST(FragmentScanner, AMissingFileCantBeScanned)
{
    EXPECT_EQ(FragmentScanner::scanFile("/nonexistent/glimpso/x.mp4"), std::nullopt);
}
