#include "appbase/CaptureKind.h"

#include <gtest/gtest.h>

TEST(CaptureKind, RawValuesAreTheCaseNamesInOrder)
{
    QStringList names;
    for (CaptureKind kind : CaptureKinds::all)
        names << CaptureKinds::rawValue(kind);
    EXPECT_EQ(names, (QStringList{"image", "text", "gif", "video"}));
    for (CaptureKind kind : CaptureKinds::all)
        EXPECT_EQ(CaptureKinds::fromRawValue(CaptureKinds::rawValue(kind)), kind);
    EXPECT_FALSE(CaptureKinds::fromRawValue("Image").has_value());
}

TEST(CaptureKind, ExtensionsPickTheirKind)
{
    EXPECT_EQ(CaptureKinds::of("png"), CaptureKind::image);
    EXPECT_EQ(CaptureKinds::of("jpeg"), CaptureKind::image);
    EXPECT_EQ(CaptureKinds::of("heic"), CaptureKind::image);
    EXPECT_EQ(CaptureKinds::of("gif"), CaptureKind::gif);
    EXPECT_EQ(CaptureKinds::of("mov"), CaptureKind::video);
    EXPECT_EQ(CaptureKinds::of("MP4"), CaptureKind::video);
}

TEST(CaptureKind, TextHasNoExtensionAndUnknownOnesHaveNoKind)
{
    EXPECT_TRUE(CaptureKinds::fileExtensions(CaptureKind::text).isEmpty());
    EXPECT_FALSE(CaptureKinds::of("txt").has_value());
    EXPECT_FALSE(CaptureKinds::of("").has_value());
    EXPECT_FALSE(CaptureKinds::of("webm").has_value());
}
