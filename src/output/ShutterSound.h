#pragma once

#include <QObject>
#include <QStringList>

class AppSettings;
class QProcess;

// The freedesktop sound theme's camera shutter, played by whichever player
// the desktop has, without waiting for it. A second shot while it plays
// restarts it instead of layering two.
class ShutterSound : public QObject
{
    Q_OBJECT

public:
    explicit ShutterSound(AppSettings &settings, QObject *parent = nullptr);
    void play();

    // The player and its arguments, or empty when the shutter stays silent.
    static QStringList command();

private:
    AppSettings &m_settings;
    QProcess *m_player = nullptr;
};
