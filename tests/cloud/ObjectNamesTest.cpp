#include "cloud/ObjectNames.h"

#include <gtest/gtest.h>

#include <array>
#include <deque>

namespace {

// Hands out the given numbers, in order, and counts the draws.
struct ScriptedRandom {
    std::deque<quint64> values;
    int draws = 0;
    quint64 operator()()
    {
        ++draws;
        const quint64 value = values.front();
        values.pop_front();
        return value;
    }
};

TEST(ObjectNames, ARandomSlugHasTheLengthAskedForFromTheAlphabet)
{
    const QString alphabet = QString::fromLatin1(ObjectNames::alphabet);
    ASSERT_EQ(alphabet.size(), ObjectNames::alphabetSize);
    for (int i = 0; i < 200; ++i) {
        const QString slug = ObjectNames::randomSlug(10);
        ASSERT_EQ(slug.size(), 10);
        for (const QChar c : slug)
            ASSERT_TRUE(alphabet.contains(c)) << qPrintable(slug);
    }
    EXPECT_NE(ObjectNames::randomSlug(10), ObjectNames::randomSlug(10));
}

TEST(ObjectNames, TheHighWordOfTheProductPicksTheCharacter)
{
    ScriptedRandom random{{0, ~quint64(0), (quint64(1) << 63) + 1}};
    auto source = [&random] { return random(); };
    // 0 is in the rejected band for 62 (2^64 mod 62 = 16): drawn again.
    EXPECT_EQ(ObjectNames::randomSlug(2, source), QStringLiteral("9F"));
    EXPECT_EQ(random.draws, 3);
}

TEST(ObjectNames, DrawsInTheBiasedBandAreRejected)
{
    // 2^64 mod 62 = 16: a product whose low word is below 16 would favour
    // the first characters, so such draws are made again.
    const quint64 threshold = (0 - quint64(62)) % 62;
    ASSERT_EQ(threshold, 16u);
    ScriptedRandom random{{0, 1, 5}};
    auto source = [&random] { return random(); };
    // 0 and 1 give low words 0 and 62 (62 is not below 16: 1 is kept).
    EXPECT_EQ(ObjectNames::uniformBelow(62, source), 0u);
    EXPECT_EQ(random.draws, 2);
}

TEST(ObjectNames, EveryCharacterComesUpAboutEquallyOften)
{
    std::array<int, ObjectNames::alphabetSize> counts{};
    const QString alphabet = QString::fromLatin1(ObjectNames::alphabet);
    const QString slug = ObjectNames::randomSlug(62 * 1000);
    for (const QChar c : slug)
        ++counts[alphabet.indexOf(c)];
    for (const int count : counts) {
        EXPECT_GT(count, 800);
        EXPECT_LT(count, 1200);
    }
}

TEST(ObjectNames, TheExtensionIsWhatFollowsTheLastFullStop)
{
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral("/a/glimpso-2025.png")), QStringLiteral("png"));
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral("archive.tar.gz")), QStringLiteral("gz"));
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral("Shot.PNG")), QStringLiteral("PNG"));
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral("/a.b/noext")), QString());
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral(".hidden")), QString());
    EXPECT_EQ(ObjectNames::extensionOf(QStringLiteral("trailing.")), QString());
}

TEST(ObjectNames, AFileWithoutExtensionGivesAKeyEndingInABareFullStop)
{
    const QString key = ObjectNames::keyForFile(QStringLiteral("/tmp/README"));
    EXPECT_EQ(key.size(), 11);
    EXPECT_TRUE(key.endsWith(u'.'));
    EXPECT_TRUE(ObjectNames::keyForFile(QStringLiteral("clip.mov")).endsWith(QStringLiteral(".mov")));
    EXPECT_EQ(ObjectNames::keyForFile(QStringLiteral("clip.mov")).size(), 14);
}

TEST(ObjectNames, RecordingsAreSentAsGifAndMpeg4WhateverTheirExtension)
{
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.gif"), CaptureKind::gif), QStringLiteral("image/gif"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.mov"), CaptureKind::video), QStringLiteral("video/mp4"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.mp4"), CaptureKind::video), QStringLiteral("video/mp4"));
}

TEST(ObjectNames, OtherFilesAreSentAsTheTypeTheirExtensionNames)
{
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.png"), CaptureKind::image), QStringLiteral("image/png"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.jpeg"), CaptureKind::image), QStringLiteral("image/jpeg"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("notes.txt"), CaptureKind::image), QStringLiteral("text/plain"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.PNG"), CaptureKind::image), QStringLiteral("image/png"));
}

TEST(ObjectNames, AnUnknownOrMissingExtensionIsSentAsBytes)
{
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("a.zzqq"), CaptureKind::image),
              QStringLiteral("application/octet-stream"));
    EXPECT_EQ(ObjectNames::contentType(QStringLiteral("README"), CaptureKind::image),
              QStringLiteral("application/octet-stream"));
}

} // namespace
