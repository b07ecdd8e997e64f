#pragma once

#include "appbase/CaptureKind.h"
#include "settings/SettingsEnums.h"

#include <QDateTime>
#include <QFuture>
#include <QImage>
#include <QObject>
#include <QString>

#include <optional>

class AppSettings;
class Notifying;

// Takes a finished picture or recording to the save folder and the clipboard.
// Settings, the clipboard and notices are touched on the main thread; the
// encoding and the disk run on a worker. Failures finish the futures with an
// AppError; the picture stays with the caller, so nothing is lost.
class OutputService : public QObject
{
    Q_OBJECT

public:
    OutputService(AppSettings &settings, Notifying &notifier, QObject *parent = nullptr);

    // The clipboard, and with saveCopies on a file too, whose path comes back.
    QFuture<std::optional<QString>> copy(const QImage &image);
    // The file in the save folder, and the clipboard; the file's path.
    QFuture<QString> handle(const QImage &image, bool notify);
    // Moves a finished recording into the save folder under a name of its own.
    QFuture<QString> saveFile(const QString &temporaryPath, CaptureKind kind);
    // The file on the clipboard; a GIF's bytes go along for programs that take
    // animated pictures.
    void copyFile(const QString &path, CaptureKind kind);

    // Steps of the above, public for their tests.
    static QString timestamp(const QDateTime &now);
    // "glimpso-{timestamp}.{ext}", or "-2", "-3"… before the dot when taken.
    static QString uniquePath(const QString &folder, const QString &extension, const QDateTime &now);
    // Writes atomically, replacing a file of the same name; throws AppError.
    // `encoded`, when given, receives the file's bytes.
    static QString writeToDisk(const QImage &image, const QString &folder, SaveFormat format, const QDateTime &now,
                               QByteArray *encoded = nullptr);
    // Puts the picture, and the file when there is one, on the clipboard.
    // `png` is the picture's PNG when it was encoded already.
    static void writeToClipboard(const QImage &image, const std::optional<QString> &filePath,
                                 const QByteArray &png = {});

private:
    void notify(const QString &title, const QString &body, const std::optional<QString> &filePath);

    AppSettings &m_settings;
    Notifying &m_notifier;
};
