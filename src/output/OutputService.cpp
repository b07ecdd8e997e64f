#include "output/OutputService.h"

#include "appbase/AppError.h"
#include "output/ImageEncoder.h"
#include "output/Notifying.h"
#include "settings/AppSettings.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QLoggingCategory>
#include <QMimeData>
#include <QPointer>
#include <QSaveFile>
#include <QUrl>
#include <QtConcurrent>

Q_LOGGING_CATEGORY(lcOutput, "glimpso.OutputService")

namespace {

bool folderWritable(const QString &folder)
{
    const QFileInfo info(folder);
    return info.isDir() && info.isWritable();
}

// Creates the folder with its parents; throws what the caller reports.
void makeFolder(const QString &folder)
{
    if (!QDir().mkpath(folder))
        throw AppError::fileIOFailed(QStringLiteral("could not create the folder “%1”").arg(folder));
}

} // namespace

OutputService::OutputService(AppSettings &settings, Notifying &notifier, QObject *parent)
    : QObject(parent), m_settings(settings), m_notifier(notifier)
{
}

QString OutputService::timestamp(const QDateTime &now)
{
    return QLocale::c().toString(now.toLocalTime(), QStringLiteral("yyyy-MM-dd-HHmmss"));
}

QString OutputService::uniquePath(const QString &folder, const QString &extension, const QDateTime &now)
{
    const QString base = QDir(folder).filePath(QStringLiteral("glimpso-") + timestamp(now));
    QString path = base + '.' + extension;
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = base + '-' + QString::number(n) + '.' + extension;
    return path;
}

QString OutputService::writeToDisk(const QImage &image, const QString &folder, SaveFormat format, const QDateTime &now,
                                   QByteArray *encoded)
{
    makeFolder(folder);
    // A second save in the same second replaces the first, on purpose: only
    // recordings are made unique.
    const QString path = QDir(folder).filePath(QStringLiteral("glimpso-%1.%2")
                                                   .arg(timestamp(now), ImageEncoder::fileExtension(format)));
    const QByteArray bytes = ImageEncoder::encode(image, format);
    // Readers (the history, a file manager) never see half a file.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw AppError::fileIOFailed(file.errorString());
    if (file.write(bytes) != bytes.size() || !file.commit())
        throw AppError::fileIOFailed(file.errorString());
    qCInfo(lcOutput, "saved %s", qUtf8Printable(path));
    if (encoded)
        *encoded = bytes;
    return path;
}

void OutputService::writeToClipboard(const QImage &image, const std::optional<QString> &filePath, const QByteArray &encodedPng)
{
    auto *data = new QMimeData;
    QStringList types;
    if (filePath) {
        const QUrl url = QUrl::fromLocalFile(*filePath);
        data->setUrls({url});
        // File managers of GNOME's family paste a file only from this type.
        data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + url.toEncoded());
        types << QStringLiteral("fileURL");
    }
    try {
        const QByteArray png = encodedPng.isEmpty() ? ImageEncoder::png(image) : encodedPng;
        data->setData(QStringLiteral("image/png"), png);
        types << QStringLiteral("png(%1)").arg(png.size());
    } catch (const AppError &) {
        qCCritical(lcOutput, "PNG encode FAILED");
    }
    QClipboard *clipboard = QGuiApplication::clipboard();
    const bool ok = clipboard != nullptr;
    if (clipboard)
        clipboard->setMimeData(data, QClipboard::Clipboard);
    else
        delete data;
    qCInfo(lcOutput, "clipboard write ok=%d types=[%s]", ok, qUtf8Printable(types.join(QStringLiteral(", "))));
}

QFuture<QString> OutputService::handle(const QImage &image, bool notify)
{
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    const SaveFormat format = m_settings.saveFormat();
    const QDateTime now = QDateTime::currentDateTime();
    QPointer<OutputService> self(this);
    struct Written {
        QString path;
        QByteArray png; // the file's bytes when it is a PNG, for the clipboard
    };
    return QtConcurrent::run([image, access, format, now]() -> Written {
               try {
                   QByteArray bytes;
                   const QString path = writeToDisk(image, access.path, format, now, &bytes);
                   return {path, format == SaveFormat::png ? bytes : QByteArray()};
               } catch (...) {
                   access.stop();
                   if (!folderWritable(access.path))
                       throw AppError::saveFolderUnavailable(access.path);
                   throw;
               }
           })
        .then(this,
              [self, image, notify, access](const Written &written) {
                  // One PNG encoding serves the file and the clipboard.
                  writeToClipboard(image, written.path, written.png);
                  if (self && notify)
                      self->notify(QStringLiteral("Screenshot saved"), QFileInfo(written.path).fileName(),
                                   written.path);
                  access.stop();
                  return written.path;
              })
        .onFailed(this, [image](const AppError &error) -> QString {
            // The picture must not be lost with the file: it stays on the
            // clipboard while the user finds a folder that works.
            writeToClipboard(image, std::nullopt);
            throw error;
        });
}

QFuture<std::optional<QString>> OutputService::copy(const QImage &image)
{
    if (m_settings.saveCopies()) {
        QPointer<OutputService> self(this);
        return handle(image, false).then(this, [self](const QString &path) -> std::optional<QString> {
            if (self)
                self->notify(QStringLiteral("Copied to clipboard"), QFileInfo(path).fileName(), path);
            return path;
        });
    }
    writeToClipboard(image, std::nullopt);
    notify(QStringLiteral("Copied to clipboard"),
           QStringLiteral("%1×%2 screenshot").arg(image.width()).arg(image.height()), std::nullopt);
    return QtFuture::makeReadyFuture(std::optional<QString>());
}

QFuture<QString> OutputService::saveFile(const QString &temporaryPath, CaptureKind kind)
{
    const AppSettings::SaveDirectoryAccess access = m_settings.accessSaveDirectory();
    const QDateTime now = QDateTime::currentDateTime();
    return QtConcurrent::run([temporaryPath, kind, access, now]() -> QString {
        const auto failed = [&access](const QString &why) {
            access.stop();
            if (!folderWritable(access.path))
                return AppError::saveFolderUnavailable(access.path);
            return AppError::fileIOFailed(why);
        };
        if (!QDir().mkpath(access.path))
            throw failed(QStringLiteral("could not create the folder “%1”").arg(access.path));
        QString extension = QFileInfo(temporaryPath).suffix();
        if (extension.isEmpty()) {
            const QStringList known = CaptureKinds::fileExtensions(kind);
            extension = known.isEmpty() ? QStringLiteral("dat") : known.first();
        }
        const QString target = uniquePath(access.path, extension, now);
        // A rename within one file system; across file systems a copy that
        // lands under a temporary name first, so no half file shows.
        if (!QFile::rename(temporaryPath, target)) {
            QSaveFile out(target);
            QFile in(temporaryPath);
            if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly))
                throw failed(in.isOpen() ? out.errorString() : in.errorString());
            while (!in.atEnd()) {
                const QByteArray chunk = in.read(1 << 20);
                if (chunk.isEmpty() || out.write(chunk) != chunk.size())
                    throw failed(out.errorString());
            }
            if (!out.commit())
                throw failed(out.errorString());
            in.remove();
        }
        access.stop();
        return target;
    });
}

void OutputService::copyFile(const QString &path, CaptureKind kind)
{
    auto *data = new QMimeData;
    const QUrl url = QUrl::fromLocalFile(path);
    data->setUrls({url});
    data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + url.toEncoded());
    if (kind == CaptureKind::gif) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            data->setData(QStringLiteral("image/gif"), file.readAll());
    }
    if (QClipboard *clipboard = QGuiApplication::clipboard())
        clipboard->setMimeData(data, QClipboard::Clipboard);
    else
        delete data;
}

void OutputService::notify(const QString &title, const QString &body, const std::optional<QString> &filePath)
{
    m_notifier.post(title, body, 2.0, filePath ? NoticeAction::reveal(*filePath) : NoticeAction::none());
}
