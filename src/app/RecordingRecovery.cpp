#include "app/RecordingRecovery.h"

#include "appbase/CaptureKind.h"
#include "output/Notifying.h"
#include "output/OutputService.h"
#include "recording/VideoRecorder.h"
#include "videowriting/ModuleLoader.h"
#include "videowriting/VideoWritingModule.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QUuid>
#include <QtConcurrent>

Q_LOGGING_CATEGORY(lcRecovery, "glimpso.RecordingRecovery")

namespace {

// Where a leftover's whole copy is made: a folder of its own inside the
// in-progress folder, so that a copy cut off in turn is never taken for a
// leftover.
QString copyPathFor(const QString &leftover)
{
    const QString folder = QFileInfo(leftover).absolutePath() + QStringLiteral("/recovered");
    QDir().mkpath(folder);
    return folder + QStringLiteral("/glimpso-recovered-") + QUuid::createUuid().toString(QUuid::WithoutBraces) +
           QStringLiteral(".mp4");
}

} // namespace

RecordingRecovery::RecordingRecovery(OutputService &output, Notifying &notifier,
                                     std::function<void(const QString &)> addToHistory, Remux remux, QObject *parent)
    : QObject(parent), m_output(output), m_notifier(notifier), m_addToHistory(std::move(addToHistory)),
      m_remux(remux ? std::move(remux) : Remux(moduleRemux))
{
}

void RecordingRecovery::moduleRemux(const QString &leftover, const QString &output)
{
    const auto &module =
        videowriting::VideoWritingModule::load(videowriting::ModuleLoader::folder(), &VideoRecorder::writerLog);
    module.remux(leftover.toStdString(), output.toStdString());
}

QString RecordingRecovery::title(int count)
{
    return count == 1 ? QStringLiteral("Recovered a recording") : QStringLiteral("Recovered %1 recordings").arg(count);
}

void RecordingRecovery::recover(const QStringList &leftovers)
{
    m_pending = leftovers;
    m_saved.clear();
    next();
}

void RecordingRecovery::next()
{
    if (m_pending.isEmpty()) {
        finishAll();
        return;
    }
    const QString leftover = m_pending.takeFirst();
    const QString copy = copyPathFor(leftover);
    QPointer<RecordingRecovery> self(this);
    const Remux remux = m_remux;
    QtConcurrent::run([remux, leftover, copy] {
        try {
            remux(leftover, copy);
            return true;
        } catch (const std::exception &error) {
            qCWarning(lcRecovery, "left %s as it is: %s", qUtf8Printable(leftover), error.what());
            QFile::remove(copy);
            return false;
        }
    }).then(this, [self, leftover, copy](bool made) {
        if (!self)
            return;
        if (!made) {
            self->next();
            return;
        }
        self->m_output.saveFile(copy, CaptureKind::video)
            .then(self, [self, leftover](const QString &saved) {
                if (!self)
                    return;
                QFile::remove(leftover);
                qCInfo(lcRecovery, "recovered %s as %s", qUtf8Printable(leftover), qUtf8Printable(saved));
                if (self->m_addToHistory)
                    self->m_addToHistory(saved);
                self->m_saved.push_back(saved);
                self->next();
            })
            .onFailed(self, [self, leftover, copy](const std::exception &error) {
                if (!self)
                    return;
                qCWarning(lcRecovery, "couldn't save the recovered %s: %s", qUtf8Printable(leftover), error.what());
                QFile::remove(copy);
                self->next();
            });
    });
}

void RecordingRecovery::finishAll()
{
    if (!m_saved.isEmpty())
        m_notifier.post(title(int(m_saved.size())), QStringLiteral("It didn't finish last time; it's in your save folder."),
                        noticeSeconds, NoticeAction::reveal(m_saved.first()));
    if (onDone)
        onDone(m_saved);
}
