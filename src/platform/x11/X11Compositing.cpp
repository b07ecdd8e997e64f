#include "platform/x11/X11Compositing.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace X11Compositing {

bool managerRunning(const QByteArray &displayName)
{
    int screenNumber = 0;
    xcb_connection_t *c = xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screenNumber);
    if (xcb_connection_has_error(c)) {
        xcb_disconnect(c);
        return false;
    }
    QByteArray name("_NET_WM_CM_S");
    name.append(QByteArray::number(screenNumber));
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, std::uint16_t(name.size()), name.constData()), nullptr),
        &std::free);
    bool running = false;
    if (atom) {
        std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
            xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, atom->atom), nullptr), &std::free);
        running = owner && owner->owner != XCB_NONE;
    }
    xcb_disconnect(c);
    return running;
}

} // namespace X11Compositing
