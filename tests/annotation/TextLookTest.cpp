#include "annotation/TextLook.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>

using namespace glimpso;

namespace {

// Fonts are sized against 72 dots per inch, where a point is one unit.
QSizeF metricsAt72Dpi(const QString &string, const QFont &font)
{
    QImage device(1, 1, QImage::Format_ARGB32_Premultiplied);
    device.setDotsPerMeterX(qRound(72 / 0.0254));
    device.setDotsPerMeterY(qRound(72 / 0.0254));
    const QFontMetricsF metrics(font, &device);
    return {metrics.horizontalAdvance(string), metrics.ascent() + metrics.descent()};
}

TextOptions options(double size, TextStyle style, TextFont font = TextFont::system())
{
    TextOptions result;
    result.size = size;
    result.style = style;
    result.font = font;
    return result;
}

QImage blank(QSize size, QColor fill)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(fill);
    return image;
}

// The smallest rectangle of pixels that differ from `background`.
QRect inkBounds(const QImage &image, QColor background)
{
    QRect bounds;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != background.rgb())
                bounds = bounds.united(QRect(x, y, 1, 1));
        }
    }
    return bounds;
}

int countPixels(const QImage &image, const QRect &area, QRgb colour)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixel(x, y) == colour;
    }
    return count;
}

} // namespace

// ---- fonts ----

TEST(TextLookFont, StandInFamiliesAreTheInstalledOnes)
{
    EXPECT_EQ(TextLook::familyFor(TextFont::serif()), "Noto Serif");
    EXPECT_EQ(TextLook::familyFor(TextFont::mono()), "Noto Sans Mono");
    EXPECT_EQ(TextLook::familyFor(TextFont::rounded()), "Quicksand");
    EXPECT_EQ(TextLook::familyFor(TextFont::system()), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
}

TEST(TextLookFont, NamedFamilyIsUsedWhenInstalled)
{
    EXPECT_EQ(TextLook::familyFor(TextFont::family("DejaVu Serif")), "DejaVu Serif");
}

TEST(TextLookFont, MissingFamilyFallsBackToTheSystemFont)
{
    EXPECT_EQ(TextLook::familyFor(TextFont::family("No Such Family Anywhere")),
              TextLook::familyFor(TextFont::system()));
}

TEST(TextLookFont, IsSemiboldAtTheOptionsSize)
{
    const QFont font = TextLook::font(options(31, TextStyle::plain, TextFont::serif()));
    EXPECT_EQ(font.weight(), QFont::DemiBold);
    EXPECT_DOUBLE_EQ(font.pointSizeF(), 31);
    EXPECT_EQ(QFontInfo(font).family(), "Noto Serif");
}

// ---- box size ----

TEST(TextLookBoxSize, EmptyStringIsTheInsetsDoubledRoundedUp)
{
    EXPECT_EQ(TextLook::boxSize("", options(20, TextStyle::plain)), QSizeF(4, 2));
    EXPECT_EQ(TextLook::boxSize("", options(20, TextStyle::outline)), QSizeF(5, 4));
    EXPECT_EQ(TextLook::boxSize("", options(20, TextStyle::background)), QSizeF(14, 6));
    EXPECT_EQ(TextLook::boxSize("", options(33, TextStyle::background)), QSizeF(24, 10));
}

class TextLookBoxSizeFor : public testing::TestWithParam<std::tuple<TextStyle, double>> {};

TEST_P(TextLookBoxSizeFor, IsTheMeasuredLinePlusTwiceTheInsetsRoundedUp)
{
    const auto [style, size] = GetParam();
    const TextOptions o = options(size, style);
    const QString string = QStringLiteral("Shipped v2.1, see #42");
    const QPointF inset = TextLook::insets(o);
    const QSizeF measured = TextLook::measure(string, TextLook::font(o));
    const QSizeF box = TextLook::boxSize(string, o);
    EXPECT_EQ(box.width(), std::ceil(measured.width() + 2 * inset.x()));
    EXPECT_EQ(box.height(), std::ceil(measured.height() + 2 * inset.y()));
    // The measure agrees with the font's own metrics at that size.
    const QSizeF metrics = metricsAt72Dpi(string, TextLook::font(o));
    EXPECT_NEAR(measured.width(), metrics.width(), 0.5 + 0.01 * metrics.width());
    EXPECT_NEAR(measured.height(), metrics.height(), 0.5);
    // A line of a text face is between one and one and a half em tall.
    EXPECT_GT(measured.height(), 1.0 * size);
    EXPECT_LT(measured.height(), 1.5 * size);
}

INSTANTIATE_TEST_SUITE_P(EveryStyleAndSize, TextLookBoxSizeFor,
                         testing::Combine(testing::Values(TextStyle::plain, TextStyle::outline, TextStyle::background),
                                          testing::Values(10.0, 20.0, 48.0)));

TEST(TextLookBoxSize, InsetsFollowTheStyle)
{
    EXPECT_EQ(TextLook::insets(options(50, TextStyle::plain)), QPointF(2, 1));
    EXPECT_EQ(TextLook::insets(options(50, TextStyle::outline)), QPointF(6, 5));
    EXPECT_EQ(TextLook::insets(options(50, TextStyle::background)), QPointF(17.5, 7));
}

TEST(TextLookBoxSize, TrailingSpacesWidenTheBox)
{
    const TextOptions o = options(20, TextStyle::plain);
    EXPECT_GT(TextLook::boxSize("word ", o).width(), TextLook::boxSize("word", o).width());
}

TEST(TextLookBoxSize, GrowsWithTheSize)
{
    const QSizeF small = TextLook::measure("Grow", TextLook::font(options(20, TextStyle::plain)));
    const QSizeF large = TextLook::measure("Grow", TextLook::font(options(40, TextStyle::plain)));
    EXPECT_NEAR(large.width(), 2 * small.width(), 0.5);
    EXPECT_NEAR(large.height(), 2 * small.height(), 0.5);
}

// ---- contrast ----

TEST(TextLookContrast, WhiteAndYellowGetBlackRedGetsWhite)
{
    EXPECT_EQ(TextLook::contrast(Qt::white), QColor(Qt::black));
    EXPECT_EQ(TextLook::contrast(QColor::fromRgbF(1.0, 0.905, 0.0)), QColor(Qt::black)); // luma 0.83
    EXPECT_EQ(TextLook::contrast(QColor(0xFF, 0xCC, 0x00)), QColor(Qt::black));          // luma 0.77
    EXPECT_EQ(TextLook::contrast(QColor(0xFF, 0x3B, 0x30)), QColor(Qt::white));
    EXPECT_EQ(TextLook::contrast(Qt::black), QColor(Qt::white));
}

TEST(TextLookContrast, OnlyLumaAbovePointSevenCountsAsLight)
{
    EXPECT_EQ(TextLook::contrast(QColor(178, 178, 178)), QColor(Qt::white)); // luma 0.698
    EXPECT_EQ(TextLook::contrast(QColor(179, 179, 179)), QColor(Qt::black)); // luma 0.702
}

TEST(TextLookContrast, InvalidColourGetsWhite)
{
    EXPECT_EQ(TextLook::contrast(QColor()), QColor(Qt::white));
}

TEST(TextLookContrast, ConvertsOtherColourModelsFirst)
{
    EXPECT_EQ(TextLook::contrast(QColor::fromHsvF(0, 0, 1)), QColor(Qt::black));
    EXPECT_EQ(TextLook::contrast(QColor::fromCmykF(0, 0, 0, 1)), QColor(Qt::white));
}

// ---- drawing ----

class TextLookDrawAt : public testing::TestWithParam<double> {};

TEST_P(TextLookDrawAt, PlainLettersStayInsideTheBox)
{
    const double scale = GetParam();
    const TextOptions o = options(24, TextStyle::plain);
    const QSizeF box = TextLook::boxSize("Hello", o);
    QImage image = blank(QSize(200, 80) * scale, Qt::white);
    QPainter painter(&image);
    painter.scale(scale, scale);
    const QRectF rect(QPointF(20, 10), box);
    TextLook::draw(painter, "Hello", o, Qt::black, rect);
    painter.end();

    const QRect ink = inkBounds(image, Qt::white);
    ASSERT_FALSE(ink.isEmpty());
    const QRectF inkPoints(ink.left() / scale, ink.top() / scale, ink.width() / scale, ink.height() / scale);
    EXPECT_TRUE(rect.adjusted(-0.5, -0.5, 0.5, 0.5).contains(inkPoints));
    // Letters fill most of the width and begin near the left inset.
    EXPECT_GT(inkPoints.width(), 0.8 * (box.width() - 4));
    EXPECT_NEAR(inkPoints.left(), rect.left() + 2, 3);
}

INSTANTIATE_TEST_SUITE_P(Scales, TextLookDrawAt, testing::Values(1.0, 2.0));

TEST(TextLookDraw, TextDrawnAtScaleTwoIsTheSameTextTwiceAsLarge)
{
    const TextOptions o = options(20, TextStyle::plain);
    QRect bounds[2];
    for (int i = 0; i < 2; ++i) {
        const double scale = i + 1;
        QImage image = blank(QSize(160, 60) * scale, Qt::white);
        QPainter painter(&image);
        painter.scale(scale, scale);
        TextLook::draw(painter, "Scale", o, Qt::black, QRectF(QPointF(10, 10), TextLook::boxSize("Scale", o)));
        painter.end();
        bounds[i] = inkBounds(image, Qt::white);
    }
    EXPECT_NEAR(bounds[1].width(), 2 * bounds[0].width(), 3);
    EXPECT_NEAR(bounds[1].height(), 2 * bounds[0].height(), 3);
}

TEST(TextLookDraw, OutlineLaysAContrastHaloAroundTheLetters)
{
    const QColor grey(128, 128, 128);
    const QColor red(0xFF, 0x3B, 0x30);
    const TextOptions o = options(40, TextStyle::outline);
    const QSizeF box = TextLook::boxSize("Halo", o);
    QImage image = blank(QSize(260, 100), grey);
    QPainter painter(&image);
    TextLook::draw(painter, "Halo", o, red, QRectF(QPointF(20, 20), box));
    painter.end();

    const QRect all = image.rect();
    EXPECT_GT(countPixels(image, all, QColor(Qt::white).rgb()), 100);
    EXPECT_GT(countPixels(image, all, red.rgb()), 100);
    // The halo is a ring: the pixel left of the first red pixel on a row
    // through the letters is white, not grey.
    const int row = 20 + int(box.height() / 2);
    int firstRed = -1;
    for (int x = 0; x < image.width() && firstRed < 0; ++x) {
        if (image.pixel(x, row) == red.rgb())
            firstRed = x;
    }
    ASSERT_GT(firstRed, 2);
    EXPECT_EQ(image.pixel(firstRed - 2, row), QColor(Qt::white).rgb());
}

TEST(TextLookDraw, BackgroundFillsARoundedPlateUnderContrastLetters)
{
    const QColor page(Qt::white);
    const QColor blue(0, 122, 255);
    const TextOptions o = options(30, TextStyle::background);
    const QSizeF box = TextLook::boxSize("Tag", o);
    const QRectF rect(QPointF(10, 10), box);
    QImage image = blank(QSize(200, 100), page);
    QPainter painter(&image);
    TextLook::draw(painter, "Tag", o, blue, rect);
    painter.end();

    const QPointF inset = TextLook::insets(o);
    EXPECT_EQ(image.pixel(QPointF(rect.left() + inset.x() / 2, rect.center().y()).toPoint()), blue.rgb());
    EXPECT_EQ(image.pixel(QPointF(rect.right() - inset.x() / 2, rect.center().y()).toPoint()), blue.rgb());
    // Corner radius 0.28 x 30 = 8.4: the very corner is left uncovered.
    EXPECT_EQ(image.pixel(10, 10), page.rgb());
    // Letters are white on blue, and nothing is drawn outside the plate.
    EXPECT_GT(countPixels(image, rect.toAlignedRect(), QColor(Qt::white).rgb()), 50);
    EXPECT_TRUE(rect.toAlignedRect().contains(inkBounds(image, page)));
}

TEST(TextLookDraw, WhiteBackgroundTextGetsBlackLettersAndRedGetsWhite)
{
    const QColor page(0, 128, 0);
    const TextOptions o = options(30, TextStyle::background);
    for (const auto &[plate, letters] : {std::pair{QColor(Qt::white), QColor(Qt::black)},
                                         std::pair{QColor(0xFF, 0x3B, 0x30), QColor(Qt::white)}}) {
        const QRectF rect(QPointF(10, 10), TextLook::boxSize("Wax", o));
        QImage image = blank(QSize(200, 100), page);
        QPainter painter(&image);
        TextLook::draw(painter, "Wax", o, plate, rect);
        painter.end();
        EXPECT_GT(countPixels(image, rect.toAlignedRect(), letters.rgb()), 50);
    }
}

TEST(TextLookDraw, InvalidColourFallsBackToRed)
{
    const TextOptions o = options(30, TextStyle::background);
    const QRectF rect(QPointF(0, 0), TextLook::boxSize("x", o));
    QImage image = blank(QSize(100, 60), Qt::white);
    QPainter painter(&image);
    TextLook::draw(painter, "x", o, QColor(), rect);
    painter.end();
    EXPECT_EQ(image.pixel(3, int(rect.center().y())), QColor(0xFF, 0x3B, 0x30).rgb());
}
