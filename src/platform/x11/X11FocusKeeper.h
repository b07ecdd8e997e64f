#pragma once

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
    xcb_connection_t *connection();
    unsigned atom(const char *name);

    QByteArray m_displayName;
    xcb_connection_t *m_connection = nullptr;
};
