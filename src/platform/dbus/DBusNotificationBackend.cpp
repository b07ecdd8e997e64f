#include "platform/dbus/DBusNotificationBackend.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>
#include <QPointer>

Q_LOGGING_CATEGORY(lcDBusNotifications, "glimpso.DBusNotifications", QtInfoMsg)

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString interface = QStringLiteral("org.freedesktop.Notifications");
// How long the server may take to answer; a server being started by the bus takes longest.
constexpr int callTimeoutMs = 10000;

QDBusMessage methodCall(const QString &method)
{
    return QDBusMessage::createMethodCall(service, path, interface, method);
}

} // namespace

DBusNotificationBackend::DBusNotificationBackend(QDBusConnection connection, QObject *parent)
    : QObject(parent)
    , m_connection(std::move(connection))
{
    m_connection.connect(service, path, interface, QStringLiteral("ActionInvoked"), this,
                         SLOT(actionInvoked(uint, QString)));
    m_connection.connect(service, path, interface, QStringLiteral("NotificationClosed"), this,
                         SLOT(notificationClosed(uint, uint)));
}

bool DBusNotificationBackend::meansNoServer(const QString &errorName)
{
    // Nobody owns the name and the bus cannot start anyone for it.
    return errorName == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
           errorName == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
           errorName == QLatin1String("org.freedesktop.DBus.Error.Disconnected") ||
           errorName.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn"));
}

void DBusNotificationBackend::probe(std::function<void(bool available, const QString &who)> done)
{
    if (!m_connection.isConnected()) {
        QMetaObject::invokeMethod(this, [done] { done(false, QStringLiteral("no session bus")); }, Qt::QueuedConnection);
        return;
    }
    const QDBusPendingCall call = m_connection.asyncCall(methodCall(QStringLiteral("GetServerInformation")), callTimeoutMs);
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [done](QDBusPendingCallWatcher *finished) {
        finished->deleteLater();
        const QDBusPendingReply<QString, QString, QString, QString> reply = *finished;
        if (reply.isError()) {
            done(false, reply.error().message());
            return;
        }
        done(true, reply.argumentAt<0>() + u' ' + reply.argumentAt<2>());
    });
}

QStringList DBusNotificationBackend::actionList(const Notification &notification)
{
    QStringList actions;
    for (const auto &[key, label] : notification.buttons)
        actions << key << label;
    return actions;
}

QVariantMap DBusNotificationBackend::hints(const Notification &notification)
{
    QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("glimpso")}};
    if (notification.sound)
        hints.insert(QStringLiteral("sound-name"), soundName);
    else
        hints.insert(QStringLiteral("suppress-sound"), true);
    return hints;
}

void DBusNotificationBackend::send(const Notification &notification, std::function<void(const SendResult &)> done)
{
    using Status = SendResult::Status;
    if (!m_connection.isConnected()) {
        QMetaObject::invokeMethod(
            this, [done] { done({Status::noServer, 0, QStringLiteral("no session bus")}); }, Qt::QueuedConnection);
        return;
    }
    QDBusMessage call = methodCall(QStringLiteral("Notify"));
    // The server picks how long it stands: -1.
    call << QStringLiteral("glimpso") << uint(0) << QStringLiteral("glimpso") << notification.title
         << notification.body << actionList(notification) << hints(notification) << int(-1);
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call, callTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [done](QDBusPendingCallWatcher *finished) {
        finished->deleteLater();
        const QDBusPendingReply<uint> reply = *finished;
        if (reply.isError()) {
            const QDBusError error = reply.error();
            const QString detail = error.name() + QStringLiteral(": ") + error.message();
            done({meansNoServer(error.name()) ? Status::noServer : Status::failed, 0, detail});
            return;
        }
        qCDebug(lcDBusNotifications, "notification %u sent", reply.value());
        done({Status::sent, reply.value(), {}});
    });
}

void DBusNotificationBackend::actionInvoked(uint id, const QString &key)
{
    if (onClicked)
        onClicked(id, key);
}

void DBusNotificationBackend::notificationClosed(uint id, uint)
{
    if (onClosed)
        onClosed(id);
}
