#include "recording/FrameLogSink.h"

#include "appbase/AppError.h"

#include <QDir>
#include <QImage>
#include <QtConcurrent>

#include <cstring>

namespace {

// The frame's pixels as an opaque picture of its own.
QImage copyOf(const FramePixels &pixels)
{
    QImage image(pixels.width, pixels.height, QImage::Format_RGB32);
    for (int y = 0; y < pixels.height; ++y) {
        auto *to = reinterpret_cast<quint32 *>(image.scanLine(y));
        const auto *from = reinterpret_cast<const quint32 *>(pixels.line(y));
        for (int x = 0; x < pixels.width; ++x)
            to[x] = from[x] | 0xff000000u;
    }
    return image;
}

} // namespace

FrameLogSink::FrameLogSink(const QString &folder, int pictureEvery)
    : m_folder(folder), m_every(pictureEvery), m_log(QDir(folder).filePath(QStringLiteral("frames.txt")))
{
    QDir().mkpath(folder);
    m_log.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text);
    m_writers.setMaxThreadCount(1);
}

FrameLogSink::~FrameLogSink()
{
    m_writers.waitForDone();
}

QString FrameLogSink::line(qint64 index, const RecordedFrame &frame)
{
    QString text = QStringLiteral("frame %1 t=%2 %3x%4 rects")
                       .arg(index)
                       .arg(frame.seconds, 0, 'f', 6)
                       .arg(frame.pixels.width)
                       .arg(frame.pixels.height);
    if (!frame.changedRects) {
        text += QStringLiteral(" whole");
        return text;
    }
    for (const QRectF &r : *frame.changedRects)
        text += QStringLiteral(" %1,%2,%3,%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    return text;
}

void FrameLogSink::append(const RecordedFrame &frame)
{
    const qint64 index = m_index++;
    m_log.write((line(index, frame) + u'\n').toUtf8());
    // The last frame is kept whole for finish; the others as the plan says.
    m_last = copyOf(frame.pixels);
    if (m_every > 0 && index % m_every == 0)
        savePicture(index, frame);
}

void FrameLogSink::savePicture(qint64 index, const RecordedFrame &)
{
    // At most a few pictures wait; a test that asks for too many gets fewer.
    if (m_pending.load() >= 8)
        return;
    ++m_pending;
    const QImage image = m_last;
    const QString path = QDir(m_folder).filePath(QStringLiteral("frame-%1.png").arg(index));
    QThreadPool *pool = &m_writers;
    pool->start([this, image, path] {
        image.save(path, "PNG", 1);
        --m_pending;
    });
}

QFuture<QString> FrameLogSink::finish(double endTime)
{
    m_log.write(QStringLiteral("end t=%1\n").arg(endTime, 0, 'f', 6).toUtf8());
    m_log.close();
    const QImage last = m_last;
    const QString folder = m_folder;
    const qint64 frames = m_index;
    QThreadPool *pool = &m_writers;
    // What the recording hands on is a small summary; the log stays in the folder.
    return QtConcurrent::run([pool, last, folder, frames, endTime] {
        pool->waitForDone();
        if (!last.isNull())
            last.save(QDir(folder).filePath(QStringLiteral("last.png")), "PNG", 1);
        QFile summary(QDir(folder).filePath(QStringLiteral("summary.txt")));
        if (!summary.open(QIODevice::WriteOnly | QIODevice::Truncate))
            throw AppError::fileIOFailed(summary.errorString());
        summary.write(QStringLiteral("frames: %1\nend: %2\n").arg(frames).arg(endTime, 0, 'f', 6).toUtf8());
        return summary.fileName();
    });
}

void FrameLogSink::cancel()
{
    m_log.write("cancelled\n");
    m_log.close();
}

void FrameLogSink::appendAudio(const RecordedAudio &audio, bool fromMicrophone)
{
    m_log.write(QStringLiteral("audio t=%1 frames=%2 microphone=%3\n")
                    .arg(audio.seconds, 0, 'f', 6)
                    .arg(audio.frameCount)
                    .arg(fromMicrophone)
                    .toUtf8());
}
