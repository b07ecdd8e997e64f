#include "platform/dbus/DBusSignalRelay.h"

void DBusSignalRelay::handOff()
{
    if (onHandOff)
        onHandOff();
}

void DBusSignalRelay::claim(const QString &processId)
{
    if (onClaim)
        onClaim(processId);
}
