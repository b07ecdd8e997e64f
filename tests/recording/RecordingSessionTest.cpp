#include "recording/RecordingSession.h"

#include "EventLoopWait.h"
#include "RecordingFakes.h"
#include "RecordingNotifier.h"
#include "recording/StreamOutput.h"

#include <gtest/gtest.h>

namespace {

// A session over fakes; the area and screen are the test's.
struct SessionFixture : ::testing::Test {
    FakeClock clock;
    FakeScheduler scheduler{clock};
    std::shared_ptr<FakeChrome> chrome = std::make_shared<FakeChrome>();
    std::shared_ptr<FakeSink> sink = std::make_shared<FakeSink>();
    RecordingNotifier notifier;
    FakeStream *stream = nullptr;
    std::optional<AppError> streamFailure;
    FakeWatch *watch = nullptr;
    bool watchStopped = false;
    QList<RecordingEnd> ends;
    std::unique_ptr<RecordingSession> session;
    RecordingScreen screen{7, QRectF(0, 0, 1920, 1080), QRectF(0, 0, 1920, 1050), 1.0};

    void make(const QRectF &rect, RecordingConfig config)
    {
        RecordingSession::Parts parts{chrome, scheduler, clock, notifier, {}, {}, {}};
        parts.makeStream = [this](const StreamRequest &request) -> std::unique_ptr<CaptureStream> {
            auto made = std::make_unique<FakeStream>();
            made->request = request;
            made->failStart = streamFailure;
            stream = made.get();
            return made;
        };
        parts.makeWatches = [this] {
            std::vector<std::unique_ptr<InterruptionWatch>> watches;
            auto made = std::make_unique<FakeWatch>();
            made->stopped = &watchStopped;
            watch = made.get();
            watches.push_back(std::move(made));
            return watches;
        };
        session = std::make_unique<RecordingSession>(rect, screen, config, sink,
                                                     [this](const RecordingEnd &end) { ends << end; }, parts);
    }

    static RecordingConfig noCountdown()
    {
        RecordingConfig config;
        config.countdown = false;
        config.maxSeconds = 30;
        return config;
    }

    // Starts without a countdown and lets the stream begin.
    void startRecording(const QRectF &rect = QRectF(100, 100, 640, 480), RecordingConfig config = noCountdown())
    {
        make(rect, config);
        session->start();
        scheduler.runPosted();
        ASSERT_TRUE(session->startTime().has_value());
    }

    bool ended() { return processEventsUntil([this] { return !ends.isEmpty(); }, 2000); }
};

using RecordingSessionTest = SessionFixture;

TEST(RecordingSessionSizes, OnePointAreaAtScaleOneGivesTwoByTwoPixels)
{
    EXPECT_EQ(RecordingSession::pixelSize(QRectF(10, 10, 1, 1), 1.0), QSize(2, 2));
}

TEST(RecordingSessionSizes, AreaIsRoundedOutToWholePointsBeforeScaling)
{
    EXPECT_EQ(RecordingSession::roundedOut(QRectF(10.4, 20.6, 99.2, 50.1)), QRectF(10, 20, 100, 51));
    EXPECT_EQ(RecordingSession::pixelSize(QRectF(10.4, 20.6, 99.2, 50.1), 2.0), QSize(200, 102));
    EXPECT_EQ(RecordingSession::pixelSize(QRectF(0, 0, 101, 33), 1.5), QSize(152, 50));
}

TEST(RecordingSessionBar, GoesTwelvePointsUnderTheAreaCentred)
{
    const QRectF bar = RecordingSession::barFrame(QRectF(500, 500, 400, 300), QRectF(0, 0, 1920, 1050), {196, 44});
    EXPECT_EQ(bar, QRectF(700 - 98, 500 - 44 - 12, 196, 44));
}

TEST(RecordingSessionBar, GoesOverTheAreaWhenTheAreaTouchesTheBottom)
{
    const QRectF bar = RecordingSession::barFrame(QRectF(500, 0, 400, 300), QRectF(0, 40, 1920, 1010), {196, 44});
    EXPECT_DOUBLE_EQ(bar.y(), 312);
}

TEST(RecordingSessionBar, StaysInsideTheVisibleFrameOverAnAreaThatFillsTheScreen)
{
    const QRectF visible(0, 40, 1920, 1010);
    const QRectF bar = RecordingSession::barFrame(QRectF(0, 0, 1920, 1080), visible, {196, 44});
    EXPECT_DOUBLE_EQ(bar.y(), visible.bottom() - 44 - 8);
    EXPECT_TRUE(visible.contains(bar));
}

TEST(RecordingSessionBar, KeepsEightPointsFromTheSides)
{
    const QRectF visible(0, 0, 1920, 1080);
    EXPECT_DOUBLE_EQ(RecordingSession::barFrame(QRectF(0, 500, 20, 20), visible, {196, 44}).x(), 8);
    EXPECT_DOUBLE_EQ(RecordingSession::barFrame(QRectF(1900, 500, 20, 20), visible, {196, 44}).x(), 1920 - 196 - 8);
}

TEST_F(RecordingSessionTest, CountsDownThreeTwoOneThenStartsTheStream)
{
    RecordingConfig config = noCountdown();
    config.countdown = true;
    make(QRectF(100, 100, 640, 480), config);
    session->start();
    EXPECT_EQ(chrome->log, QStringList({"border", "count 3"}));
    EXPECT_EQ(stream, nullptr);
    scheduler.advance(2.5);
    EXPECT_EQ(chrome->log, QStringList({"border", "count 3", "count 2", "count 1"}));
    scheduler.advance(0.5);
    EXPECT_EQ(chrome->log, QStringList({"border", "count 3", "count 2", "count 1", "count hidden", "bar"}));
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(stream->started);
    EXPECT_DOUBLE_EQ(*session->startTime(), 103.0);
}

TEST_F(RecordingSessionTest, StopDuringTheCountdownGivesCancelledAndNoFile)
{
    RecordingConfig config = noCountdown();
    config.countdown = true;
    make(QRectF(100, 100, 640, 480), config);
    session->start();
    scheduler.advance(1.2);
    session->stop();
    scheduler.advance(5);
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::cancelled);
    EXPECT_TRUE(sink->cancelled);
    EXPECT_FALSE(sink->finishedAt.has_value());
    EXPECT_EQ(stream, nullptr) << "no stream starts after the countdown was stopped";
    EXPECT_FALSE(chrome->visible);
}

TEST_F(RecordingSessionTest, CancelDuringTheCountdownGivesCancelled)
{
    RecordingConfig config = noCountdown();
    config.countdown = true;
    make(QRectF(100, 100, 640, 480), config);
    session->start();
    session->cancel();
    scheduler.advance(4);
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::cancelled);
}

TEST_F(RecordingSessionTest, TwoStopsGiveOneEnd)
{
    startRecording();
    clock.value += 2;
    session->stop();
    session->stop();
    chrome->onStop();
    scheduler.runPosted();
    ASSERT_TRUE(ended());
    processEventsUntil([] { return false; }, 50);
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
    EXPECT_EQ(ends[0].path, sink->path);
    EXPECT_DOUBLE_EQ(ends[0].seconds, 2.0);
    EXPECT_TRUE(stream->stopped);
}

TEST_F(RecordingSessionTest, TheBarsStopButtonStopsAndItsCancelCancels)
{
    startRecording();
    chrome->onCancel();
    chrome->onStop();
    scheduler.runPosted();
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::cancelled);
    EXPECT_TRUE(sink->cancelled);
}

TEST_F(RecordingSessionTest, TenSecondLimitEndsWithTheClockBetweenTenAndTenAndAHalf)
{
    RecordingConfig config = noCountdown();
    config.maxSeconds = 10;
    // The stream starts off the half-second grid of the ticks.
    clock.value = 100.25;
    startRecording(QRectF(100, 100, 640, 480), config);
    scheduler.advance(9.9);
    EXPECT_TRUE(ends.isEmpty());
    EXPECT_FALSE(session->isEnding());
    scheduler.advance(0.7);
    ASSERT_TRUE(session->isEnding());
    ASSERT_TRUE(ended());
    EXPECT_GE(ends[0].seconds, 10.0);
    EXPECT_LE(ends[0].seconds, 10.5);
    EXPECT_NEAR(chrome->seconds, 10.0, 1e-9);
}

TEST_F(RecordingSessionTest, StopRacingTheLimitGivesOneEnd)
{
    RecordingConfig config = noCountdown();
    config.maxSeconds = 1;
    startRecording(QRectF(100, 100, 640, 480), config);
    clock.value += 0.999;
    session->stop();
    scheduler.advance(1.0);
    ASSERT_TRUE(ended());
    processEventsUntil([] { return false; }, 50);
    EXPECT_EQ(ends.size(), 1);
}

TEST_F(RecordingSessionTest, TheClockShowsTheSecondsSinceTheStart)
{
    startRecording();
    EXPECT_EQ(chrome->seconds, 0);
    scheduler.advance(1.5);
    EXPECT_DOUBLE_EQ(chrome->seconds, 1.5);
}

TEST_F(RecordingSessionTest, FailureWhileFinishingIsTheOneEnd)
{
    startRecording();
    sink->failFinish = AppError::fileIOFailed(QStringLiteral("disk full"));
    session->stop();
    session->cancel();
    scheduler.runPosted();
    ASSERT_TRUE(ended());
    processEventsUntil([] { return false; }, 50);
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::failed);
    EXPECT_EQ(ends[0].error->payload(), QStringLiteral("disk full"));
}

TEST_F(RecordingSessionTest, AStreamThatCannotStartFailsAndDiscardsTheSink)
{
    streamFailure = AppError::displayNotFound();
    make(QRectF(100, 100, 640, 480), noCountdown());
    session->start();
    scheduler.runPosted();
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::failed);
    EXPECT_EQ(ends[0].error->kind(), AppError::Case::displayNotFound);
    EXPECT_TRUE(sink->cancelled);
    EXPECT_FALSE(chrome->visible);
    EXPECT_FALSE(chrome->bar.has_value());
}

TEST_F(RecordingSessionTest, NoStreamFactoryFailsPolitely)
{
    RecordingSession::Parts parts{chrome, scheduler, clock, notifier, {}, {}, {}};
    session = std::make_unique<RecordingSession>(QRectF(0, 0, 10, 10), screen, noCountdown(), sink,
                                                 [this](const RecordingEnd &end) { ends << end; }, parts);
    session->start();
    scheduler.runPosted();
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::failed);
}

TEST_F(RecordingSessionTest, AStreamThatStopsByItselfKeepsWhatWasRecorded)
{
    startRecording();
    clock.value += 3;
    stream->onStopped(QStringLiteral("the connection to the X server was lost"));
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
    EXPECT_DOUBLE_EQ(ends[0].seconds, 3.0);
}

TEST_F(RecordingSessionTest, ADisplayChangeEndsTheRecordingAndKeepsTheFile)
{
    startRecording();
    clock.value += 1;
    watch->onEvent(InterruptionWatch::Reason::displaysChanged);
    scheduler.runPosted();
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
    EXPECT_TRUE(watchStopped);
    EXPECT_TRUE(notifier.notices.isEmpty());
}

TEST_F(RecordingSessionTest, CriticalHeatTellsTheUserAndKeepsTheFile)
{
    startRecording();
    watch->onEvent(InterruptionWatch::Reason::thermalCritical);
    scheduler.runPosted();
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
    ASSERT_EQ(notifier.notices.size(), 1);
    EXPECT_EQ(notifier.notices[0].title, QStringLiteral("Recording stopped"));
    EXPECT_EQ(notifier.notices[0].body, QStringLiteral("Your computer is very hot. What was recorded is kept."));
    EXPECT_DOUBLE_EQ(notifier.notices[0].duration, 2.0);
}

TEST_F(RecordingSessionTest, SleepAndALockedSessionEndTheRecording)
{
    for (const auto reason : {InterruptionWatch::Reason::sleep, InterruptionWatch::Reason::sessionInactive,
                              InterruptionWatch::Reason::screensAsleep}) {
        ends.clear();
        stream = nullptr;
        sink = std::make_shared<FakeSink>();
        startRecording();
        watch->onEvent(reason);
        scheduler.runPosted();
        ASSERT_TRUE(ended());
        EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
    }
}

TEST_F(RecordingSessionTest, RequestEndCancelsDuringTheCountdownAndIsRefusedOnceEnding)
{
    RecordingConfig config = noCountdown();
    config.countdown = true;
    make(QRectF(100, 100, 640, 480), config);
    session->start();
    EXPECT_TRUE(session->requestEnd());
    EXPECT_FALSE(session->requestEnd());
    scheduler.runPosted();
    ASSERT_EQ(ends.size(), 1);
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::cancelled);
}

TEST_F(RecordingSessionTest, RequestEndAfterTheStartStopsAndKeeps)
{
    startRecording();
    EXPECT_TRUE(session->requestEnd());
    scheduler.runPosted();
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].kind, RecordingEnd::Kind::finished);
}

TEST_F(RecordingSessionTest, TheStreamIsAskedForTheAreaAtTheOutputSize)
{
    RecordingConfig config = noCountdown();
    config.scale = 2;
    config.framesPerSecond = 24;
    config.showsCursor = false;
    startRecording(QRectF(100.5, 100, 640, 480), config);
    EXPECT_EQ(stream->request.area, QRectF(100, 100, 641, 480));
    EXPECT_EQ(stream->request.outputSize, QSize(1282, 960));
    EXPECT_EQ(stream->request.framesPerSecond, 24);
    EXPECT_FALSE(stream->request.showsCursor);
    EXPECT_EQ(stream->request.displayID, 7u);
    EXPECT_TRUE(stream->request.keepOut.isEmpty()) << "the bar lies under the area";
}

TEST_F(RecordingSessionTest, TheBarOverAWholeScreenIsKeptOutOfTheFrames)
{
    startRecording(screen.frame);
    ASSERT_EQ(stream->request.keepOut.size(), 1);
    EXPECT_EQ(stream->request.keepOut[0], *chrome->bar);
    EXPECT_TRUE(screen.visibleFrame.contains(*chrome->bar));
}

TEST_F(RecordingSessionTest, CompleteFramesReachTheSink)
{
    startRecording();
    std::vector<uchar> pixels(4 * 4 * 4, 0);
    RecordedFrame frame{{pixels.data(), 4, 4, 16}, 100.5, QList<QRectF>{QRectF(0, 0, 1, 1)}};
    stream->onSample({CaptureStream::FrameStatus::complete, frame});
    stream->onSample({CaptureStream::FrameStatus::idle, frame});
    stream->onSample({CaptureStream::FrameStatus::blank, frame});
    stream->onSample({CaptureStream::FrameStatus::suspended, frame});
    EXPECT_EQ(sink->appended, 1);
    EXPECT_EQ(sink->frames[0].changedRects->size(), 1);
}

TEST(StreamOutputTest, AFrameWhoseStatusIsNotCompleteReachesNoSink)
{
    FakeSink sink;
    StreamOutput output(sink);
    std::vector<uchar> pixels(16, 0);
    const RecordedFrame frame{{pixels.data(), 2, 2, 8}, 1.0, std::nullopt};
    for (const auto status : {CaptureStream::FrameStatus::idle, CaptureStream::FrameStatus::blank,
                              CaptureStream::FrameStatus::suspended, CaptureStream::FrameStatus::started,
                              CaptureStream::FrameStatus::stopped})
        output.sample({status, frame});
    EXPECT_EQ(sink.appended, 0);
    output.sample({CaptureStream::FrameStatus::complete, frame});
    EXPECT_EQ(sink.appended, 1);
    EXPECT_EQ(output.framesDelivered(), 1);
}

TEST(StreamOutputTest, AStopByItselfReachesTheErrorCallback)
{
    FakeSink sink;
    StreamOutput output(sink);
    QString reason;
    output.onError = [&reason](const QString &why) { reason = why; };
    output.stopped(QStringLiteral("gone"));
    EXPECT_EQ(reason, QStringLiteral("gone"));
}

} // namespace
