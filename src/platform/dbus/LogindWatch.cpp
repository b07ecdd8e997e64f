#include "platform/dbus/LogindWatch.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

#include <unistd.h>

Q_LOGGING_CATEGORY(lcLogind, "glimpso.LogindWatch")

LogindWatch::LogindWatch(QDBusConnection bus, qint64 pid) : m_bus(std::move(bus)), m_pid(pid < 0 ? ::getpid() : pid) {}

LogindWatch::~LogindWatch()
{
    stop();
}

void LogindWatch::start(std::function<void(Reason)> onEvent)
{
    stop();
    m_onEvent = std::move(onEvent);
    if (!m_bus.isConnected())
        return;
    m_watching = true;
    m_bus.connect(service, managerPath, managerInterface, QStringLiteral("PrepareForSleep"), this,
                  SLOT(prepareForSleep(bool)));
    // The session is asked for without waiting: the recording starts meanwhile.
    QDBusMessage call = QDBusMessage::createMethodCall(service, managerPath, managerInterface,
                                                       QStringLiteral("GetSessionByPID"));
    call << quint32(m_pid);
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *done;
        if (!m_watching)
            return;
        if (reply.isError()) {
            qCInfo(lcLogind, "no logind session to watch: %s", qUtf8Printable(reply.error().message()));
            return;
        }
        watchSession(reply.value().path());
    });
}

void LogindWatch::watchSession(const QString &path)
{
    m_session = path;
    m_bus.connect(service, path, sessionInterface, QStringLiteral("Lock"), this, SLOT(locked()));
    m_bus.connect(service, path, QStringLiteral("org.freedesktop.DBus.Properties"),
                  QStringLiteral("PropertiesChanged"), this,
                  SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
}

void LogindWatch::stop()
{
    if (!m_watching)
        return;
    m_watching = false;
    m_bus.disconnect(service, managerPath, managerInterface, QStringLiteral("PrepareForSleep"), this,
                     SLOT(prepareForSleep(bool)));
    if (!m_session.isEmpty()) {
        m_bus.disconnect(service, m_session, sessionInterface, QStringLiteral("Lock"), this, SLOT(locked()));
        m_bus.disconnect(service, m_session, QStringLiteral("org.freedesktop.DBus.Properties"),
                         QStringLiteral("PropertiesChanged"), this,
                         SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
    }
    m_session.clear();
    m_onEvent = {};
}

void LogindWatch::tell(Reason reason)
{
    if (m_watching && m_onEvent)
        m_onEvent(reason);
}

void LogindWatch::prepareForSleep(bool starting)
{
    if (starting)
        tell(Reason::sleep);
}

void LogindWatch::locked()
{
    tell(Reason::sessionInactive);
}

void LogindWatch::propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &)
{
    if (interface != sessionInterface)
        return;
    if (changed.contains(QStringLiteral("Active")) && !changed.value(QStringLiteral("Active")).toBool())
        tell(Reason::sessionInactive);
    else if (changed.value(QStringLiteral("LockedHint")).toBool())
        tell(Reason::sessionInactive);
}
