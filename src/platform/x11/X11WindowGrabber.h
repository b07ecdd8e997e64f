#pragma once

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11ScreenGeometry.h"

#include "acquire/WindowGrabbing.h"

#include <QByteArray>
#include <QMutex>
#include <QRect>

#include <functional>
#include <optional>

struct xcb_connection_t;

// One window's own pixels on an X server, decorations included:
// - where a compositing manager keeps every window in a picture of its own,
//   that picture (Composite's NameWindowPixmap): the whole window even where
//   others cover it or it reaches past the screen, with alpha for ARGB
//   windows;
// - otherwise, a window that nothing covers is cut from the screen; one that
//   is covered, or has alpha, is given a picture of its own for a moment
//   (redirected), and read once its program has drawn into it;
// - without Composite, or for a window that is not mapped, the cut from the
//   screen.
// It holds its own connection, so it runs on a worker thread.
class X11WindowGrabber : public WindowGrabbing
{
public:
    // How a shot was taken, for logs and tests.
    enum class Route { windowPicture, redirected, screenCut };
    // The root window's pixels under a rectangle (CaptureService::grab).
    using RootGrab = std::function<QImage(const QRect &)>;

    // `displayName` as for XOpenDisplay; empty means $DISPLAY.
    X11WindowGrabber(QByteArray displayName, RootGrab rootGrab);
    ~X11WindowGrabber() override;

    void prepare() override;
    Shot grab(std::uint32_t windowID, bool justUncovered) override;

    // The displays' layout, for the scale of a shot; set on the main thread
    // before a capture.
    void setScreens(const X11ScreenGeometry &geometry);
    std::optional<Route> lastRoute() const;

    // How long a program may take to draw a window again, and the pause in
    // its drawing that ends the wait.
    static constexpr int redrawQuietMs = 40;
    static constexpr int redrawLimitMs = 400;

private:
    struct Frame {
        std::uint32_t id = 0;
        QRect rect; // root pixels
        std::uint8_t depth = 24;
        bool viewable = false;
    };
    std::optional<Frame> frameOf(xcb_connection_t *c, std::uint32_t windowID);
    std::optional<QImage> windowPicture(xcb_connection_t *c, const Frame &frame);
    std::optional<QImage> redirectedPicture(xcb_connection_t *c, const Frame &frame);
    bool isCovered(xcb_connection_t *c, const Frame &frame);
    void waitForRedraw(xcb_connection_t *c, std::uint32_t drawable);
    QImage screenCut(xcb_connection_t *c, const Frame &frame);

    X11Connection m_x;
    RootGrab m_rootGrab;
    mutable QMutex m_mutex;
    X11ScreenGeometry m_geometry;
    std::optional<Route> m_lastRoute;
    quint64 m_damageGeneration = 0;
};
