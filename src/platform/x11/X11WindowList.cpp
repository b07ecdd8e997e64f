#include "platform/x11/X11WindowList.h"

#include "platform/x11/X11Reply.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <vector>

namespace {

enum AtomIndex {
    stacking,
    clientList,
    frameExtents,
    wmPid,
    wmName,
    utf8String,
    windowType,
    wmState,
    stateHidden,
    wmDesktop,
    currentDesktop,
    opacity,
    typeDesktop,
    typeDock,
    typeMenu,
    typeDropdown,
    typePopup,
    typeTooltip,
    typeNotification,
    typeCombo,
    typeDnd,
};

std::vector<xcb_atom_t> knownAtoms(xcb_connection_t *c)
{
    return X11Reply::atoms(c, {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST", "_NET_FRAME_EXTENTS",
                               "_NET_WM_PID", "_NET_WM_NAME", "UTF8_STRING", "_NET_WM_WINDOW_TYPE", "_NET_WM_STATE",
                               "_NET_WM_STATE_HIDDEN", "_NET_WM_DESKTOP", "_NET_CURRENT_DESKTOP",
                               "_NET_WM_WINDOW_OPACITY", "_NET_WM_WINDOW_TYPE_DESKTOP", "_NET_WM_WINDOW_TYPE_DOCK",
                               "_NET_WM_WINDOW_TYPE_MENU", "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
                               "_NET_WM_WINDOW_TYPE_POPUP_MENU", "_NET_WM_WINDOW_TYPE_TOOLTIP",
                               "_NET_WM_WINDOW_TYPE_NOTIFICATION", "_NET_WM_WINDOW_TYPE_COMBO",
                               "_NET_WM_WINDOW_TYPE_DND"});
}

// The root's property of windows, or nothing.
std::vector<xcb_window_t> windowsOf(xcb_connection_t *c, xcb_window_t root, xcb_atom_t property)
{
    if (property == XCB_ATOM_NONE)
        return {};
    auto reply = X11Reply::own(
        xcb_get_property_reply(c, xcb_get_property(c, 0, root, property, XCB_ATOM_WINDOW, 0, 16384), nullptr));
    const std::vector<std::uint32_t> values = X11Reply::values32(reply.get());
    return {values.begin(), values.end()};
}

// Bottom to top, the root's mapped children that a window manager would
// manage: for a desktop without one.
std::vector<xcb_window_t> mappedChildren(xcb_connection_t *c, xcb_window_t root)
{
    auto tree = X11Reply::own(xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr));
    if (!tree)
        return {};
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    for (int i = 0; i < count; ++i)
        cookies.push_back(xcb_get_window_attributes(c, children[i]));
    std::vector<xcb_window_t> result;
    for (int i = 0; i < count; ++i) {
        auto attributes = X11Reply::own(xcb_get_window_attributes_reply(c, cookies[std::size_t(i)], nullptr));
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE && !attributes->override_redirect &&
            attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT)
            result.push_back(children[i]);
    }
    return result;
}

QString text(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 8)
        return {};
    return QString::fromUtf8(static_cast<const char *>(xcb_get_property_value(reply)),
                             xcb_get_property_value_length(reply));
}

// WM_CLASS holds the instance and the class, each ended by a zero byte; the
// class names the program ("XTerm", "firefox").
QString programClass(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 8)
        return {};
    const QByteArray both(static_cast<const char *>(xcb_get_property_value(reply)),
                          xcb_get_property_value_length(reply));
    const QList<QByteArray> parts = both.split('\0');
    return QString::fromLocal8Bit(parts.size() > 1 && !parts.at(1).isEmpty() ? parts.at(1) : parts.value(0));
}

struct Asked {
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t origin;
    xcb_get_property_cookie_t extents, pid, wmClass, name, type, state, desktop, opacity;
};

} // namespace

X11WindowList::X11WindowList(QByteArray displayName, std::function<X11ScreenGeometry()> geometry)
    : m_x(std::move(displayName)), m_geometry(std::move(geometry))
{
}

X11WindowList::~X11WindowList() = default;

QList<WindowList::Entry> X11WindowList::onScreenEntries()
{
    QList<Entry> entries;
    xcb_connection_t *c = m_x.get();
    if (!c)
        return entries;
    const xcb_window_t root = X11Reply::firstScreen(c)->root;
    const std::vector<xcb_atom_t> atom = knownAtoms(c);
    std::vector<xcb_window_t> windows = windowsOf(c, root, atom[stacking]);
    if (windows.empty())
        windows = windowsOf(c, root, atom[clientList]);
    if (windows.empty())
        windows = mappedChildren(c, root);
    // The lists run bottom to top; the picker wants the front first.
    std::reverse(windows.begin(), windows.end());

    auto current = X11Reply::own(xcb_get_property_reply(
        c, xcb_get_property(c, 0, root, atom[currentDesktop], XCB_ATOM_CARDINAL, 0, 1), nullptr));
    const std::vector<std::uint32_t> currentValue = X11Reply::values32(current.get());

    // Every question first, then the answers: one round trip for the lot.
    std::vector<Asked> asked;
    asked.reserve(windows.size());
    for (const xcb_window_t w : windows) {
        const auto property = [&](xcb_atom_t name, xcb_atom_t type, std::uint32_t length) {
            return xcb_get_property(c, 0, w, name, type, 0, length);
        };
        asked.push_back({xcb_get_window_attributes(c, w), xcb_get_geometry(c, w),
                         xcb_translate_coordinates(c, w, root, 0, 0),
                         property(atom[frameExtents], XCB_ATOM_CARDINAL, 4), property(atom[wmPid], XCB_ATOM_CARDINAL, 1),
                         property(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 256),
                         property(atom[wmName], atom[utf8String], 256), property(atom[windowType], XCB_ATOM_ATOM, 16),
                         property(atom[wmState], XCB_ATOM_ATOM, 32), property(atom[wmDesktop], XCB_ATOM_CARDINAL, 1),
                         property(atom[opacity], XCB_ATOM_CARDINAL, 1)});
    }
    const X11ScreenGeometry geometry = m_geometry ? m_geometry() : X11ScreenGeometry();
    const std::vector<xcb_atom_t> excludedTypes = {atom[typeDesktop], atom[typeDock],    atom[typeMenu],
                                                   atom[typeDropdown], atom[typePopup], atom[typeTooltip],
                                                   atom[typeNotification], atom[typeCombo], atom[typeDnd]};
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const Asked &a = asked[i];
        auto attributes = X11Reply::own(xcb_get_window_attributes_reply(c, a.attributes, nullptr));
        auto geo = X11Reply::own(xcb_get_geometry_reply(c, a.geometry, nullptr));
        auto origin = X11Reply::own(xcb_translate_coordinates_reply(c, a.origin, nullptr));
        auto extents = X11Reply::own(xcb_get_property_reply(c, a.extents, nullptr));
        auto pid = X11Reply::own(xcb_get_property_reply(c, a.pid, nullptr));
        auto wmClass = X11Reply::own(xcb_get_property_reply(c, a.wmClass, nullptr));
        auto name = X11Reply::own(xcb_get_property_reply(c, a.name, nullptr));
        auto type = X11Reply::own(xcb_get_property_reply(c, a.type, nullptr));
        auto state = X11Reply::own(xcb_get_property_reply(c, a.state, nullptr));
        auto desktop = X11Reply::own(xcb_get_property_reply(c, a.desktop, nullptr));
        auto alpha = X11Reply::own(xcb_get_property_reply(c, a.opacity, nullptr));
        // Gone since the list was read, or not on the screen.
        if (!attributes || !geo || !origin || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        const std::vector<std::uint32_t> states = X11Reply::values32(state.get());
        if (std::find(states.begin(), states.end(), atom[stateHidden]) != states.end())
            continue;
        const std::vector<std::uint32_t> onDesktop = X11Reply::values32(desktop.get());
        if (!onDesktop.empty() && !currentValue.empty() && onDesktop[0] != 0xffffffffu && onDesktop[0] != currentValue[0])
            continue;

        Entry entry;
        entry.windowID = windows[i];
        if (const std::vector<std::uint32_t> p = X11Reply::values32(pid.get()); !p.empty())
            entry.processID = qint64(p[0]);
        entry.appName = programClass(wmClass.get());
        if (entry.appName.isEmpty())
            entry.appName = text(name.get());
        QRect frame(origin->dst_x, origin->dst_y, geo->width, geo->height);
        if (const std::vector<std::uint32_t> e = X11Reply::values32(extents.get()); e.size() == 4)
            frame.adjust(-int(e[0]), -int(e[2]), int(e[1]), int(e[3]));
        entry.frame = geometry.toGlobal(frame);
        for (const std::uint32_t t : X11Reply::values32(type.get()))
            if (std::find(excludedTypes.begin(), excludedTypes.end(), t) != excludedTypes.end() && t != XCB_ATOM_NONE)
                entry.isNormalLayer = false;
        if (const std::vector<std::uint32_t> o = X11Reply::values32(alpha.get()); !o.empty())
            entry.opacity = double(o[0]) / double(0xffffffffu);
        entries << entry;
    }
    return entries;
}
