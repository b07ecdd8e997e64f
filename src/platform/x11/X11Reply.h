#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <vector>

// xcb replies own their memory and are freed with free().
namespace X11Reply {

template <typename T>
using Owned = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Owned<T> own(T *raw)
{
    return Owned<T>(raw, &std::free);
}

// Atoms by name, asked all at once: one round trip for the lot. An atom the
// server doesn't know yet is XCB_ATOM_NONE (only_if_exists).
inline std::vector<xcb_atom_t> atoms(xcb_connection_t *c, std::initializer_list<const char *> names)
{
    std::vector<xcb_intern_atom_cookie_t> cookies;
    for (const char *name : names)
        cookies.push_back(xcb_intern_atom(c, 1, std::uint16_t(std::strlen(name)), name));
    std::vector<xcb_atom_t> result;
    for (const xcb_intern_atom_cookie_t &cookie : cookies) {
        auto reply = own(xcb_intern_atom_reply(c, cookie, nullptr));
        result.push_back(reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE));
    }
    return result;
}

// The 32-bit values of a property reply; empty when it has none.
inline std::vector<std::uint32_t> values32(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 32)
        return {};
    const auto *data = static_cast<const std::uint32_t *>(xcb_get_property_value(reply));
    return std::vector<std::uint32_t>(data, data + xcb_get_property_value_length(reply) / 4);
}

inline xcb_screen_t *firstScreen(xcb_connection_t *c)
{
    return xcb_setup_roots_iterator(xcb_get_setup(c)).data;
}

} // namespace X11Reply
