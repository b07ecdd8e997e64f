#include "overlay/OverlayLook.h"

#include <gtest/gtest.h>

TEST(OverlayLook, TheDimTakesTheColourAndTheOpacity)
{
    const OverlayLook look = OverlayLook::make("#102030", 0.45, "#EBEBEB", CaptureIntent::image);
    EXPECT_EQ(look.dim.rgb(), QColor(0x10, 0x20, 0x30).rgb());
    EXPECT_NEAR(look.dim.alphaF(), 0.45, 0.005);
    EXPECT_EQ(look.accent, QColor(0xeb, 0xeb, 0xeb));
}

TEST(OverlayLook, UnreadableColoursFallBack)
{
    const OverlayLook look = OverlayLook::make("dark", 2.0, "#12", CaptureIntent::image);
    EXPECT_EQ(look.dim.rgb(), QColor(Qt::black).rgb());
    EXPECT_EQ(look.dim.alphaF(), 1.0f);
    EXPECT_EQ(look.accent.rgb(), QColor::fromRgbF(0.92f, 0.92f, 0.92f).rgb());
}

TEST(OverlayLook, TheHintSaysWhatTheDragIsFor)
{
    EXPECT_EQ(OverlayLook::hintText(CaptureIntent::image),
              QStringLiteral("Drag to select region   ·   ESC to cancel"));
    EXPECT_EQ(OverlayLook::hintText(CaptureIntent::text),
              QStringLiteral("Drag over text to copy it   ·   ESC to cancel"));
}
