#pragma once

#include "platform/x11/X11Connection.h"

#include "acquire/FocusKeeper.h"

#include <QByteArray>

struct xcb_connection_t;

// The active window through the window manager's _NET_ACTIVE_WINDOW, read
// from the root window and handed back with a client message.
class X11FocusKeeper : public FocusKeeper
{
public:
    // `displayName` as for XOpenDisplay; empty means $DISPLAY.
    explicit X11FocusKeeper(QByteArray displayName = {});
    ~X11FocusKeeper() override;
    X11FocusKeeper(const X11FocusKeeper &) = delete;
    X11FocusKeeper &operator=(const X11FocusKeeper &) = delete;

    std::optional<Window> activeForeignWindow() override;
    bool activate(const Window &window) override;

private:
    unsigned atom(const char *name);

    X11Connection m_x;
};
