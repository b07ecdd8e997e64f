#include "recognize/OcrPreparation.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QPainter>

namespace {

QImage textPicture(QColor ground, QColor ink, int pixelSize, int lines = 1)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixelSize);
    QImage image(320, 8 + lines * pixelSize * 3 / 2, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(ink);
    for (int i = 0; i < lines; ++i)
        painter.drawText(4, 4 + pixelSize + i * pixelSize * 3 / 2, QStringLiteral("Some example text, line %1").arg(i));
    return image;
}

} // namespace

TEST(OcrPreparation, LumaLaysTransparencyOnWhite)
{
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(0, 0, 0, 0));
    image.setPixel(1, 0, qRgba(255, 0, 0, 255));
    const QImage gray = OcrPreparation::luminance(image);
    ASSERT_EQ(gray.format(), QImage::Format_Grayscale8);
    EXPECT_EQ(gray.constScanLine(0)[0], 255);
    EXPECT_EQ(gray.constScanLine(0)[1], 76);
}

TEST(OcrPreparation, FindsTheGroundAndWhetherTheInkIsLighter)
{
    const auto dark = OcrPreparation::findTextLines(
        OcrPreparation::luminance(textPicture(QColor(30, 30, 30), QColor(220, 220, 220), 12)));
    EXPECT_TRUE(dark.lightOnDark);
    EXPECT_NEAR(dark.background, 30, 2);
    const auto light = OcrPreparation::findTextLines(
        OcrPreparation::luminance(textPicture(Qt::white, QColor(40, 40, 40), 12)));
    EXPECT_FALSE(light.lightOnDark);
    EXPECT_EQ(light.background, 255);
}

TEST(OcrPreparation, CountsTheLinesAndMeasuresTheirXHeight)
{
    for (const int size : {9, 12, 16}) {
        const auto found = OcrPreparation::findTextLines(
            OcrPreparation::luminance(textPicture(Qt::white, Qt::black, size, 3)));
        EXPECT_EQ(found.lines.size(), 3) << size;
        // DejaVu Sans: an x-height of about 0.55 of the size.
        EXPECT_NEAR(found.xHeight(), size * 0.55, 1.6) << size;
    }
}

TEST(OcrPreparation, SmallTextIsScaledToTheTargetXHeightDarkOnLightWithAMargin)
{
    const QImage source = textPicture(QColor(20, 20, 30), QColor(230, 230, 230), 10, 2);
    const OcrPreparation::Prepared prepared = OcrPreparation::prepare(source);
    EXPECT_TRUE(prepared.inverted);
    EXPECT_EQ(prepared.layout, OcrPreparation::Layout::block);
    EXPECT_NEAR(prepared.xHeight * prepared.scale, OcrPreparation::Options().targetXHeight, 0.5);
    EXPECT_GT(prepared.gray.width(), source.width() * prepared.scale);
    // Light ground in the margin, dark ink somewhere inside.
    EXPECT_GT(prepared.gray.constScanLine(0)[0], 200);
    int darkest = 255;
    for (int y = 0; y < prepared.gray.height(); ++y)
        for (int x = 0; x < prepared.gray.width(); ++x)
            darkest = std::min<int>(darkest, prepared.gray.constScanLine(y)[x]);
    EXPECT_LT(darkest, 60);
}

TEST(OcrPreparation, OneLineIsReadAsOneLine)
{
    EXPECT_EQ(OcrPreparation::prepare(textPicture(Qt::white, Qt::black, 13)).layout,
              OcrPreparation::Layout::singleLine);
}

TEST(OcrPreparation, LargeTextIsLeftAtItsSize)
{
    const OcrPreparation::Prepared prepared = OcrPreparation::prepare(textPicture(Qt::white, Qt::black, 72));
    EXPECT_EQ(prepared.scale, 1.0);
}

TEST(OcrPreparation, AnEmptyOrBlankPictureHasNoText)
{
    EXPECT_TRUE(OcrPreparation::prepare(QImage()).gray.isNull());
    QImage blank(50, 20, QImage::Format_RGB32);
    blank.fill(Qt::white);
    const OcrPreparation::Prepared prepared = OcrPreparation::prepare(blank);
    EXPECT_EQ(prepared.xHeight, 0);
    EXPECT_EQ(prepared.scale, 1.0);
}

TEST(OcrPreparation, ResamplingKeepsFlatAreasFlatAndHitsTheSize)
{
    QImage gray(10, 10, QImage::Format_Grayscale8);
    gray.fill(128);
    const QImage up = OcrPreparation::resample(gray, 37, 23);
    ASSERT_EQ(up.size(), QSize(37, 23));
    for (int y = 0; y < up.height(); ++y)
        for (int x = 0; x < up.width(); ++x)
            ASSERT_EQ(up.constScanLine(y)[x], 128);
    EXPECT_EQ(OcrPreparation::resample(gray, 4, 4).constScanLine(2)[2], 128);
}

TEST(OcrPreparation, HugePicturesStayWithinTheLimit)
{
    OcrPreparation::Options options;
    options.maxPixels = 1 << 20;
    const OcrPreparation::Prepared prepared = OcrPreparation::prepare(textPicture(Qt::white, Qt::black, 9, 2), options);
    const int margins = 2 * prepared.margin;
    EXPECT_LE(qint64(prepared.gray.width() - margins) * (prepared.gray.height() - margins), qint64(1) << 20);
}

TEST(OcrPreparation, ATerminalsBlockCursorIsPaintedOverAndTheLettersKept)
{
    QImage image = textPicture(Qt::black, QColor(210, 210, 210), 13, 2);
    QPainter painter(&image);
    // The cursor on a line of its own, and one after the text of the first line.
    painter.fillRect(QRect(6, 4 + 13 * 3, 8, 15), QColor(210, 210, 210));
    painter.fillRect(QRect(300, 4, 8, 15), QColor(210, 210, 210));
    painter.end();
    QImage gray = OcrPreparation::luminance(image);
    const QImage before = gray;
    const OcrPreparation::TextLines lines = OcrPreparation::findTextLines(gray);
    EXPECT_EQ(OcrPreparation::eraseSolidBlocks(gray, lines), 2);
    EXPECT_LT(gray.constScanLine(4 + 13 * 3 + 7)[10], 40);
    EXPECT_LT(gray.constScanLine(10)[304], 40);
    // The letters are where they were.
    int same = 0, inked = 0;
    for (int y = 0; y < gray.height(); ++y)
        for (int x = 0; x < 290; ++x)
            if (before.constScanLine(y)[x] > 100 && y < 4 + 13 * 3 - 2) {
                ++inked;
                same += gray.constScanLine(y)[x] == before.constScanLine(y)[x] ? 1 : 0;
            }
    EXPECT_GT(inked, 100);
    EXPECT_EQ(same, inked);
}

TEST(OcrPreparation, NarrowStrokesAndRulesAreNoCursors)
{
    QImage image(200, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.fillRect(QRect(10, 5, 3, 16), Qt::black);  // a bold l
    painter.fillRect(QRect(30, 12, 80, 3), Qt::black); // a rule
    painter.end();
    QImage gray = OcrPreparation::luminance(image);
    EXPECT_EQ(OcrPreparation::eraseSolidBlocks(gray, OcrPreparation::findTextLines(gray)), 0);
}
