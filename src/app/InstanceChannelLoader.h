#pragma once

#include "appbase/InstanceChannel.h"

#include <memory>

// Picks how copies of glimpso talk: the session bus when there is one, else a
// local socket. GLIMPSO_INSTANCE_CHANNEL=dbus|local forces one (tests use it).
namespace InstanceChannelLoader {
std::unique_ptr<InstanceChannel> make();
}
