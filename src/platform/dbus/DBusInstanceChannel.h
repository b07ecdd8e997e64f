#pragma once

#include "appbase/InstanceChannel.h"

#include <QDBusConnection>

#include <memory>

class DBusCommandObject;
class DBusSignalRelay;

// Running copies on the session bus. Every copy queues for the well-known name
// com.tovarine.glimpso, so the name's queue is the list of running copies; the
// first in it answers the command line. Hand-off and claim travel as signals of
// com.tovarine.glimpso.SingleInstance.
class DBusInstanceChannel : public InstanceChannel
{
public:
    explicit DBusInstanceChannel(QDBusConnection connection = QDBusConnection::sessionBus());
    ~DBusInstanceChannel() override;

    static bool sessionBusAvailable();

    QString name() const override { return QStringLiteral("the session bus"); }
    QStringList otherCopies() override;
    void postHandOff() override;
    void postClaim(const QString &processId) override;
    void observeHandOff(std::function<void()> action) override;
    void observeClaim(std::function<void(const QString &)> action) override;
    void askToQuit(const QString &copy) override;
    bool serveCommands(CommandHandler handler) override;
    std::optional<Reply> sendCommand(const QStringList &arguments, int timeoutMs) override;
    void withdraw() override;

private:
    void postSignal(const QString &signal, const QVariantList &arguments);
    void connectSignal(const QString &signal, const char *slot);

    QDBusConnection m_connection;
    std::unique_ptr<DBusSignalRelay> m_relay;
    std::unique_ptr<DBusCommandObject> m_commands;
    bool m_serving = false;
};
