#include "platform/x11/ShmSegmentPool.h"

#include "XvfbServer.h"

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

class ShmSegmentPoolTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(QSize(64, 64));
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        c = xcb_connect(server->display().constData(), nullptr);
        ASSERT_FALSE(xcb_connection_has_error(c));
    }
    void TearDown() override
    {
        if (c)
            xcb_disconnect(c);
    }

    std::unique_ptr<XvfbServer> server;
    xcb_connection_t *c = nullptr;
    ShmSegmentPool pool;
};

} // namespace

TEST_F(ShmSegmentPoolTest, ALentBlockIsNotLentAgainUntilItComesBack)
{
    auto first = pool.lend(c, 1, 4096);
    ASSERT_TRUE(first);
    auto second = pool.lend(c, 1, 4096);
    ASSERT_TRUE(second);
    EXPECT_NE(first->data, second->data);
    EXPECT_NE(first->segment, second->segment);
    uchar *const firstData = first->data;
    first.reset();
    auto third = pool.lend(c, 1, 4096);
    ASSERT_TRUE(third);
    EXPECT_EQ(third->data, firstData);
    EXPECT_EQ(pool.blocksMade(), 2);
}

TEST_F(ShmSegmentPoolTest, ThePictureHoldsTheBlockAndChangesGoToACopy)
{
    QImage picture;
    uchar *data = nullptr;
    {
        auto lease = pool.lend(c, 1, 16 * 8 * 4);
        ASSERT_TRUE(lease);
        std::memset(lease->data, 0xff, lease->bytes);
        data = lease->data;
        picture = ShmSegmentPool::picture(*lease, QSize(16, 8), QImage::Format_RGB32);
    }
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.constBits(), data);
    // Still lent through the picture.
    auto other = pool.lend(c, 1, 16 * 8 * 4);
    ASSERT_TRUE(other);
    EXPECT_NE(other->data, data);
    other.reset();

    QImage changed = picture;
    changed.setPixel(3, 3, qRgb(1, 2, 3));
    EXPECT_NE(changed.constBits(), data);
    EXPECT_EQ(picture.pixel(3, 3), qRgb(255, 255, 255));
    EXPECT_EQ(data[(3 * 16 + 3) * 4], 0xff);

    picture = QImage();
    // Both blocks are free now; the snuggest of equal ones is the first.
    auto again = pool.lend(c, 1, 16 * 8 * 4);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->data, data);
    EXPECT_EQ(changed.pixel(3, 3), qRgb(1, 2, 3));
}

TEST_F(ShmSegmentPoolTest, ABlockFitsRequestsUpToTwiceItsSizeSmaller)
{
    uchar *big = nullptr;
    {
        auto lease = pool.lend(c, 1, 8000);
        ASSERT_TRUE(lease);
        big = lease->data;
    }
    auto half = pool.lend(c, 1, 4000);
    ASSERT_TRUE(half);
    EXPECT_EQ(half->data, big);
    half.reset();
    auto quarter = pool.lend(c, 1, 2000);
    ASSERT_TRUE(quarter);
    EXPECT_NE(quarter->data, big);
    EXPECT_EQ(pool.blocksMade(), 2);
}

TEST_F(ShmSegmentPoolTest, ANewConnectionAttachesTheKeptBlockAgain)
{
    uchar *data = nullptr;
    {
        auto lease = pool.lend(c, 1, 4096);
        ASSERT_TRUE(lease);
        data = lease->data;
    }
    xcb_disconnect(c);
    c = xcb_connect(server->display().constData(), nullptr);
    ASSERT_FALSE(xcb_connection_has_error(c));
    auto lease = pool.lend(c, 2, 4096);
    ASSERT_TRUE(lease);
    EXPECT_EQ(lease->data, data);
    EXPECT_EQ(pool.blocksMade(), 1);
    // The server knows the block by the new name: a request on it succeeds.
    xcb_generic_error_t *error = xcb_request_check(c, xcb_shm_detach_checked(c, lease->segment));
    EXPECT_EQ(error, nullptr);
    std::free(error);
}

TEST_F(ShmSegmentPoolTest, KeptOnlyLendsAFreeKeptBlockAndNeverMakesOne)
{
    EXPECT_FALSE(pool.lend(c, 1, 4096, ShmSegmentPool::Making::keptOnly));
    EXPECT_EQ(pool.blocksMade(), 0);
    uchar *kept = nullptr;
    {
        auto lease = pool.lend(c, 1, 4096);
        ASSERT_TRUE(lease);
        kept = lease->data;
        // Lent now: not there for another.
        EXPECT_FALSE(pool.lend(c, 1, 4096, ShmSegmentPool::Making::keptOnly));
    }
    auto again = pool.lend(c, 1, 4096, ShmSegmentPool::Making::keptOnly);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->data, kept);
    EXPECT_FALSE(pool.lend(c, 1, 3 * 4096, ShmSegmentPool::Making::keptOnly));
    EXPECT_EQ(pool.blocksMade(), 1);
}
