#pragma once

#include "output/NotificationBackend.h"

#include <QDBusConnection>
#include <QObject>

// Notifications through the desktop's notification server on the session bus
// (org.freedesktop.Notifications): Notify with buttons as actions, and the
// server's ActionInvoked and NotificationClosed signals back.
class DBusNotificationBackend : public QObject, public NotificationBackend
{
    Q_OBJECT

public:
    explicit DBusNotificationBackend(QDBusConnection connection = QDBusConnection::sessionBus(),
                                     QObject *parent = nullptr);

    void probe(std::function<void(bool available, const QString &who)> done) override;
    void send(const Notification &notification, std::function<void(const SendResult &)> done) override;

    // The sound of the freedesktop sound theme played with a notification.
    static inline const QString soundName = QStringLiteral("message-new-instant");

    // The Notify arguments' actions and hints, for tests.
    static QStringList actionList(const Notification &notification);
    static QVariantMap hints(const Notification &notification);
    // Errors that mean nobody serves notifications, as opposed to a refusal.
    static bool meansNoServer(const QString &errorName);

private Q_SLOTS:
    void actionInvoked(uint id, const QString &key);
    void notificationClosed(uint id, uint reason);

private:
    QDBusConnection m_connection;
};
