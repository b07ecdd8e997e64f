#pragma once

#include "recording/RecordingSink.h"

#include <QFile>
#include <QImage>
#include <QMutex>
#include <QThreadPool>

#include <atomic>

// A sink that keeps what the stream gave for a person or a test to look at:
// "frames.txt" in its folder, one line per frame with its time, size and
// changed rectangles, and every Nth frame (and the last) as a PNG,
// "frame-<index>.png". Chosen instead of the real sinks when
// GLIMPSO_TEST_FRAMES names a folder.
class FrameLogSink : public RecordingSink
{
public:
    // `pictureEvery` 0 keeps no pictures but the last.
    FrameLogSink(const QString &folder, int pictureEvery);
    ~FrameLogSink() override;

    void append(const RecordedFrame &frame) override;
    QFuture<QString> finish(double endTime) override;
    void cancel() override;
    void appendAudio(const RecordedAudio &audio, bool fromMicrophone) override;

    // One line of frames.txt: "frame 12 t=103.250000 640x480 rects 0,0,20,10 5,5,1,1" or "... rects whole".
    static QString line(qint64 index, const RecordedFrame &frame);

private:
    void savePicture(qint64 index, const RecordedFrame &frame);

    QString m_folder;
    int m_every;
    QFile m_log;
    QThreadPool m_writers;
    std::atomic<int> m_pending{0};
    qint64 m_index = 0;
    QImage m_last;
};
