#include "recording/VideoRecorder.h"

#include "appbase/AppError.h"
#include "videowriting/ModuleLoader.h"
#include "videowriting/VideoWritingModule.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QUuid>
#include <QtConcurrent>

#include <cmath>
#include <mutex>
#include <thread>

Q_LOGGING_CATEGORY(lcVideoRecorder, "glimpso.VideoRecorder")

using videowriting::SoundSource;
using videowriting::VideoWriter;

// What the sink, its sound sources and its finishing task share: the task
// runs on after the session has let the sink go.
struct VideoRecorder::Shared {
    std::unique_ptr<VideoWriter> writer;
    std::mutex mutex;
    std::vector<std::unique_ptr<SoundSource>> sources;
    std::thread starter;
    bool stopped = false;
    Stats stats;

    // Joins the thread that starts the sources and stops those that run;
    // after it, no sound reaches the writer.
    void stopSound()
    {
        if (starter.joinable())
            starter.join();
        std::lock_guard guard(mutex);
        stopped = true;
        for (auto &source : sources)
            source->stop();
        sources.clear();
    }
};

namespace {

const char *kindName(SoundSource::Kind kind)
{
    return kind == SoundSource::Kind::systemSound ? "system sound" : "microphone";
}

// Rectangles of pixels, rounded outward to whole pixels.
std::optional<std::vector<videowriting::PixelRect>> pixelRects(const std::optional<QList<QRectF>> &rects)
{
    if (!rects)
        return std::nullopt;
    std::vector<videowriting::PixelRect> out;
    out.reserve(std::size_t(rects->size()));
    for (const QRectF &r : *rects) {
        const int x0 = int(std::floor(r.left())), y0 = int(std::floor(r.top()));
        const int x1 = int(std::ceil(r.right())), y1 = int(std::ceil(r.bottom()));
        if (x1 > x0 && y1 > y0)
            out.push_back({x0, y0, x1 - x0, y1 - y0});
    }
    return out;
}

} // namespace

VideoRecorder::VideoRecorder(const Options &options, WriterFactory makeWriter, SoundSourceFactory makeSoundSource)
    : m_shared(std::make_shared<Shared>())
{
    const QString folder = inProgressFolder();
    if (!QDir().mkpath(folder))
        throw AppError::fileIOFailed(QStringLiteral("could not create the folder “%1”").arg(folder));
    m_url = folder + QStringLiteral("/glimpso-recording-") + QUuid::createUuid().toString(QUuid::WithoutBraces) +
            QStringLiteral(".mp4");
    m_shared->writer = makeWriter ? makeWriter(m_url, options) : moduleWriter(m_url, options);

    std::vector<SoundSource::Kind> kinds;
    if (options.systemAudio)
        kinds.push_back(SoundSource::Kind::systemSound);
    if (options.microphone)
        kinds.push_back(SoundSource::Kind::microphone);
    if (kinds.empty() || !makeSoundSource)
        return;
    // Connecting to the sound server takes a moment; the main thread doesn't
    // wait for it. Sound from before the first frame is dropped anyway.
    std::weak_ptr<Shared> weak = m_shared;
    m_shared->starter = std::thread([weak, kinds, makeSoundSource] {
        for (const SoundSource::Kind kind : kinds) {
            const auto shared = weak.lock();
            if (!shared)
                return;
            VideoWriter *writer = shared->writer.get();
            const bool microphone = kind == SoundSource::Kind::microphone;
            try {
                std::unique_ptr<SoundSource> source = makeSoundSource(kind);
                source->start([writer, microphone](const videowriting::SoundChunk &chunk) {
                                  writer->appendAudio(chunk, microphone);
                              },
                              [kind](const std::string &why) {
                                  qCWarning(lcVideoRecorder, "the %s stopped: %s", kindName(kind), why.c_str());
                              });
                std::lock_guard guard(shared->mutex);
                if (shared->stopped)
                    source->stop();
                else
                    shared->sources.push_back(std::move(source));
            } catch (const std::exception &error) {
                qCWarning(lcVideoRecorder, "recording without the %s: %s", kindName(kind), error.what());
            }
        }
    });
}

VideoRecorder::~VideoRecorder()
{
    // A sink let go without finish or cancel: the sound stops, the writer
    // finishes what it has (the file stays, to be recovered).
    m_shared->stopSound();
}

void VideoRecorder::writerLog(videowriting::WriterLog::Level level, const char *message)
{
    if (level == videowriting::WriterLog::Level::error)
        qCWarning(lcVideoRecorder, "%s", message);
    else
        qCInfo(lcVideoRecorder, "%s", message);
}

std::unique_ptr<VideoWriter> VideoRecorder::moduleWriter(const QString &path, const Options &options)
{
    try {
        const auto &module = videowriting::VideoWritingModule::load(videowriting::ModuleLoader::folder(), writerLog);
        return module.openWriter(path.toStdString(), options);
    } catch (const AppError &) {
        throw;
    } catch (const std::exception &error) {
        throw AppError::fileIOFailed(QString::fromUtf8(error.what()));
    }
}

void VideoRecorder::append(const RecordedFrame &frame)
{
    if (frame.pixels.isNull())
        return;
    videowriting::VideoFrame out;
    out.bgra = frame.pixels.bits;
    out.width = frame.pixels.width;
    out.height = frame.pixels.height;
    out.bytesPerLine = int(frame.pixels.bytesPerLine);
    out.seconds = frame.seconds;
    out.changedRects = pixelRects(frame.changedRects);
    m_shared->writer->append(out);
}

void VideoRecorder::appendAudio(const RecordedAudio &audio, bool fromMicrophone)
{
    if (!audio.samples || audio.frameCount <= 0 || audio.channels <= 0)
        return;
    const std::span<const float> samples(audio.samples, std::size_t(audio.frameCount) * std::size_t(audio.channels));
    m_shared->writer->appendAudio(videowriting::SoundChunk{samples, audio.channels, audio.sampleRate, audio.seconds},
                                  fromMicrophone);
}

QFuture<QString> VideoRecorder::finish(double endTime)
{
    std::shared_ptr<Shared> shared = m_shared;
    const QString url = m_url;
    return QtConcurrent::run([shared, url, endTime]() -> QString {
        shared->stopSound();
        try {
            const Stats stats = shared->writer->finish(endTime);
            std::lock_guard guard(shared->mutex);
            shared->stats = stats;
        } catch (const std::exception &error) {
            qCWarning(lcVideoRecorder, "the video couldn't be finished: %s", error.what());
            throw AppError::fileIOFailed(QString::fromUtf8(error.what()));
        }
        return url;
    });
}

void VideoRecorder::cancel()
{
    m_shared->stopSound();
    m_shared->writer->cancel();
}

VideoRecorder::Stats VideoRecorder::stats() const
{
    std::lock_guard guard(m_shared->mutex);
    return m_shared->stats;
}

QString VideoRecorder::inProgressFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/glimpso/Recordings");
}

QStringList VideoRecorder::leftovers(const QString &folder)
{
    QStringList found;
    const QDir dir(folder);
    if (!dir.exists())
        return found;
    // Unsorted: the order of the listing.
    const QFileInfoList entries = dir.entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Unsorted);
    for (const QFileInfo &entry : entries) {
        if (entry.suffix() != QLatin1String("mp4") || entry.size() < 1)
            continue;
        found.push_back(entry.absoluteFilePath());
    }
    return found;
}
