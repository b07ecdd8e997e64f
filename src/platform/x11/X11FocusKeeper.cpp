#include "platform/x11/X11FocusKeeper.h"

#include <QList>
#include <QString>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> reply(T *raw)
{
    return std::unique_ptr<T, decltype(&std::free)>(raw, &std::free);
}

xcb_window_t rootOf(xcb_connection_t *c) { return xcb_setup_roots_iterator(xcb_get_setup(c)).data->root; }

} // namespace

X11FocusKeeper::X11FocusKeeper(QByteArray displayName) : m_x(std::move(displayName)) {}

X11FocusKeeper::~X11FocusKeeper() = default;

unsigned X11FocusKeeper::atom(const char *name)
{
    auto r = reply(xcb_intern_atom_reply(m_x.get(),
                                         xcb_intern_atom(m_x.get(), 0, std::uint16_t(std::strlen(name)), name),
                                         nullptr));
    return r ? r->atom : unsigned(XCB_ATOM_NONE);
}

std::optional<FocusKeeper::Window> X11FocusKeeper::activeForeignWindow()
{
    xcb_connection_t *c = m_x.get();
    if (!c)
        return std::nullopt;
    auto active = reply(xcb_get_property_reply(
        c, xcb_get_property(c, 0, rootOf(c), atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 0, 1), nullptr));
    if (!active || active->format != 32 || xcb_get_property_value_length(active.get()) < 4)
        return std::nullopt;
    const xcb_window_t window = *static_cast<const xcb_window_t *>(xcb_get_property_value(active.get()));
    if (window == XCB_WINDOW_NONE)
        return std::nullopt;
    auto pid = reply(xcb_get_property_reply(
        c, xcb_get_property(c, 0, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 0, 1), nullptr));
    if (pid && pid->format == 32 && xcb_get_property_value_length(pid.get()) >= 4
        && *static_cast<const std::uint32_t *>(xcb_get_property_value(pid.get())) == std::uint32_t(getpid()))
        return std::nullopt;
    Window result{window, {}};
    auto wmClass = reply(xcb_get_property_reply(
        c, xcb_get_property(c, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64), nullptr));
    if (wmClass && wmClass->format == 8) {
        // Instance and class, each ending in a zero byte; the class names the program.
        const QByteArray both(static_cast<const char *>(xcb_get_property_value(wmClass.get())),
                              xcb_get_property_value_length(wmClass.get()));
        const QList<QByteArray> parts = both.split('\0');
        result.name = QString::fromLocal8Bit(parts.size() > 1 ? parts.at(1) : parts.value(0));
    }
    return result;
}

bool X11FocusKeeper::activate(const Window &window)
{
    xcb_connection_t *c = m_x.get();
    if (!c)
        return false;
    auto attributes = reply(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window.id), nullptr));
    if (!attributes)
        return false;
    xcb_client_message_event_t event;
    std::memset(&event, 0, sizeof event);
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window.id;
    event.type = atom("_NET_ACTIVE_WINDOW");
    event.data.data32[0] = 2; // from a pager-like tool: the window manager obeys without second thoughts
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(c, 0, rootOf(c), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(c);
    return true;
}
