#include "platform/dbus/DBusCommandObject.h"

DBusCommandObject::DBusCommandObject(InstanceChannel::CommandHandler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
}

int DBusCommandObject::Run(const QStringList &arguments, QString &output, QString &error)
{
    const InstanceChannel::Reply reply = m_handler(arguments);
    output = reply.output;
    error = reply.error;
    return reply.status;
}
