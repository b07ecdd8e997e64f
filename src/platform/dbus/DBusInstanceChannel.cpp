#include "platform/dbus/DBusInstanceChannel.h"

#include "platform/dbus/DBusCommandObject.h"
#include "platform/dbus/DBusNames.h"
#include "platform/dbus/DBusSignalRelay.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcDBusInstance, "glimpso.DBusInstanceChannel", QtInfoMsg)

namespace {

// The bus interface object of QtDBus queues signals carrying these types
// across threads; unregistered, a short-lived command-line client may log
// "invalid type" warnings on its way out.
void registerQueuedTypes()
{
    qRegisterMetaType<QDBusError>();
    qRegisterMetaType<QDBusMessage>();
}

} // namespace

DBusInstanceChannel::DBusInstanceChannel(QDBusConnection connection)
    : m_connection(std::move(connection))
    , m_relay(std::make_unique<DBusSignalRelay>())
{
    registerQueuedTypes();
}

DBusInstanceChannel::~DBusInstanceChannel()
{
    withdraw();
}

bool DBusInstanceChannel::sessionBusAvailable()
{
    registerQueuedTypes();
    return QDBusConnection::sessionBus().isConnected();
}

QStringList DBusInstanceChannel::otherCopies()
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                       QStringLiteral("/org/freedesktop/DBus"),
                                                       QStringLiteral("org.freedesktop.DBus"),
                                                       QStringLiteral("ListQueuedOwners"));
    call << DBusNames::service;
    const QDBusReply<QStringList> reply = m_connection.call(call, QDBus::Block, 2000);
    if (!reply.isValid())
        return {}; // no owner at all: nobody runs
    QStringList others = reply.value();
    others.removeAll(m_connection.baseService());
    return others;
}

void DBusInstanceChannel::postSignal(const QString &signal, const QVariantList &arguments)
{
    QDBusMessage message =
        QDBusMessage::createSignal(DBusNames::path, DBusNames::singleInstanceInterface, signal);
    message.setArguments(arguments);
    m_connection.send(message);
    // A copy that is about to exit must not leave before the bus has the message.
    m_connection.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                     QStringLiteral("/org/freedesktop/DBus"),
                                                     QStringLiteral("org.freedesktop.DBus.Peer"),
                                                     QStringLiteral("Ping")),
                      QDBus::Block, 1000);
}

void DBusInstanceChannel::postHandOff()
{
    postSignal(QStringLiteral("handOff"), {});
}

void DBusInstanceChannel::postClaim(const QString &processId)
{
    postSignal(QStringLiteral("claim"), {processId});
}

void DBusInstanceChannel::connectSignal(const QString &signal, const char *slot)
{
    if (!m_connection.connect(QString(), DBusNames::path, DBusNames::singleInstanceInterface, signal,
                              m_relay.get(), slot))
        qCWarning(lcDBusInstance) << "cannot listen for" << signal << m_connection.lastError().message();
}

void DBusInstanceChannel::observeHandOff(std::function<void()> action)
{
    m_relay->onHandOff = std::move(action);
    connectSignal(QStringLiteral("handOff"), SLOT(handOff()));
}

void DBusInstanceChannel::observeClaim(std::function<void(const QString &)> action)
{
    m_relay->onClaim = std::move(action);
    connectSignal(QStringLiteral("claim"), SLOT(claim(QString)));
}

void DBusInstanceChannel::askToQuit(const QString &copy)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(copy, DBusNames::path, DBusNames::captureInterface, QStringLiteral("Run"));
    call << QStringList{QStringLiteral("quit")};
    m_connection.call(call, QDBus::NoBlock);
}

bool DBusInstanceChannel::serveCommands(CommandHandler handler)
{
    m_commands = std::make_unique<DBusCommandObject>(std::move(handler));
    if (!m_connection.registerObject(DBusNames::path, m_commands.get(), QDBusConnection::ExportAllSlots)) {
        qCWarning(lcDBusInstance) << "cannot register" << DBusNames::path << m_connection.lastError().message();
        return false;
    }
    const auto reply = m_connection.interface()->registerService(
        DBusNames::service, QDBusConnectionInterface::QueueService, QDBusConnectionInterface::AllowReplacement);
    if (!reply.isValid()) {
        qCWarning(lcDBusInstance) << "cannot own" << DBusNames::service << reply.error().message();
        return false;
    }
    m_serving = true;
    qCInfo(lcDBusInstance) << "answering on the session bus as" << DBusNames::service;
    return true;
}

std::optional<InstanceChannel::Reply> DBusInstanceChannel::sendCommand(const QStringList &arguments, int timeoutMs)
{
    QDBusMessage call = QDBusMessage::createMethodCall(DBusNames::service, DBusNames::path,
                                                       DBusNames::captureInterface, QStringLiteral("Run"));
    call << arguments;
    const QDBusMessage answer = m_connection.call(call, QDBus::Block, timeoutMs);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().size() != 3)
        return std::nullopt;
    const QVariantList values = answer.arguments();
    return Reply{values.at(0).toInt(), values.at(1).toString(), values.at(2).toString()};
}

void DBusInstanceChannel::withdraw()
{
    if (!m_serving)
        return;
    m_serving = false;
    m_connection.interface()->unregisterService(DBusNames::service);
    m_connection.unregisterObject(DBusNames::path);
}
