#include "platform/x11/CaptureService.h"

#include "RootPainter.h"
#include "XvfbServer.h"
#include "acquire/RegionCompositor.h"
#include "appbase/AppError.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QThread>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr QSize serverSize(320, 240);


class CaptureServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(serverSize);
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        painter = std::make_unique<RootPainter>(server->display());
        ASSERT_TRUE(painter->ok());
        // Two "displays" side by side, like two monitors on one root window.
        painter->fill(QRect(0, 0, 160, 240), qRgb(200, 30, 40));
        painter->fill(QRect(160, 0, 160, 240), qRgb(10, 120, 250));
        painter->fill(QRect(20, 30, 5, 7), qRgb(0, 255, 0));
        painter->fill(QRect(300, 230, 20, 10), qRgb(255, 255, 0));
        painter->sync();
        service = std::make_unique<CaptureService>(server->display(), [this](std::uint32_t id) -> std::optional<QRect> {
            if (id == 4) // a display whose size the test changes
                return resizable;
            if (id == 1)
                return QRect(0, 0, 160, 240);
            if (id == 2)
                return QRect(160, 0, 160, 240);
            if (id == 3) // reaches past the root window
                return QRect(300, 200, 100, 100);
            return std::nullopt;
        });
    }

    void expectKnownPixels(const QImage &left, const QImage &right)
    {
        ASSERT_EQ(left.size(), QSize(160, 240));
        ASSERT_EQ(right.size(), QSize(160, 240));
        EXPECT_EQ(left.format(), QImage::Format_RGB32);
        EXPECT_EQ(left.pixel(0, 0), qRgb(200, 30, 40));
        expectOpaqueInMemory(left);
        expectOpaqueInMemory(right);
        EXPECT_EQ(left.pixel(19, 30), qRgb(200, 30, 40));
        EXPECT_EQ(left.pixel(20, 30), qRgb(0, 255, 0));
        EXPECT_EQ(left.pixel(24, 36), qRgb(0, 255, 0));
        EXPECT_EQ(left.pixel(25, 36), qRgb(200, 30, 40));
        EXPECT_EQ(left.pixel(159, 239), qRgb(200, 30, 40));
        EXPECT_EQ(right.pixel(0, 0), qRgb(10, 120, 250));
        EXPECT_EQ(right.pixel(139, 229), qRgb(10, 120, 250));
        EXPECT_EQ(right.pixel(140, 230), qRgb(255, 255, 0));
        EXPECT_EQ(right.pixel(159, 239), qRgb(255, 255, 0));
    }

    // RGB32 promises 0xff in every pixel's top byte, and QPainter copies that
    // byte as it is onto a canvas with alpha (pixel() would hide it).
    static void expectOpaqueInMemory(const QImage &image)
    {
        for (int y = 0; y < image.height(); ++y) {
            const auto *line = reinterpret_cast<const std::uint32_t *>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x)
                ASSERT_EQ(line[x] >> 24, 0xffu) << x << "," << y;
        }
    }

    // A picture of the display, held by the caller alone. The worker that
    // took it lets go of its own copy a moment after handing it over, and the
    // block only comes back when every copy is gone: tests that count blocks
    // wait for that.
    QImage capture(std::uint32_t displayID)
    {
        QImage image = service->captureDisplay(displayID).result();
        QDeadlineTimer deadline(5000);
        while (!image.isDetached() && !deadline.hasExpired())
            QThread::yieldCurrentThread();
        EXPECT_TRUE(image.isDetached());
        return image;
    }

    std::unique_ptr<XvfbServer> server;
    std::unique_ptr<RootPainter> painter;
    std::unique_ptr<CaptureService> service;
    QRect resizable{0, 0, 160, 240};
};

AppError::Case failureOf(QFuture<QImage> future, QString *description = nullptr)
{
    try {
        future.waitForFinished();
    } catch (const AppError &error) {
        if (description)
            *description = error.errorDescription();
        return error.kind();
    }
    ADD_FAILURE() << "the capture did not fail";
    return AppError::Case::keychainDenied;
}

} // namespace

TEST_F(CaptureServiceTest, EachDisplayIsItsOwnPartOfTheRootThroughSharedMemory)
{
    const QImage left = service->captureDisplay(1).result();
    const QImage right = service->captureDisplay(2).result();
    expectKnownPixels(left, right);
}

TEST_F(CaptureServiceTest, TheServersCopyIntoSharedMemoryGivesTheSamePixels)
{
    service->setRenderAllowed(false);
    const QImage left = capture(1);
    const QImage right = capture(2);
    expectKnownPixels(left, right);
    service->setRenderAllowed(true);
    EXPECT_EQ(capture(1), left);
}

TEST_F(CaptureServiceTest, LaterCapturesReuseOneSharedBlock)
{
    for (const QRgb colour : {qRgb(1, 2, 3), qRgb(4, 5, 6), qRgb(7, 8, 9)}) {
        painter->fill(QRect(0, 0, 160, 240), colour);
        painter->sync();
        const QImage image = capture(1);
        EXPECT_EQ(image.pixel(0, 0), colour);
        EXPECT_EQ(image.pixel(159, 239), colour);
        expectOpaqueInMemory(image);
    }
    EXPECT_EQ(service->sharedBlocksMade(), 1);
    EXPECT_EQ(service->sharedBlockCount(), 1);
}

TEST_F(CaptureServiceTest, APictureStillHeldIsNotWrittenOverByTheNextCapture)
{
    const QImage held = capture(1);
    const QImage before = held.copy();
    painter->fill(QRect(0, 0, 160, 240), qRgb(1, 2, 3));
    painter->sync();
    const QImage next = capture(1);
    EXPECT_EQ(next.pixel(20, 30), qRgb(1, 2, 3));
    EXPECT_EQ(held, before);
    EXPECT_EQ(held.pixel(20, 30), qRgb(0, 255, 0));
    EXPECT_EQ(service->sharedBlocksMade(), 2);
}

TEST_F(CaptureServiceTest, AnUnchangedCopyHoldsThePictureAsTheOriginalWould)
{
    QImage original = capture(1);
    const QImage copy = original;
    original = QImage();
    painter->fill(QRect(0, 0, 160, 240), qRgb(1, 2, 3));
    painter->sync();
    EXPECT_EQ(capture(1).pixel(0, 0), qRgb(1, 2, 3));
    EXPECT_EQ(copy.pixel(0, 0), qRgb(200, 30, 40));
    EXPECT_EQ(copy.pixel(20, 30), qRgb(0, 255, 0));
}

TEST_F(CaptureServiceTest, AChangedCopyHasItsOwnPixelsAndFreesTheBlock)
{
    QImage original = capture(1);
    QImage changed = original;
    changed.setPixel(0, 0, qRgb(9, 9, 9));
    EXPECT_EQ(original.pixel(0, 0), qRgb(200, 30, 40));
    original = QImage();
    painter->fill(QRect(0, 0, 160, 240), qRgb(1, 2, 3));
    painter->sync();
    EXPECT_EQ(capture(1).pixel(1, 1), qRgb(1, 2, 3));
    // The block came back when the original went: the copy lives elsewhere.
    EXPECT_EQ(service->sharedBlocksMade(), 1);
    EXPECT_EQ(changed.pixel(0, 0), qRgb(9, 9, 9));
    EXPECT_EQ(changed.pixel(1, 1), qRgb(200, 30, 40));
}

TEST_F(CaptureServiceTest, ADisplayThatGrowsGetsALargerBlockAndTheSmallOneGoes)
{
    EXPECT_EQ(capture(4).size(), QSize(160, 240));
    resizable = QRect(0, 0, 320, 240);
    const QImage grown = capture(4);
    ASSERT_EQ(grown.size(), QSize(320, 240));
    EXPECT_EQ(grown.pixel(20, 30), qRgb(0, 255, 0));
    EXPECT_EQ(grown.pixel(200, 100), qRgb(10, 120, 250));
    EXPECT_EQ(grown.pixel(319, 239), qRgb(255, 255, 0));
    expectOpaqueInMemory(grown);
    EXPECT_EQ(service->sharedBlocksMade(), 2);
    EXPECT_EQ(service->sharedBlockCount(), 1);
}

TEST_F(CaptureServiceTest, ADisplayThatShrinksALittleKeepsItsBlockAndOneThatShrinksALotGetsItsOwn)
{
    resizable = QRect(0, 0, 320, 240);
    capture(4);
    resizable = QRect(160, 0, 160, 240);
    const QImage half = capture(4);
    ASSERT_EQ(half.size(), QSize(160, 240));
    EXPECT_EQ(half.pixel(0, 0), qRgb(10, 120, 250));
    EXPECT_EQ(service->sharedBlocksMade(), 1);

    resizable = QRect(300, 230, 20, 10);
    const QImage small = capture(4);
    ASSERT_EQ(small.size(), QSize(20, 10));
    EXPECT_EQ(small.pixel(0, 0), qRgb(255, 255, 0));
    EXPECT_EQ(service->sharedBlocksMade(), 2);
}

TEST_F(CaptureServiceTest, ABlockNoLongerAskedForIsGivenUp)
{
    resizable = QRect(0, 0, 320, 240);
    capture(4);
    resizable = QRect(300, 230, 20, 10);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(capture(4).pixel(0, 0), qRgb(255, 255, 0));
    EXPECT_EQ(service->sharedBlockCount(), 1);
    EXPECT_EQ(service->sharedBlocksMade(), 2);
}

TEST_F(CaptureServiceTest, TwoDisplaysHeldTogetherUseTwoBlocksEveryCapture)
{
    for (int round = 0; round < 3; ++round) {
        const QImage left = capture(1);
        const QImage right = capture(2);
        expectKnownPixels(left, right);
    }
    EXPECT_EQ(service->sharedBlocksMade(), 2);
    EXPECT_EQ(service->sharedBlockCount(), 2);
}

TEST_F(CaptureServiceTest, BlocksMadeReadyAheadServeTheFirstCaptures)
{
    service->prepare({QRect(0, 0, 160, 240), QRect(160, 0, 160, 240)}).waitForFinished();
    EXPECT_EQ(service->sharedBlockCount(), 2);
    const QImage left = capture(1);
    const QImage right = capture(2);
    expectKnownPixels(left, right);
    EXPECT_EQ(service->sharedBlocksMade(), 2);
}

TEST_F(CaptureServiceTest, WithoutSharedMemoryNothingIsMadeReadyAhead)
{
    service->setSharedMemoryAllowed(false);
    service->prepare({QRect(0, 0, 160, 240)}).waitForFinished();
    EXPECT_EQ(service->sharedBlockCount(), 0);
    EXPECT_EQ(capture(1).pixel(20, 30), qRgb(0, 255, 0));
}

TEST_F(CaptureServiceTest, GetImageGivesTheSamePixels)
{
    service->setSharedMemoryAllowed(false);
    const QImage left = service->captureDisplay(1).result();
    const QImage right = service->captureDisplay(2).result();
    expectKnownPixels(left, right);
    service->setSharedMemoryAllowed(true);
    EXPECT_EQ(service->captureDisplay(1).result(), left);
}

TEST_F(CaptureServiceTest, PicturesStayFrozenWhenTheScreenChanges)
{
    const QImage before = service->captureDisplay(1).result();
    painter->fill(QRect(0, 0, 160, 240), qRgb(1, 2, 3));
    painter->sync();
    EXPECT_EQ(before.pixel(0, 0), qRgb(200, 30, 40));
    EXPECT_EQ(service->captureDisplay(1).result().pixel(0, 0), qRgb(1, 2, 3));
}

TEST_F(CaptureServiceTest, ADisplayReachingPastTheRootIsCutToIt)
{
    const QImage image = service->captureDisplay(3).result();
    ASSERT_EQ(image.size(), QSize(20, 40));
    EXPECT_EQ(image.pixel(19, 39), qRgb(255, 255, 0));
}

TEST_F(CaptureServiceTest, UnknownDisplayIsCaptureFailed)
{
    QString description;
    EXPECT_EQ(failureOf(service->captureDisplay(99), &description), AppError::Case::captureFailed);
    EXPECT_TRUE(description.startsWith("Capture failed: ")) << description.toStdString();
}

TEST_F(CaptureServiceTest, WithoutDesktopWindowsHidingIconsIsThePlainPicture)
{
    EXPECT_FALSE(service->hasDesktopWindows());
    const QImage hidden = service->captureDisplayHidingDesktopIcons(1, 1.0).result();
    EXPECT_EQ(hidden, service->captureDisplay(1).result());
}

TEST_F(CaptureServiceTest, WithADesktopWindowHidingIconsFallsBackToThePlainPicture)
{
    painter->announceDesktopWindow();
    EXPECT_TRUE(service->hasDesktopWindows());
    const QImage hidden = service->captureDisplayHidingDesktopIcons(2, 1.0).result();
    EXPECT_EQ(hidden, service->captureDisplay(2).result());
}

TEST(CaptureServiceWithoutServer, NoServerIsCaptureFailed)
{
    CaptureService service(":65000", [](std::uint32_t) { return QRect(0, 0, 10, 10); });
    EXPECT_EQ(failureOf(service.captureDisplay(1)), AppError::Case::captureFailed);
}

TEST_F(CaptureServiceTest, PicturesOfTwoDisplaysJoinAcrossTheSeam)
{
    const QImage left = service->captureDisplay(1).result();
    const QImage right = service->captureDisplay(2).result();
    // Global points: both displays 240 high, y up from their bottom edge.
    const QList<ScreenSnapshot> snapshots{ScreenSnapshot{1, left, QRectF(0, 0, 160, 240), 1.0},
                                          ScreenSnapshot{2, right, QRectF(160, 0, 160, 240), 1.0}};
    const auto joined = RegionCompositor::compose(QRectF(100, 0, 240, 240), snapshots);
    ASSERT_EQ(joined.image.size(), QSize(240, 240));
    EXPECT_EQ(joined.image.pixel(0, 0), qRgb(200, 30, 40));
    EXPECT_EQ(joined.image.pixel(59, 239), qRgb(200, 30, 40));
    EXPECT_EQ(joined.image.pixel(60, 0), qRgb(10, 120, 250));
    EXPECT_EQ(joined.image.pixel(200, 230), qRgb(255, 255, 0));
    // The right display's picture ends at the root's edge, 20 points short.
    EXPECT_EQ(qAlpha(joined.image.pixel(219, 120)), 255);
    EXPECT_EQ(qAlpha(joined.image.pixel(220, 120)), 0);
}

namespace {

// A display too large for a capture to make a shared block of its own
// (1280x1024 is 5 MiB), each row of it in a colour of its own, so that a row
// of the picture out of place, missing or doubled where the pieces it is sent
// in through the socket meet, shows.
class LargeDisplayCaptureTest : public ::testing::Test
{
protected:
    static constexpr QSize size{1280, 1024};

    static QRgb rowColour(int y) { return qRgb(y & 0xff, y >> 8, 77); }

    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(size);
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        painter = std::make_unique<RootPainter>(server->display());
        ASSERT_TRUE(painter->ok());
        for (int y = 0; y < size.height(); ++y)
            painter->fill(QRect(0, y, size.width(), 1), rowColour(y));
        painter->fill(QRect(1279, 818, 1, 1), qRgb(0, 0, 255));
        painter->sync();
        service = std::make_unique<CaptureService>(server->display(), [](std::uint32_t id) -> std::optional<QRect> {
            return id == 1 ? std::optional<QRect>(QRect(QPoint(0, 0), size)) : std::nullopt;
        });
    }

    static void expectPaintedPixels(const QImage &image, QPoint origin = {})
    {
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y) {
            ASSERT_EQ(image.pixel(0, y), rowColour(origin.y() + y)) << "row " << y;
            const QPoint marker = QPoint(1279, 818) - origin;
            if (y != marker.y())
                ASSERT_EQ(image.pixel(image.width() - 1, y), rowColour(origin.y() + y)) << "row " << y;
            else
                ASSERT_EQ(image.pixel(marker.x(), y), qRgb(0, 0, 255));
            const auto *line = reinterpret_cast<const std::uint32_t *>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x)
                ASSERT_EQ(line[x] >> 24, 0xffu) << x << "," << y;
        }
    }

    std::unique_ptr<XvfbServer> server;
    std::unique_ptr<RootPainter> painter;
    std::unique_ptr<CaptureService> service;
};

} // namespace

TEST_F(LargeDisplayCaptureTest, WithoutABlockMadeAheadThePictureComesInPiecesThroughOneSmallBlock)
{
    for (int i = 0; i < 2; ++i) {
        const QImage image = service->captureDisplay(1).result();
        ASSERT_EQ(image.size(), size);
        expectPaintedPixels(image);
    }
    // One block for the pieces, far smaller than the picture, and kept for
    // the next capture.
    EXPECT_EQ(service->sharedBlocksMade(), 1);
    EXPECT_EQ(service->sharedBlockCount(), 1);
    service->releaseKeptMemory();
    EXPECT_EQ(service->sharedBlockCount(), 0);
}

TEST_F(LargeDisplayCaptureTest, ABlockIsMadeReadyAfterACaptureInPiecesAndServesTheNext)
{
    EXPECT_TRUE(service->keepMemoryReady().isFinished());
    service->captureDisplay(1).result();
    ASSERT_EQ(service->sharedBlocksMade(), 1); // the small one
    service->keepMemoryReady().waitForFinished();
    EXPECT_EQ(service->sharedBlocksMade(), 2);
    const QImage image = service->captureDisplay(1).result();
    ASSERT_EQ(image.size(), size);
    expectPaintedPixels(image);
    EXPECT_EQ(service->sharedBlocksMade(), 2);
    // Nothing more wanted: nothing more made.
    service->keepMemoryReady().waitForFinished();
    EXPECT_EQ(service->sharedBlocksMade(), 2);
}

TEST_F(LargeDisplayCaptureTest, WithoutSharedMemoryThePictureComesInPiecesThroughTheSocket)
{
    service->setSharedMemoryAllowed(false);
    const QImage image = service->captureDisplay(1).result();
    ASSERT_EQ(image.size(), size);
    expectPaintedPixels(image);
    EXPECT_EQ(service->sharedBlocksMade(), 0);
}

TEST_F(LargeDisplayCaptureTest, ABlockMadeAheadServesTheCapture)
{
    service->prepare({QRect(QPoint(0, 0), size)}).waitForFinished();
    ASSERT_EQ(service->sharedBlocksMade(), 1);
    const QImage image = service->captureDisplay(1).result();
    ASSERT_EQ(image.size(), size);
    expectPaintedPixels(image);
    EXPECT_EQ(service->sharedBlocksMade(), 1);
}

TEST_F(LargeDisplayCaptureTest, ThePictureThroughTheSocketIsFrozenAndWritable)
{
    QImage image = service->captureDisplay(1).result();
    painter->fill(QRect(0, 0, 10, 10), qRgb(1, 2, 3));
    painter->sync();
    EXPECT_EQ(image.pixel(0, 0), rowColour(0));
    image.setPixel(5, 5, qRgb(9, 9, 9));
    EXPECT_EQ(image.pixel(5, 5), qRgb(9, 9, 9));
    EXPECT_EQ(service->captureDisplay(1).result().pixel(0, 0), qRgb(1, 2, 3));
}

TEST_F(LargeDisplayCaptureTest, APieceOfTheRootThatIsNotWholeRowsComesOutWhole)
{
    // A display beside another, still too large for a block of its own: every
    // row of the piece is shorter than the root's.
    auto right = std::make_unique<CaptureService>(server->display(), [](std::uint32_t) -> std::optional<QRect> {
        return QRect(180, 24, 1100, 1000);
    });
    for (const bool shared : {true, false}) {
        right->setSharedMemoryAllowed(shared);
        const QImage image = right->captureDisplay(1).result();
        ASSERT_EQ(image.size(), QSize(1100, 1000));
        expectPaintedPixels(image, QPoint(180, 24));
    }
    EXPECT_EQ(right->sharedBlocksMade(), 1);
}
