#include "app/UploadIndicator.h"

#include "cloud/UploadService.h"

#include "EventLoopWait.h"
#include "NoticeFakes.h"

#include <gtest/gtest.h>

namespace {

// The indicator is driven through the service's signals, as the upload
// threads drive it, with no upload behind them.
struct UploadIndicatorTest : ::testing::Test {
    NotifierWithFakes fakes;
    UploadService uploads{UploadService::Parts{fakes.settings, {}, {}, {}}};
    QStringList activities;
    std::unique_ptr<UploadIndicator> indicator;

    void make(int showAfterMs)
    {
        indicator = std::make_unique<UploadIndicator>(uploads, fakes.notifier,
                                                      [this](const QString &text) { activities << text; }, showAfterMs);
    }
    bool shownAfterItsDelay() { return processEventsUntil([this] { return indicator->showing(); }, 5000); }
};

TEST_F(UploadIndicatorTest, AShortUploadShowsNothingButItsResult)
{
    make(60000);
    Q_EMIT uploads.uploadStarted(1, "Screenshot", 0);
    Q_EMIT uploads.uploadProgressed(1, 500, 1000);
    Q_EMIT uploads.uploadEnded(1, true);
    EXPECT_FALSE(indicator->showing());
    EXPECT_TRUE(fakes.toast.shown.isEmpty());
    EXPECT_TRUE(activities.isEmpty());
}

TEST_F(UploadIndicatorTest, ALongUploadCountsUpInOneNoticeAndTheTooltip)
{
    make(10);
    Q_EMIT uploads.uploadStarted(1, "clip.mp4", 300'000'000);
    ASSERT_TRUE(shownAfterItsDelay());
    ASSERT_EQ(fakes.toast.shown.size(), 1);
    EXPECT_EQ(fakes.toast.shown.last().title, "Uploading… 0%");
    EXPECT_EQ(fakes.toast.shown.last().body, "clip.mp4 · 0 bytes of 300.0 MB");
    EXPECT_EQ(activities.last(), "Uploading 0%");

    Q_EMIT uploads.uploadProgressed(1, 126'000'000, 300'000'000);
    EXPECT_EQ(fakes.toast.shown.size(), 1);
    EXPECT_EQ(fakes.toast.shown.last().title, "Uploading… 42%");
    EXPECT_EQ(fakes.toast.shown.last().body, "clip.mp4 · 126.0 MB of 300.0 MB");
    EXPECT_EQ(activities.last(), "Uploading 42%");

    Q_EMIT uploads.uploadEnded(1, true);
    EXPECT_FALSE(indicator->showing());
    EXPECT_FALSE(fakes.notifier.showingProgress());
    EXPECT_EQ(fakes.toast.dismissals, 1);
    EXPECT_EQ(activities.last(), QString());
}

TEST_F(UploadIndicatorTest, TwoUploadsAreCountedTogether)
{
    make(10);
    Q_EMIT uploads.uploadStarted(1, "a.mp4", 1000);
    Q_EMIT uploads.uploadStarted(2, "b.mp4", 3000);
    ASSERT_TRUE(shownAfterItsDelay());
    Q_EMIT uploads.uploadProgressed(1, 1000, 1000);
    Q_EMIT uploads.uploadProgressed(2, 1000, 3000);
    EXPECT_EQ(fakes.toast.shown.last().title, "Uploading 2 files… 50%");
    EXPECT_EQ(fakes.toast.shown.last().body, "2 files · 2.0 kB of 4.0 kB");
    EXPECT_EQ(activities.last(), "Uploading 2 files 50%");
}

TEST_F(UploadIndicatorTest, APictureWhoseSizeIsNotKnownYetShowsNoNumber)
{
    make(10);
    Q_EMIT uploads.uploadStarted(1, "Screenshot", 0);
    ASSERT_TRUE(shownAfterItsDelay());
    EXPECT_EQ(fakes.toast.shown.last().title, "Uploading…");
    EXPECT_EQ(fakes.toast.shown.last().body, "Screenshot");
}

TEST_F(UploadIndicatorTest, ANoticeThatTookItsPlaceStandsBeforeTheProgressComesBack)
{
    make(10);
    Q_EMIT uploads.uploadStarted(1, "a.mp4", 1000);
    Q_EMIT uploads.uploadStarted(2, "b.mp4", 1000);
    ASSERT_TRUE(shownAfterItsDelay());
    Q_EMIT uploads.uploadEnded(1, true);
    fakes.notifier.post("Uploaded — link copied", "https://x/a.mp4", 2.0, NoticeAction::none());
    const qsizetype shownBefore = fakes.toast.shown.size();
    Q_EMIT uploads.uploadProgressed(2, 500, 1000);
    // The other upload's progress waits while the notice stands.
    EXPECT_EQ(fakes.toast.shown.size(), shownBefore);
    EXPECT_FALSE(fakes.notifier.showingProgress());
    EXPECT_EQ(activities.last(), "Uploading 50%");
}

TEST(UploadIndicatorTexts, PerCentIsWholeAndClamped)
{
    EXPECT_EQ(UploadIndicator::percent(0, 0), std::nullopt);
    EXPECT_EQ(UploadIndicator::percent(999, 1000), 99);
    EXPECT_EQ(UploadIndicator::percent(2000, 1000), 100);
    EXPECT_EQ(UploadIndicator::title(1, std::nullopt), "Uploading…");
    EXPECT_EQ(UploadIndicator::activity(3, 7), "Uploading 3 files 7%");
}

} // namespace
