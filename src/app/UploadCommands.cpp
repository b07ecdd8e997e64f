#include "app/UploadCommands.h"

#include "appbase/AppError.h"
#include "appbase/CaptureKind.h"
#include "cloud/ObjectNames.h"
#include "cloud/UploadService.h"
#include "output/Notifying.h"
#include "settings/AppSettings.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcUploadCommands, "glimpso.UploadCommands", QtInfoMsg)

UploadCommands::UploadCommands(UploadService &uploads, AppSettings &settings, Notifying &notifier)
    : m_uploads(uploads)
    , m_settings(settings)
    , m_notifier(notifier)
{
}

void UploadCommands::registerCommands(CommandRouter &router)
{
    router.add(QStringLiteral("upload"), [this](const QStringList &arguments) { return upload(arguments); });
    router.add(QStringLiteral("cloud-credentials"),
               [this](const QStringList &arguments) { return cloudCredentials(arguments); });
}

QString UploadCommands::unusablePath(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file: %1").arg(path);
    if (info.isDir())
        return QStringLiteral("%1 is a folder; upload a file").arg(path);
    if (!info.isReadable())
        return QStringLiteral("cannot read %1").arg(path);
    return {};
}

UploadCommands::Reply UploadCommands::upload(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return {2, {}, QStringLiteral("glimpso: usage: glimpso upload FILE")};
    const QString path = arguments.first();
    if (const QString why = unusablePath(path); !why.isEmpty())
        return {1, {}, QStringLiteral("glimpso: ") + why};

    const CaptureKind kind = CaptureKinds::of(ObjectNames::extensionOf(path)).value_or(CaptureKind::image);
    qCInfo(lcUploadCommands, "upload of %s asked for on the command line", qUtf8Printable(path));

    // The answer waits for the link; the desktop goes on meanwhile.
    QFutureWatcher<UploadService::UploadResult> watcher;
    QEventLoop loop;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(m_uploads.uploadFile(path, kind));
    if (!watcher.isFinished())
        loop.exec();

    try {
        const QString link = watcher.future().result().url.toString(QUrl::FullyEncoded);
        m_notifier.post(QStringLiteral("Uploaded — link copied"), link, 2.0, NoticeAction::open(link));
        return {0, link + u'\n', {}};
    } catch (const AppError &error) {
        m_notifier.error(error);
        return {1, {}, QStringLiteral("glimpso: ") + error.errorDescription()};
    } catch (const std::exception &) {
        // The service went away with the program.
        return {1, {}, QStringLiteral("glimpso: the upload was stopped")};
    }
}

UploadCommands::Reply UploadCommands::cloudCredentials(const QStringList &arguments)
{
    if (arguments == QStringList{QStringLiteral("--reload")}) {
        m_settings.reloadCloudCredentials();
        qCInfo(lcUploadCommands, "took the cloud credentials from %s again",
               qUtf8Printable(m_settings.credentialFile().path()));
        return {};
    }
    // The secret is never passed along a command line or the bus.
    return {2, {}, QStringLiteral("glimpso: cloud-credentials reads the keys from its standard input")};
}
