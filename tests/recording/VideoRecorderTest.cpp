#include "recording/VideoRecorder.h"

#include "appbase/AppError.h"
#include "videowriting/FragmentScanner.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QtConcurrent>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

using videowriting::SoundChunk;
using videowriting::SoundSource;
using videowriting::VideoFrame;
using videowriting::VideoWriter;

namespace {

// A writer that keeps what it is given.
struct FakeWriter final : VideoWriter {
    struct Record {
        std::mutex mutex;
        std::vector<VideoFrame> frames;
        std::vector<std::pair<double, bool>> sounds;   // chunk time, from the microphone
        std::optional<double> finishedAt;
        Qt::HANDLE finishThread = nullptr;
        bool cancelled = false;
        bool failNoFrames = false;
        std::filesystem::path path;
    };
    std::shared_ptr<Record> record;
    explicit FakeWriter(std::shared_ptr<Record> r) : record(std::move(r)) {}

    void append(const VideoFrame &frame) override
    {
        std::lock_guard guard(record->mutex);
        VideoFrame copy = frame;
        copy.bgra = nullptr;
        record->frames.push_back(copy);
    }
    void appendAudio(const SoundChunk &chunk, bool fromMicrophone) override
    {
        std::lock_guard guard(record->mutex);
        record->sounds.emplace_back(chunk.seconds, fromMicrophone);
    }
    Stats finish(double endTime) override
    {
        std::lock_guard guard(record->mutex);
        record->finishedAt = endTime;
        record->finishThread = QThread::currentThreadId();
        if (record->failNoFrames)
            throw WriterError::noFrames();
        return {std::int64_t(record->frames.size()), 3};
    }
    void cancel() override
    {
        std::lock_guard guard(record->mutex);
        record->cancelled = true;
    }
    const std::filesystem::path &url() const override { return record->path; }
};

// A sound source that hands out chunks when told to.
struct FakeSource final : SoundSource {
    struct Record {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<Kind> started;
        int stopped = 0;
        std::map<Kind, OnChunk> onChunk;
        bool failToStart = false;
    };
    std::shared_ptr<Record> record;
    Kind kind;
    FakeSource(std::shared_ptr<Record> r, Kind k) : record(std::move(r)), kind(k) {}
    ~FakeSource() override { stop(); }

    void start(OnChunk chunk, OnFailure) override
    {
        std::lock_guard guard(record->mutex);
        if (record->failToStart)
            throw std::runtime_error("No sound server: Connection refused");
        record->started.push_back(kind);
        record->onChunk[kind] = std::move(chunk);
        record->changed.notify_all();
    }
    void stop() override
    {
        std::lock_guard guard(record->mutex);
        if (record->onChunk.erase(kind))
            ++record->stopped;
    }
};

class VideoRecorderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home.isValid());
        qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toUtf8());
    }

    VideoRecorder::WriterFactory fakeWriter()
    {
        return [this](const QString &path, const VideoRecorder::Options &options) {
            madeWith = options;
            writer->path = path.toStdString();
            return std::make_unique<FakeWriter>(writer);
        };
    }
    VideoRecorder::SoundSourceFactory fakeSources()
    {
        return [this](SoundSource::Kind kind) { return std::make_unique<FakeSource>(sources, kind); };
    }
    bool waitForSources(std::size_t count)
    {
        std::unique_lock guard(sources->mutex);
        return sources->changed.wait_for(guard, std::chrono::seconds(10),
                                         [&] { return sources->started.size() >= count; });
    }
    static VideoRecorder::Options options(bool system = false, bool microphone = false)
    {
        VideoRecorder::Options o;
        o.width = 64;
        o.height = 48;
        o.framesPerSecond = 30;
        o.codec = VideoWriter::Codec::h264;
        o.systemAudio = system;
        o.microphone = microphone;
        return o;
    }
    static QString touch(const QString &path, int bytes)
    {
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(bytes, 'x'));
        return path;
    }

    QTemporaryDir home;
    std::shared_ptr<FakeWriter::Record> writer = std::make_shared<FakeWriter::Record>();
    std::shared_ptr<FakeSource::Record> sources = std::make_shared<FakeSource::Record>();
    VideoRecorder::Options madeWith;
};

RecordedFrame frameAt(double seconds, std::optional<QList<QRectF>> changed)
{
    static const std::vector<uchar> pixels(64 * 48 * 4, 0x40);
    RecordedFrame frame;
    frame.pixels = FramePixels{pixels.data(), 64, 48, 64 * 4};
    frame.seconds = seconds;
    frame.changedRects = std::move(changed);
    return frame;
}

} // namespace

TEST_F(VideoRecorderTest, TheInProgressFolderIsUnderTheUsersDataFolder)
{
    EXPECT_EQ(VideoRecorder::inProgressFolder(), home.filePath(QStringLiteral("data/glimpso/Recordings")));
}

TEST_F(VideoRecorderTest, ItMakesTheInProgressFolderAndAFileNamedForTheRecordingInIt)
{
    VideoRecorder recorder(options(), fakeWriter());
    EXPECT_TRUE(QDir(VideoRecorder::inProgressFolder()).exists());
    EXPECT_TRUE(recorder.url().startsWith(VideoRecorder::inProgressFolder() + QStringLiteral("/glimpso-recording-")));
    EXPECT_TRUE(recorder.url().endsWith(QStringLiteral(".mp4")));
    EXPECT_EQ(QString::fromStdString(writer->path.string()), recorder.url());
    EXPECT_EQ(madeWith, options());
}

TEST_F(VideoRecorderTest, AFolderThatCantBeMadeIsAnErrorOfTheFile)
{
    touch(home.filePath(QStringLiteral("blocker")), 1);
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("blocker")).toUtf8());
    try {
        VideoRecorder recorder(options(), fakeWriter());
        FAIL() << "made";
    } catch (const AppError &error) {
        EXPECT_EQ(error.kind(), AppError::Case::fileIOFailed);
    }
}

TEST_F(VideoRecorderTest, FramesReachTheWriterWithTheirChangesRoundedOutToWholePixels)
{
    VideoRecorder recorder(options(), fakeWriter());
    recorder.append(frameAt(1.0, std::nullopt));
    recorder.append(frameAt(1.1, QList<QRectF>{QRectF(1.5, 2.2, 3.0, 4.0), QRectF(10, 10, 0, 5)}));
    recorder.append(frameAt(1.2, QList<QRectF>{}));
    ASSERT_EQ(writer->frames.size(), 3u);
    EXPECT_FALSE(writer->frames[0].changedRects.has_value());
    ASSERT_TRUE(writer->frames[1].changedRects.has_value());
    ASSERT_EQ(writer->frames[1].changedRects->size(), 1u);
    EXPECT_EQ(writer->frames[1].changedRects->front(), (videowriting::PixelRect{1, 2, 4, 5}));
    EXPECT_TRUE(writer->frames[2].changedRects.has_value());
    EXPECT_TRUE(writer->frames[2].changedRects->empty());
    EXPECT_EQ(writer->frames[1].width, 64);
    EXPECT_EQ(writer->frames[1].bytesPerLine, 256);
    EXPECT_DOUBLE_EQ(writer->frames[2].seconds, 1.2);
}

TEST_F(VideoRecorderTest, SoundFromTheStreamIsPassedOn)
{
    VideoRecorder recorder(options(true, true), fakeWriter());
    const std::vector<float> samples(96, 0.1f);
    recorder.appendAudio(RecordedAudio{samples.data(), 48, 2, 48000, 3.0}, false);
    recorder.appendAudio(RecordedAudio{samples.data(), 96, 1, 48000, 3.5}, true);
    recorder.appendAudio(RecordedAudio{nullptr, 10, 1, 48000, 4.0}, true);
    ASSERT_EQ(writer->sounds.size(), 2u);
    EXPECT_EQ(writer->sounds[0], std::make_pair(3.0, false));
    EXPECT_EQ(writer->sounds[1], std::make_pair(3.5, true));
}

TEST_F(VideoRecorderTest, FinishWaitsForTheWriterOffTheCallersThreadAndGivesTheFile)
{
    VideoRecorder recorder(options(), fakeWriter());
    recorder.append(frameAt(1.0, std::nullopt));
    QFuture<QString> done = recorder.finish(2.5);
    done.waitForFinished();
    EXPECT_EQ(done.result(), recorder.url());
    EXPECT_EQ(writer->finishedAt, 2.5);
    EXPECT_NE(writer->finishThread, QThread::currentThreadId());
    EXPECT_EQ(recorder.stats(), (VideoRecorder::Stats{1, 3}));
}

TEST_F(VideoRecorderTest, AWriterThatCantFinishFailsTheFutureWithItsText)
{
    writer->failNoFrames = true;
    VideoRecorder recorder(options(), fakeWriter());
    QFuture<QString> done = recorder.finish(2.5);
    try {
        done.waitForFinished();
        done.result();
        FAIL() << "finished";
    } catch (const AppError &error) {
        EXPECT_TRUE(error.payload().contains(QStringLiteral("Nothing was recorded.")));
    }
    EXPECT_EQ(recorder.stats(), (VideoRecorder::Stats{}));
}

TEST_F(VideoRecorderTest, CancelCancelsTheWriter)
{
    VideoRecorder recorder(options(), fakeWriter());
    recorder.cancel();
    EXPECT_TRUE(writer->cancelled);
}

TEST_F(VideoRecorderTest, TheSoundSourcesAskedForStartAndTheirSoundReachesTheWriter)
{
    VideoRecorder recorder(options(true, true), fakeWriter(), fakeSources());
    ASSERT_TRUE(waitForSources(2));
    {
        std::lock_guard guard(sources->mutex);
        EXPECT_EQ(sources->started, (std::vector{SoundSource::Kind::systemSound, SoundSource::Kind::microphone}));
        const std::vector<float> samples(10, 0.0f);
        sources->onChunk[SoundSource::Kind::microphone](SoundChunk{samples, 1, 48000, 7.0});
        sources->onChunk[SoundSource::Kind::systemSound](SoundChunk{samples, 2, 48000, 7.5});
    }
    ASSERT_EQ(writer->sounds.size(), 2u);
    EXPECT_EQ(writer->sounds[0], std::make_pair(7.0, true));
    EXPECT_EQ(writer->sounds[1], std::make_pair(7.5, false));
    recorder.finish(8.0).waitForFinished();
    std::lock_guard guard(sources->mutex);
    EXPECT_EQ(sources->stopped, 2);
}

TEST_F(VideoRecorderTest, OnlyTheSoundAskedForIsCaptured)
{
    {
        VideoRecorder recorder(options(false, true), fakeWriter(), fakeSources());
        ASSERT_TRUE(waitForSources(1));
        recorder.cancel();
    }
    std::lock_guard guard(sources->mutex);
    EXPECT_EQ(sources->started, (std::vector{SoundSource::Kind::microphone}));
    EXPECT_EQ(sources->stopped, 1);
}

TEST_F(VideoRecorderTest, WithoutSoundTheRecordingGoesOn)
{
    sources->failToStart = true;
    VideoRecorder recorder(options(true, false), fakeWriter(), fakeSources());
    recorder.append(frameAt(1.0, std::nullopt));
    QFuture<QString> done = recorder.finish(2.0);
    done.waitForFinished();
    EXPECT_EQ(done.result(), recorder.url());
}

TEST_F(VideoRecorderTest, LeftoversAreTheRecordingsOfAtLeastOneByte)
{
    const QString folder = home.filePath(QStringLiteral("left"));
    QDir().mkpath(folder);
    const QString a = touch(folder + QStringLiteral("/glimpso-recording-a.mp4"), 100);
    const QString b = touch(folder + QStringLiteral("/b.mp4"), 1);
    touch(folder + QStringLiteral("/empty.mp4"), 0);
    touch(folder + QStringLiteral("/clip.mov"), 100);
    touch(folder + QStringLiteral("/shout.MP4"), 100);
    touch(folder + QStringLiteral("/notes.mp4.txt"), 100);
    QDir().mkpath(folder + QStringLiteral("/folder.mp4"));
    QStringList found = VideoRecorder::leftovers(folder);
    found.sort();
    EXPECT_EQ(found, (QStringList{b, a}));
}

TEST_F(VideoRecorderTest, WithoutTheFolderThereAreNoLeftovers)
{
    EXPECT_TRUE(VideoRecorder::leftovers(home.filePath(QStringLiteral("missing"))).isEmpty());
    EXPECT_TRUE(VideoRecorder::leftovers().isEmpty());
}

TEST_F(VideoRecorderTest, TheModulesWriterRecordsARealFile)
{
    qputenv("GLIMPSO_MODULE_DIR", GLIMPSO_MODULE_DIR);
    QString url;
    {
        VideoRecorder recorder(options());
        url = recorder.url();
        // Whole frames, paced as a stream at 30 fps hands them over.
        for (int i = 0; i < 5; ++i) {
            recorder.append(frameAt(10.0 + i / 30.0, std::nullopt));
            QThread::msleep(33);
        }
        QFuture<QString> done = recorder.finish(10.2);
        done.waitForFinished();
        EXPECT_EQ(done.result(), url);
        EXPECT_EQ(recorder.stats().videoFrames, 5);
    }
    const auto layout = videowriting::FragmentScanner::scanFile(url.toStdString());
    ASSERT_TRUE(layout);
    EXPECT_TRUE(layout->finished);
    EXPECT_GE(layout->fragments, 1);
}
