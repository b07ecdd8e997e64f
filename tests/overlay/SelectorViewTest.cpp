#include "overlay/SelectorView.h"

#include "annotation/TextEntryField.h"
#include "annotation/AnnotationRenderer.h"
#include "annotation/DrawingRules.h"
#include "overlay/SelectionCanvas.h"
#include "ViewHarness.h"
#include "settings/AppSettings.h"

#include <gtest/gtest.h>

#include <QPixmap>

namespace {

// A 200×100 display: left half red, right half blue, one green pixel.
ScreenSnapshot redBlue()
{
    QImage image(200, 100, QImage::Format_RGB32);
    image.fill(QColor(200, 30, 40));
    for (int y = 0; y < 100; ++y)
        for (int x = 100; x < 200; ++x)
            image.setPixel(x, y, qRgb(10, 120, 250));
    image.setPixel(42, 17, qRgb(0, 255, 0));
    return {1, image, QRectF(0, 0, 200, 100), 1.0};
}

int channelDistance(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
}

QRgb halfDimmed(QRgb c) { return qRgb(qRed(c) / 2, qGreen(c) / 2, qBlue(c) / 2); }

} // namespace

TEST(SelectorView, GlobalPointsMapToTheWindowWithYDown)
{
    ViewHarness h(redBlue());
    // The display's top left is the global point (0, 100).
    EXPECT_EQ(h.view.toLocal(QPointF(0, 100)), QPointF(0, 0));
    EXPECT_EQ(h.view.toLocal(QPointF(42, 83)), QPointF(42, 17));
    EXPECT_EQ(h.view.toGlobal(QPointF(42, 17)), QPointF(42, 83));
}

TEST(SelectorView, BeforeADragTheWholeFrozenScreenIsDimmed)
{
    ViewHarness h(redBlue());
    const QImage shot = h.picture();
    EXPECT_LE(channelDistance(shot.pixel(10, 90), halfDimmed(qRgb(200, 30, 40))), 1);
    EXPECT_LE(channelDistance(shot.pixel(150, 90), halfDimmed(qRgb(10, 120, 250))), 1);
    EXPECT_TRUE(h.view.hintShown());
}

TEST(SelectorView, TheSelectionShowsTheFrozenScreenPixelForPixel)
{
    ViewHarness h(redBlue());
    // Local (30..80, 10..40) is global (30..80, 60..90).
    h.canvas.mouseDown({30, 90});
    h.canvas.mouseDragged({80, 60}, Qt::NoModifier);
    h.canvas.mouseUp({80, 60});
    ASSERT_TRUE(h.canvas.isArmed());
    const QImage shot = h.picture();
    const ScreenSnapshot snapshot = redBlue();
    // Inside the hole, away from the outline: exactly the snapshot.
    EXPECT_EQ(shot.pixel(42, 17), snapshot.image.pixel(42, 17));
    EXPECT_EQ(shot.pixel(60, 30), snapshot.image.pixel(60, 30));
    // Outside: dimmed.
    EXPECT_LE(channelDistance(shot.pixel(10, 90), halfDimmed(qRgb(200, 30, 40))), 1);
    EXPECT_LE(channelDistance(shot.pixel(150, 60), halfDimmed(qRgb(10, 120, 250))), 1);
}

TEST(SelectorView, TheHintStaysDuringTheFirstDragAndGoesOnceArmed)
{
    ViewHarness h(redBlue());
    h.canvas.mouseDown({30, 90});
    h.canvas.mouseDragged({80, 60}, Qt::NoModifier);
    EXPECT_TRUE(h.view.hintShown());
    EXPECT_FALSE(h.view.handlesShown());
    h.canvas.mouseUp({80, 60});
    EXPECT_FALSE(h.view.hintShown());
    EXPECT_TRUE(h.view.handlesShown());
}

TEST(SelectorView, TheHandlesAreDrawnInTheAccentColour)
{
    ViewHarness h(redBlue());
    h.canvas.mouseDown({30, 90});
    h.canvas.mouseUp({80, 60});
    ASSERT_TRUE(h.canvas.isArmed());
    const QImage shot = h.picture();
    // The centre of the bottom right handle, at local (80, 40).
    EXPECT_LE(channelDistance(shot.pixel(80, 40), qRgb(0xeb, 0xeb, 0xeb)), 2);
}

TEST(SelectorView, TheBadgeShowsThePixelSize)
{
    ViewHarness h(redBlue());
    h.canvas.mouseDown({30, 90});
    h.canvas.mouseDragged({80, 60}, Qt::NoModifier);
    EXPECT_EQ(h.view.badgeText(), QStringLiteral("50 × 30"));
    ASSERT_TRUE(h.view.badgeFrame());
    // Its top level with the selection's top.
    EXPECT_EQ(h.view.badgeFrame()->bottom(), 90);
}

TEST(SelectorView, ADragRepaintsOnlyAroundTheChangedEdges)
{
    QImage big(3840, 2160, QImage::Format_RGB32);
    big.fill(Qt::darkCyan);
    ViewHarness h({1, big, QRectF(0, 0, 3840, 2160), 1.0});
    h.canvas.mouseDown({100, 2000});
    h.canvas.mouseDragged({2000, 500}, Qt::NoModifier);
    h.canvas.mouseDragged({2010, 490}, Qt::NoModifier);
    h.view.renderLiveDrag(*h.canvas.liveRect());
    const QRegion damage = h.view.lastDamage();
    qint64 area = 0;
    for (const QRect &rect : damage)
        area += qint64(rect.width()) * rect.height();
    // The selection spans 1910×1510 points; what changed is a band along two edges.
    EXPECT_GT(area, 0);
    EXPECT_LT(area, qint64(3840) * 2160 / 20);
}

TEST(SelectorView, HostsTheTextFieldWithRectanglesMappedToTheWindow)
{
    ViewHarness h(redBlue());
    const std::optional<glimpso::TextHost> host = h.canvas.textHost(QPointF(42, 83));
    ASSERT_TRUE(host);
    EXPECT_EQ(host->host, static_cast<glimpso::TextEntryHost *>(&h.view));
    // Global (40, 70)-(100, 90) is the window's (40, 10)-(100, 30).
    EXPECT_EQ(host->toLocal(QRectF(40, 70, 60, 20)), QRectF(40, 10, 60, 20));
    glimpso::TextEntryField *field = h.view.openField(QRectF(40, 10, 60, 20));
    ASSERT_TRUE(field);
    auto *widget = dynamic_cast<QWidget *>(field);
    ASSERT_TRUE(widget);
    EXPECT_EQ(widget->parentWidget(), &h.view);
    EXPECT_EQ(widget->geometry(), QRect(40, 10, 60, 20));
    h.view.closeField(field);
    EXPECT_FALSE(widget->isVisible());
}

namespace {

// Half dark, half light: highlights and text over both.
ScreenSnapshot darkLight()
{
    QImage image(400, 200, QImage::Format_RGB32);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 400; ++x)
            image.setPixel(x, y, x < 200 ? qRgb(30, 32, 36) : qRgb(230, 228, 224));
    // Some texture, so that the mosaic's blocks differ.
    for (int y = 0; y < 200; y += 3)
        for (int x = 0; x < 400; x += 5)
            image.setPixel(x, y, qRgb((x * 7) % 256, (y * 5) % 256, (x + y) % 256));
    return {1, image, QRectF(0, 0, 400, 200), 1.0};
}

glimpso::TextOptions styled(glimpso::TextStyle style)
{
    glimpso::TextOptions options;
    options.size = 20;
    options.style = style;
    return options;
}

} // namespace

TEST(SelectorView, TheLiveMarksAreThePixelsThatAreSaved)
{
    const ScreenSnapshot snapshot = darkLight();
    ViewHarness h(snapshot);
    // The whole display selected, so no dim lies over the marks.
    h.canvas.mouseDown({0, 0});
    h.canvas.mouseUp({400, 200});
    ASSERT_TRUE(h.canvas.isArmed());

    // Global points, y up.
    const QList<glimpso::Annotation> marks = {
        glimpso::Annotation::rect(QRectF(20, 120, 100, 60), QColor(255, 59, 48), 4),
        glimpso::Annotation::highlight({QPointF(30, 60), QPointF(370, 60)}, glimpso::Annotation::highlightYellow(), 18),
        glimpso::Annotation::text(QStringLiteral("Ag plain"), QPointF(220, 190), styled(glimpso::TextStyle::plain),
                                  QColor(20, 90, 240)),
        glimpso::Annotation::text(QStringLiteral("Ag outline"), QPointF(220, 150), styled(glimpso::TextStyle::outline),
                                  QColor(20, 200, 90)),
        glimpso::Annotation::text(QStringLiteral("Ag plate"), QPointF(40, 100), styled(glimpso::TextStyle::background),
                                  QColor(240, 200, 20)),
        glimpso::Annotation::mosaic(QRectF(250, 20, 100, 50), 16),
    };
    h.view.renderAnnotations(marks);
    const QImage live = h.picture();

    QList<glimpso::Annotation> imageSpace;
    for (const glimpso::Annotation &mark : marks)
        imageSpace.append(glimpso::DrawingRules::toImageSpace(mark, snapshot.frame));
    const QImage saved =
        glimpso::AnnotationRenderer::flatten(snapshot.image, imageSpace, 1.0).convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(saved.size(), live.size());

    // Away from the selection's outline and the size badge at the top right.
    int compared = 0, differing = 0, marked = 0;
    for (int y = 30; y < 190; ++y) {
        for (int x = 10; x < 390; ++x) {
            ++compared;
            if (saved.pixel(x, y) != snapshot.image.pixel(x, y))
                ++marked;
            if (channelDistance(live.pixel(x, y), saved.pixel(x, y)) > 8)
                ++differing;
        }
    }
    // The marks are there at all, and the live view agrees with the saved
    // picture but for anti-aliasing.
    EXPECT_GT(marked, compared / 10);
    EXPECT_LT(differing, compared / 200) << differing << " of " << compared << " pixels differ";
}

namespace {

// A display whose picture has only one colour channel, varying.
ScreenSnapshot oneChannel(int id, QRectF frame, int channel)
{
    QImage image(frame.size().toSize(), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int v = (x * 11 + y * 7) % 256;
            image.setPixel(x, y, channel == 0 ? qRgb(v, 0, 0) : qRgb(0, 0, v));
        }
    }
    return {quint32(id), image, frame, 1.0};
}

} // namespace

TEST(SelectorView, AMosaicAcrossTwoDisplaysShowsEachDisplaysOwnBlocks)
{
    const ScreenSnapshot left = oneChannel(1, QRectF(0, 0, 200, 100), 0);
    const ScreenSnapshot right = oneChannel(2, QRectF(200, 0, 200, 100), 2);
    MemorySettingsStorage storage;
    InertLoginItem login;
    AppSettings settings(storage, login);
    SelectionCanvas canvas({left, right}, CaptureIntent::image, settings, [](const RegionResult &) {});
    const DesktopSpace space(QRect(0, 0, 200, 100));
    const OverlayLook look = OverlayLook::make("#000000", 0.5, "#EBEBEB", CaptureIntent::image);
    SelectorView leftView(&canvas, left, space, QRect(0, 0, 200, 100), look);
    SelectorView rightView(&canvas, right, space, QRect(200, 0, 200, 100), look);
    canvas.addSurface(&leftView);
    canvas.addSurface(&rightView);
    canvas.mouseDown({0, 0});
    canvas.mouseUp({400, 100});
    ASSERT_TRUE(canvas.isArmed());

    canvas.renderAnnotations({glimpso::Annotation::mosaic(QRectF(120, 20, 160, 60), 16)});
    const QImage leftShown = leftView.grab().toImage(), rightShown = rightView.grab().toImage();
    int leftChanged = 0, rightChanged = 0;
    for (int y = 25; y < 75; ++y) {
        for (int x = 0; x < 75; ++x) {
            // Each display's blocks come from its own picture: no blue on the
            // red display's part, no red on the blue one's.
            const QRgb l = leftShown.pixel(125 + x, y), r = rightShown.pixel(x, y);
            EXPECT_EQ(qBlue(l), 0);
            EXPECT_EQ(qRed(r), 0);
            leftChanged += l != left.image.pixel(125 + x, y);
            rightChanged += r != right.image.pixel(x, y);
        }
    }
    EXPECT_GT(leftChanged, 75 * 50 / 2);
    EXPECT_GT(rightChanged, 75 * 50 / 2);
    // Outside the mosaic, each display shows its own picture.
    EXPECT_EQ(leftShown.pixel(50, 50), left.image.pixel(50, 50));
    EXPECT_EQ(rightShown.pixel(150, 50), right.image.pixel(150, 50));
}
