#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class Notifying;
class OutputService;

// Brings back the recordings that an earlier run left in the in-progress
// folder (VideoRecorder::leftovers()): a crash, a power cut or a forced quit
// cut them off. Each is made whole (its whole fragments copied into a plain
// MP4, nothing encoded again) and saved like a finished recording; the leftover
// goes once its copy is in the save folder. A leftover that can't be read or
// saved is skipped without a word (logged) and stays where it is. One notice
// tells of what came back.
//
// On the main thread; the copying runs off it, the leftovers one after another.
class RecordingRecovery : public QObject
{
    Q_OBJECT

public:
    // Makes a whole MP4 at `output` out of `leftover`; throws when it can't.
    using Remux = std::function<void(const QString &leftover, const QString &output)>;

    // Without `remux`, the video writer's module does it.
    RecordingRecovery(OutputService &output, Notifying &notifier, std::function<void(const QString &)> addToHistory,
                      Remux remux = {}, QObject *parent = nullptr);

    // Starts; `leftovers` is never empty in use. Calls onDone with the saved
    // files when all are through.
    void recover(const QStringList &leftovers);

    std::function<void(const QStringList &saved)> onDone;

    // The notice's title for `count` recordings.
    static QString title(int count);
    static constexpr double noticeSeconds = 5.0;

private:
    void next();
    void finishAll();
    static void moduleRemux(const QString &leftover, const QString &output);

    OutputService &m_output;
    Notifying &m_notifier;
    std::function<void(const QString &)> m_addToHistory;
    Remux m_remux;
    QStringList m_pending;
    QStringList m_saved;
};
