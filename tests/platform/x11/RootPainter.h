#pragma once

#include <QByteArray>
#include <QRect>
#include <QRgb>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

// Paints known rectangles straight onto the root window of a server that has
// no window manager and no compositor, so they stay where they are drawn.
class RootPainter
{
public:
    explicit RootPainter(const QByteArray &display) : m_c(xcb_connect(display.constData(), nullptr))
    {
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
        m_gc = xcb_generate_id(m_c);
        xcb_create_gc(m_c, m_gc, m_screen->root, 0, nullptr);
    }
    ~RootPainter() { xcb_disconnect(m_c); }

    bool ok() const { return !xcb_connection_has_error(m_c); }

    void fill(const QRect &rect, QRgb colour)
    {
        const std::uint32_t pixel = colour & 0xffffff;
        xcb_change_gc(m_c, m_gc, XCB_GC_FOREGROUND, &pixel);
        const xcb_rectangle_t r{std::int16_t(rect.x()), std::int16_t(rect.y()), std::uint16_t(rect.width()),
                                std::uint16_t(rect.height())};
        xcb_poly_fill_rectangle(m_c, m_screen->root, m_gc, 1, &r);
    }

    // Returns once the server has drawn everything sent before.
    void sync() { std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr)); }

    // A managed-looking window that says it is the desktop.
    void announceDesktopWindow()
    {
        const xcb_window_t window = xcb_generate_id(m_c);
        xcb_create_window(m_c, XCB_COPY_FROM_PARENT, window, m_screen->root, 0, 0, 10, 10, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual, 0, nullptr);
        const xcb_atom_t type = atom("_NET_WM_WINDOW_TYPE");
        const xcb_atom_t desktop = atom("_NET_WM_WINDOW_TYPE_DESKTOP");
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, type, XCB_ATOM_ATOM, 32, 1, &desktop);
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, m_screen->root, atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW,
                            32, 1, &window);
        sync();
    }

private:
    xcb_atom_t atom(const char *name)
    {
        auto *r = xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
        const xcb_atom_t a = r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(r);
        return a;
    }

    xcb_connection_t *m_c;
    xcb_screen_t *m_screen = nullptr;
    xcb_gcontext_t m_gc = 0;
};
