#include "output/ShutterSound.h"

#include "settings/AppSettings.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

ShutterSound::ShutterSound(AppSettings &settings, QObject *parent) : QObject(parent), m_settings(settings) {}

QStringList ShutterSound::command()
{
    // libcanberra's player knows the theme by its sound name.
    const QString canberra = QStandardPaths::findExecutable(QStringLiteral("canberra-gtk-play"));
    if (!canberra.isEmpty())
        return {canberra, QStringLiteral("--id=camera-shutter"), QStringLiteral("--description=glimpso")};
    const QString file = QStringLiteral("/usr/share/sounds/freedesktop/stereo/camera-shutter.oga");
    if (!QFileInfo::exists(file))
        return {};
    for (const char *player : {"pw-play", "paplay"}) {
        const QString path = QStandardPaths::findExecutable(QString::fromLatin1(player));
        if (!path.isEmpty())
            return {path, file};
    }
    return {};
}

void ShutterSound::play()
{
    if (!m_settings.shutterSound())
        return;
    const QStringList player = command();
    if (player.isEmpty())
        return;
    if (!m_player)
        m_player = new QProcess(this);
    if (m_player->state() != QProcess::NotRunning) {
        m_player->kill();
        m_player->waitForFinished(200);
    }
    m_player->setProgram(player.first());
    m_player->setArguments(player.mid(1));
    m_player->setStandardOutputFile(QProcess::nullDevice());
    m_player->setStandardErrorFile(QProcess::nullDevice());
    m_player->start();
}
