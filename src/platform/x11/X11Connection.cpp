#include "platform/x11/X11Connection.h"

#include <xcb/xcb.h>

X11Connection::X11Connection(QByteArray displayName) : m_displayName(std::move(displayName)) {}

X11Connection::~X11Connection()
{
    if (m_connection)
        xcb_disconnect(m_connection);
}

xcb_connection_t *X11Connection::get()
{
    if (m_connection && xcb_connection_has_error(m_connection)) {
        xcb_disconnect(m_connection);
        m_connection = nullptr;
    }
    if (!m_connection) {
        xcb_connection_t *c = xcb_connect(m_displayName.isEmpty() ? nullptr : m_displayName.constData(), nullptr);
        if (xcb_connection_has_error(c)) {
            xcb_disconnect(c);
            return nullptr;
        }
        m_connection = c;
        ++m_generation;
    }
    return m_connection;
}
