#include "app/InstanceChannelLoader.h"

#include "platform/dbus/DBusInstanceChannel.h"
#include "platform/local/LocalSocketInstanceChannel.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcInstanceLoader, "glimpso.InstanceChannelLoader", QtInfoMsg)

namespace InstanceChannelLoader {

std::unique_ptr<InstanceChannel> make()
{
    const QByteArray forced = qgetenv("GLIMPSO_INSTANCE_CHANNEL");
    if (forced == "local")
        return std::make_unique<LocalSocketInstanceChannel>();
    if (forced == "dbus" || DBusInstanceChannel::sessionBusAvailable())
        return std::make_unique<DBusInstanceChannel>();
    qCInfo(lcInstanceLoader) << "no session bus; running copies talk over a local socket";
    return std::make_unique<LocalSocketInstanceChannel>();
}

} // namespace InstanceChannelLoader
