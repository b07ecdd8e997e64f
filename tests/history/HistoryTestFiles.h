#pragma once

#include "SettingsFakes.h"
#include "settings/AppSettings.h"

#include <QDateTime>
#include <QString>
#include <QTemporaryDir>

#include <memory>

// Real capture files made the way other programs make them: pictures through
// Qt's writers, HEIC through libheif, videos through the ffmpeg program.
namespace HistoryTestFiles {

void writePng(const QString &path, int width, int height);
void writeJpeg(const QString &path, int width, int height);
void writeGif(const QString &path, int width, int height);
// False when libheif has no HEVC encoder here.
bool writeHeic(const QString &path, int width, int height);
// Options are passed to ffmpeg before the output; returns ffmpeg's success.
bool writeVideo(const QString &path, double seconds, const QStringList &options = {});
void writeBytes(const QString &path, const QByteArray &bytes);
// Sets the modification time, which is the creation date the listing takes
// when it is earlier than the birth time.
void setDate(const QString &path, const QDateTime &date);

} // namespace HistoryTestFiles

// Settings in memory, and a home of its own for each test: the save folder,
// the support folder and the Trash all lie in one temporary folder.
class HistoryTestHome
{
public:
    HistoryTestHome();
    ~HistoryTestHome();

    QString saveFolder() const { return m_dir.filePath(QStringLiteral("home/Pictures/Screenshots")); }
    QString supportFolder() const { return m_dir.filePath(QStringLiteral("home/.local/share/glimpso")); }
    QString headerCacheFile() const { return m_dir.filePath(QStringLiteral("home/.cache/glimpso/history-headers")); }
    QString trashFilesFolder() const { return m_dir.filePath(QStringLiteral("home/.local/share/Trash/files")); }
    QString savePath(const QString &name) const { return saveFolder() + u'/' + name; }
    AppSettings &settings() { return *m_settings; }

private:
    QTemporaryDir m_dir;
    QByteArray m_oldHome;
    QByteArray m_oldDataHome;
    QByteArray m_oldCacheHome;
    MemorySettingsStorage m_storage;
    InertLoginItem m_loginItem;
    std::unique_ptr<AppSettings> m_settings;
};
