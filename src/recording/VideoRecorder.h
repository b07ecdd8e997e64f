#pragma once

#include "recording/RecordingSink.h"
#include "videowriting/SoundSource.h"
#include "videowriting/VideoWriter.h"
#include "videowriting/WriterLog.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

// The sink of a video recording: frames and sound go to a VideoWriter whose
// file lies in the in-progress folder until the recording is finished and
// moved to the save folder. Anything found there at the next start was cut
// off by a crash, and is recovered then (leftovers()).
//
// The sound is captured here: when the options ask for the system's sound or
// the microphone, the sources start with the sink, on a thread of their own,
// and their chunks go to the writer like the stream's.
class VideoRecorder final : public RecordingSink
{
public:
    using Options = videowriting::VideoWriter::Options;
    using Stats = videowriting::VideoWriter::Stats;
    using WriterFactory =
        std::function<std::unique_ptr<videowriting::VideoWriter>(const QString &path, const Options &options)>;
    using SoundSourceFactory =
        std::function<std::unique_ptr<videowriting::SoundSource>(videowriting::SoundSource::Kind kind)>;

    // Creates the in-progress folder (with its parents) and the writer; throws
    // AppError::fileIOFailed when the folder can't be made, and what the
    // writer throws. Without a writer factory, the writer comes from the video
    // writer's module; without a sound factory, no sound is captured.
    explicit VideoRecorder(const Options &options, WriterFactory makeWriter = {},
                           SoundSourceFactory makeSoundSource = {});
    ~VideoRecorder() override;

    void append(const RecordedFrame &frame) override;
    void appendAudio(const RecordedAudio &audio, bool fromMicrophone) override;
    // Stops the sound, waits for the writer off the main thread, keeps its
    // stats and gives the file's path.
    QFuture<QString> finish(double endTime) override;
    void cancel() override;

    const QString &url() const { return m_url; }
    // All zero until finished.
    Stats stats() const;

    // $XDG_DATA_HOME/glimpso/Recordings.
    static QString inProgressFolder();
    // The recordings in the in-progress folder that were never finished:
    // files named "*.mp4" (exactly) of at least one byte, in the listing's
    // order. An empty list when the folder can't be read.
    static QStringList leftovers(const QString &folder = inProgressFolder());

    // The video writer's log lines into glimpso's log ("glimpso.VideoRecorder").
    static void writerLog(videowriting::WriterLog::Level level, const char *message);
    // The writer of the video writer's module (loaded at the first call).
    static std::unique_ptr<videowriting::VideoWriter> moduleWriter(const QString &path, const Options &options);

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
    QString m_url;
};
