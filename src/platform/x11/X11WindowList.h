#pragma once

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11ScreenGeometry.h"

#include "acquire/WindowList.h"

#include <QByteArray>
#include <functional>

// The windows of an X desktop as the window manager stacks them: the
// EWMH stacking list reversed (front to back), each with its frame
// (_NET_FRAME_EXTENTS around the client), its process (_NET_WM_PID), its
// program (WM_CLASS, else _NET_WM_NAME), its type and opacity. Where no
// window manager keeps the list, the root window's mapped children stand in.
class X11WindowList : public WindowList
{
public:
    // `displayName` as for XOpenDisplay; empty means $DISPLAY. `geometry`
    // turns the server's pixels into global points; called on the thread of
    // onScreenEntries() (the main thread by default).
    explicit X11WindowList(QByteArray displayName = {},
                           std::function<X11ScreenGeometry()> geometry = &X11ScreenGeometry::current);
    ~X11WindowList() override;

    QList<Entry> onScreenEntries() override;

private:
    X11Connection m_x;
    std::function<X11ScreenGeometry()> m_geometry;
};
