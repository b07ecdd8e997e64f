#pragma once

#include "recording/InterruptionWatch.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

// systemd-logind's word that a recording must end, on the system bus: the
// machine is about to sleep (Manager.PrepareForSleep(true)), or this session
// was locked (Session.Lock, LockedHint) or stopped being the active one on
// its seat (Active false). Where there is no logind (a container, a system
// without systemd) nothing is watched and nothing is said.
class LogindWatch : public QObject, public InterruptionWatch
{
    Q_OBJECT

public:
    // `bus` is the system bus; tests hand in one of their own.
    explicit LogindWatch(QDBusConnection bus = QDBusConnection::systemBus(), qint64 pid = -1);
    ~LogindWatch() override;

    void start(std::function<void(Reason)> onEvent) override;
    void stop() override;

    // This process's session object, once found; empty before or without one.
    QString sessionPath() const { return m_session; }

    static inline const QString service = QStringLiteral("org.freedesktop.login1");
    static inline const QString managerPath = QStringLiteral("/org/freedesktop/login1");
    static inline const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
    static inline const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");

private Q_SLOTS:
    void prepareForSleep(bool starting);
    void locked();
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &invalidated);

private:
    void watchSession(const QString &path);
    void tell(Reason reason);

    QDBusConnection m_bus;
    qint64 m_pid;
    QString m_session;
    std::function<void(Reason)> m_onEvent;
    bool m_watching = false;
};
