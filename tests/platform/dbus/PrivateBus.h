#pragma once

#include <QDBusConnection>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

// A session bus of the test's own (dbus-daemon), and named connections to it.
// It starts no services on demand: what answers on it is what the test put there.
class PrivateBus
{
public:
    PrivateBus()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty())
            return;
        // The desktop's own session bus setup, without the folders of services
        // that the bus would start on demand, listening in a folder of its own.
        QFile standard(QStringLiteral("/usr/share/dbus-1/session.conf"));
        if (!standard.open(QIODevice::ReadOnly))
            return;
        QString text = QString::fromUtf8(standard.readAll());
        text.replace(QStringLiteral("<standard_session_servicedirs />"), QString());
        text.replace(QStringLiteral("unix:tmpdir=/tmp"), QStringLiteral("unix:dir=") + m_folder.path());
        const QString config = m_folder.filePath(QStringLiteral("bus.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write(text.toUtf8());
        file.close();
        m_daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--config-file=") + config,
                                                       QStringLiteral("--nofork"), QStringLiteral("--print-address=1")});
        if (!m_daemon.waitForStarted(5000))
            return;
        while (!m_daemon.canReadLine() && m_daemon.waitForReadyRead(5000)) {
        }
        m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }

    ~PrivateBus()
    {
        // The connections stay with Qt until the process ends; closing them
        // here, while objects of the test may still hold them, is what libdbus
        // refuses. Each bus has names of its own.
        m_daemon.terminate();
        m_daemon.waitForFinished(5000);
    }

    bool isUp() const { return !m_address.isEmpty(); }
    const QString &address() const { return m_address; }

    QDBusConnection connect(const QString &name)
    {
        static int serial = 0;
        return QDBusConnection::connectToBus(m_address, QStringLiteral("%1-%2").arg(name).arg(++serial));
    }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
};
