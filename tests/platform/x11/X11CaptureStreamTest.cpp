#include "platform/x11/X11CaptureStream.h"

#include "RootPainter.h"
#include "XvfbServer.h"
#include "appbase/AppError.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QMutex>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

// What the stream handed on, copied as a sink copies it.
struct Taken {
    QImage image;
    double seconds = 0;
    std::optional<QList<QRectF>> rects;
};

class X11CaptureStreamTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(QSize(320, 240));
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        painter = std::make_unique<RootPainter>(server->display());
        ASSERT_TRUE(painter->ok());
        painter->fill(QRect(0, 0, 320, 240), 0x203040);
        painter->sync();
    }

    std::unique_ptr<X11CaptureStream> make(const QRect &area, QList<QRect> keepOut = {}, int fps = 30)
    {
        return std::make_unique<X11CaptureStream>(server->display(),
                                                  X11CaptureStream::Geometry{area, area.size(), keepOut}, fps, false);
    }

    void start(X11CaptureStream &stream)
    {
        stream.start(
            [this](const CaptureStream::Sample &sample) {
                const FramePixels &p = sample.frame.pixels;
                QImage copy = QImage(p.bits, p.width, p.height, p.bytesPerLine, QImage::Format_RGB32).copy();
                QMutexLocker lock(&mutex);
                taken.push_back({copy, sample.frame.seconds, sample.frame.changedRects});
            },
            [](const QString &) {});
    }

    int count()
    {
        QMutexLocker lock(&mutex);
        return int(taken.size());
    }
    Taken at(int index)
    {
        QMutexLocker lock(&mutex);
        return taken.at(size_t(index));
    }
    bool waitForFrames(int n, int ms = 3000)
    {
        const QDeadlineTimer deadline(ms);
        while (count() < n && !deadline.hasExpired())
            QThread::msleep(5);
        return count() >= n;
    }

    std::unique_ptr<XvfbServer> server;
    std::unique_ptr<RootPainter> painter;
    QMutex mutex;
    std::vector<Taken> taken;
};

TEST_F(X11CaptureStreamTest, TheFirstFrameIsWholeAndAChangeComesWithItsRectangle)
{
    auto stream = make(QRect(40, 30, 200, 150));
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    EXPECT_TRUE(stream->usesDamage());
    EXPECT_TRUE(stream->usesSharedMemory());
    const Taken first = at(0);
    ASSERT_TRUE(first.rects.has_value());
    EXPECT_EQ(*first.rects, QList<QRectF>{QRectF(0, 0, 200, 150)});
    EXPECT_EQ(first.image.size(), QSize(200, 150));
    EXPECT_EQ(first.image.pixel(10, 10) & 0xffffff, 0x203040u);

    painter->fill(QRect(100, 80, 12, 7), 0xff0000);
    painter->sync();
    ASSERT_TRUE(waitForFrames(2));
    const Taken second = at(1);
    ASSERT_TRUE(second.rects.has_value());
    EXPECT_EQ(*second.rects, QList<QRectF>{QRectF(60, 50, 12, 7)});
    EXPECT_EQ(second.image.pixel(60, 50) & 0xffffff, 0xff0000u);
    EXPECT_EQ(second.image.pixel(59, 50) & 0xffffff, 0x203040u);
    EXPECT_GT(second.seconds, first.seconds);
    stream->stop();
}

TEST_F(X11CaptureStreamTest, NothingChangedMeansNoFrame)
{
    auto stream = make(QRect(0, 0, 320, 240));
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    QThread::msleep(300);
    EXPECT_EQ(count(), 1);
    EXPECT_GE(stream->counts().ticks, 6);
    stream->stop();
}

TEST_F(X11CaptureStreamTest, ChangesOutsideTheAreaGiveNoFrame)
{
    auto stream = make(QRect(0, 0, 100, 100));
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    painter->fill(QRect(200, 200, 20, 20), 0xffffff);
    painter->sync();
    QThread::msleep(200);
    EXPECT_EQ(count(), 1);
    stream->stop();
}

TEST_F(X11CaptureStreamTest, WithoutDamageEveryTickIsWholeAndSaysNothingOfChanges)
{
    auto stream = make(QRect(0, 0, 160, 120));
    stream->setDamageAllowed(false);
    start(*stream);
    ASSERT_TRUE(waitForFrames(4));
    EXPECT_FALSE(stream->usesDamage());
    EXPECT_TRUE(at(0).rects.has_value()) << "the first frame is whole all the same";
    EXPECT_FALSE(at(2).rects.has_value());
    painter->fill(QRect(5, 5, 3, 3), 0x00ff00);
    painter->sync();
    const int seen = count();
    ASSERT_TRUE(waitForFrames(seen + 2));
    EXPECT_EQ(at(count() - 1).image.pixel(6, 6) & 0xffffff, 0x00ff00u);
    stream->stop();
}

TEST_F(X11CaptureStreamTest, WithoutSharedMemoryThePixelsComeThroughTheSocket)
{
    auto stream = make(QRect(10, 10, 300, 200));
    stream->setSharedMemoryAllowed(false);
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    EXPECT_FALSE(stream->usesSharedMemory());
    painter->fill(QRect(20, 20, 50, 40), 0x0000ff);
    painter->sync();
    ASSERT_TRUE(waitForFrames(2));
    EXPECT_EQ(*at(1).rects, QList<QRectF>{QRectF(10, 10, 50, 40)});
    EXPECT_EQ(at(1).image.pixel(10, 10) & 0xffffff, 0x0000ffu);
    EXPECT_EQ(at(1).image.pixel(60, 50) & 0xffffff, 0x203040u);
    stream->stop();
}

TEST_F(X11CaptureStreamTest, AKeptOutPartShowsWhatItHeldAtTheStart)
{
    // glimpso's control bar over a whole-screen recording.
    auto stream = make(QRect(0, 0, 320, 240), {QRect(100, 200, 120, 30)});
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    painter->fill(QRect(90, 190, 140, 50), 0xff3b30);
    painter->sync();
    ASSERT_TRUE(waitForFrames(2));
    const Taken frame = at(1);
    EXPECT_EQ(frame.image.pixel(150, 210) & 0xffffff, 0x203040u) << "inside the kept-out part";
    EXPECT_EQ(frame.image.pixel(95, 195) & 0xffffff, 0xff3b30u) << "around it";
    for (const QRectF &r : *frame.rects)
        EXPECT_FALSE(r.intersects(QRectF(100, 200, 120, 30)));
    stream->stop();
}

TEST_F(X11CaptureStreamTest, FramesKeepToTheRequestedRate)
{
    auto stream = make(QRect(0, 0, 64, 64), {}, 20);
    start(*stream);
    for (int i = 0; i < 12; ++i) {
        painter->fill(QRect(i * 4, 0, 4, 4), 0xffffff);
        painter->sync();
        QThread::msleep(50);
    }
    stream->stop();
    const int frames = count();
    ASSERT_GE(frames, 8);
    const double span = at(frames - 1).seconds - at(0).seconds;
    // 20 a second whatever came in between: a frame per tick at most, and
    // the ticks keep to the clock (a late one is skipped, not made up).
    EXPECT_LE(frames, int(span * 20) + 2);
    std::vector<double> gaps;
    for (int i = 1; i < frames; ++i)
        gaps.push_back(at(i).seconds - at(i - 1).seconds);
    std::sort(gaps.begin(), gaps.end());
    EXPECT_NEAR(gaps[gaps.size() / 2], 0.05, 0.015);
}

TEST_F(X11CaptureStreamTest, ThePointerIsDrawnAtItsHotspotAndItsMovesAreChanges)
{
    xcb_connection_t *c = xcb_connect(server->display().constData(), nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    xcb_warp_pointer(c, XCB_NONE, root, 0, 0, 0, 0, 60, 60);
    std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    auto stream = std::make_unique<X11CaptureStream>(
        server->display(), X11CaptureStream::Geometry{QRect(0, 0, 320, 240), QSize(320, 240), {}}, 30, true);
    start(*stream);
    ASSERT_TRUE(waitForFrames(1));
    const auto differs = [](const QImage &image, const QRect &where) {
        for (int y = where.top(); y <= where.bottom(); ++y)
            for (int x = where.left(); x <= where.right(); ++x)
                if ((image.pixel(x, y) & 0xffffff) != 0x203040u)
                    return true;
        return false;
    };
    EXPECT_TRUE(differs(at(0).image, QRect(50, 50, 21, 21))) << "the pointer around its hotspot";
    xcb_warp_pointer(c, XCB_NONE, root, 0, 0, 0, 0, 200, 150);
    std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    ASSERT_TRUE(waitForFrames(2));
    const Taken moved = at(1);
    EXPECT_FALSE(differs(moved.image, QRect(40, 40, 41, 41))) << "the old place is clean again";
    EXPECT_TRUE(differs(moved.image, QRect(190, 140, 21, 21)));
    ASSERT_TRUE(moved.rects.has_value());
    QRectF covered;
    for (const QRectF &r : *moved.rects)
        covered = covered.united(r);
    EXPECT_TRUE(covered.contains(QPointF(60, 60)));
    EXPECT_TRUE(covered.contains(QPointF(200, 150)));
    stream->stop();
    xcb_disconnect(c);
}

TEST_F(X11CaptureStreamTest, AnAreaOffTheScreenIsNoDisplay)
{
    auto stream = make(QRect(400, 400, 50, 50));
    try {
        start(*stream);
        FAIL() << "no error";
    } catch (const AppError &error) {
        EXPECT_EQ(error.kind(), AppError::Case::displayNotFound);
    }
}

} // namespace
