#include "appui/Lucide.h"

#include "ImageInk.h"

#include <gtest/gtest.h>

namespace {

bool onlyBlack(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) > 0 && (qRed(pixel) != 0 || qGreen(pixel) != 0 || qBlue(pixel) != 0))
                return false;
        }
    return true;
}

} // namespace

TEST(Lucide, EveryIconDrawsAtTheToolbarAndMenuSizesAndStrokes)
{
    for (int index = 0; index < Lucide::iconCount; ++index) {
        const Lucide icon(static_cast<Lucide::Icon>(index));
        for (const qreal size : {15.0, 16.0, 18.0})
            for (const qreal stroke : {1.5, 1.75, 2.0}) {
                const QImage image = icon.image(size, stroke);
                SCOPED_TRACE(icon.rawValue().toStdString() + " " + std::to_string(size) + " " + std::to_string(stroke));
                ASSERT_EQ(image.size(), QSize(int(size), int(size)));
                EXPECT_GT(inkOf(image), 255 * 4) << "no strokes drawn";
                EXPECT_TRUE(onlyBlack(image)) << "a template icon is black with alpha";
            }
    }
}

TEST(Lucide, RawValuesAreTheCaseNames)
{
    EXPECT_EQ(Lucide(Lucide::mousePointer).rawValue(), "mousePointer");
    EXPECT_EQ(Lucide(Lucide::scanText).rawValue(), "scanText");
    EXPECT_EQ(Lucide(Lucide::power).rawValue(), "power");
}

TEST(Lucide, NamesMissingFromTheSetMapToTheNearestShape)
{
    EXPECT_EQ(Lucide(Lucide::line).setName(), "slash");
    EXPECT_EQ(Lucide(Lucide::counter).setName(), "hash");
    EXPECT_EQ(Lucide(Lucide::mosaic).setName(), "grid-3x3");
    EXPECT_EQ(Lucide(Lucide::stopSquare).setName(), "square-stop");
    EXPECT_EQ(Lucide(Lucide::cloudUpload).setName(), "cloud-upload");
}

TEST(Lucide, AThickerStrokeDrawsMoreInk)
{
    const Lucide icon(Lucide::square);
    EXPECT_GT(inkOf(icon.image(18, 2.0)), inkOf(icon.image(18, 1.5)));
}

TEST(Lucide, TheCacheGivesTheSameImageForTheSameNameSizeAndStroke)
{
    const Lucide icon(Lucide::pencil);
    EXPECT_EQ(icon.image(16, 2).cacheKey(), icon.image(16, 2).cacheKey());
    EXPECT_NE(icon.image(16, 2).cacheKey(), icon.image(16, 1.5).cacheKey());
    EXPECT_NE(icon.image(16, 2).cacheKey(), icon.image(15, 2).cacheKey());
}

TEST(Lucide, HighDensityImagesHaveMorePixelsAndTheSameSizeInPoints)
{
    const QImage image = Lucide(Lucide::copy).image(16, 2, 2.0);
    EXPECT_EQ(image.size(), QSize(32, 32));
    EXPECT_EQ(image.deviceIndependentSize(), QSizeF(16, 16));
}

TEST(Lucide, TintedImagesTakeTheTintWhereTheTemplateHasInk)
{
    const QImage tinted = Lucide(Lucide::x).tinted(18, 2, QColor(255, 0, 0));
    const QImage plain = Lucide(Lucide::x).image(18, 2);
    EXPECT_EQ(inkOf(tinted), inkOf(plain));
    bool sawInk = false;
    for (int y = 0; y < tinted.height(); ++y)
        for (int x = 0; x < tinted.width(); ++x) {
            const QRgb pixel = tinted.pixel(x, y);
            if (qAlpha(pixel) == 255) {
                sawInk = true;
                EXPECT_EQ(qRed(pixel), 255);
                EXPECT_EQ(qGreen(pixel), 0);
            }
        }
    EXPECT_TRUE(sawInk);
}

TEST(Lucide, TheDocumentSetsSizeViewBoxAndStroke)
{
    const QByteArray document = Lucide::svgDocument("<path d=\"M1 1 23 23\" />", 15, 1.75);
    EXPECT_TRUE(document.contains("xmlns=\"http://www.w3.org/2000/svg\""));
    EXPECT_TRUE(document.contains("width=\"15\" height=\"15\""));
    EXPECT_TRUE(document.contains("viewBox=\"0 0 24 24\""));
    EXPECT_TRUE(document.contains("fill=\"none\" stroke=\"black\" stroke-width=\"1.75\""));
    EXPECT_TRUE(document.contains("stroke-linecap=\"round\" stroke-linejoin=\"round\""));
    EXPECT_TRUE(document.endsWith("<path d=\"M1 1 23 23\" /></svg>"));
}

TEST(Lucide, ElementsAreWhatLiesInsideTheSvgElement)
{
    const QByteArray file = "<!-- licence -->\n<svg\n  class=\"lucide\"\n  width=\"24\"\n>\n  <circle cx=\"12\" cy=\"12\" r=\"10\" />\n</svg>\n";
    EXPECT_EQ(Lucide::elementsOf(file), "<circle cx=\"12\" cy=\"12\" r=\"10\" />");
    EXPECT_TRUE(Lucide::elementsOf("not svg at all").isEmpty());
}

TEST(Lucide, AShapeThatCannotBeDrawnGivesAnEmptyImageOfTheSize)
{
    const QImage image = Lucide::render(Lucide::svgDocument("<path d=", 16, 2), 16, 1);
    EXPECT_EQ(image.size(), QSize(16, 16));
    EXPECT_EQ(inkOf(image), 0);
}
