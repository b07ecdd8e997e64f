#pragma once

#include <QByteArray>

namespace X11Compositing {

// Whether a compositing manager runs on the X server's first screen (it owns
// the selection _NET_WM_CM_S0): only then are see-through windows blended
// with what lies under them.
bool managerRunning(const QByteArray &displayName = {});

} // namespace X11Compositing
