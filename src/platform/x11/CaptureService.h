#pragma once

#include "platform/x11/X11Connection.h"

#include "acquire/CaptureServicing.h"

#include <QByteArray>
#include <QMutex>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>

struct xcb_connection_t;

// Frozen pictures of displays on an X server: the root window's pixels under
// a display's rectangle, through shared memory when the server offers it
// (one copy less for a 4K screen) and a plain GetImage otherwise.
//
// The service holds its own connection, so shots can run on a worker thread
// without touching the GUI's.
class CaptureService : public CaptureServicing
{
public:
    // Where a display's pixels lie on the root window, asked on the calling
    // (main) thread; absent for a display the desktop no longer has.
    using DisplayLocator = std::function<std::optional<QRect>(std::uint32_t displayID)>;

    // `displayName` as for XOpenDisplay; empty means $DISPLAY.
    CaptureService(QByteArray displayName, DisplayLocator locator);
    ~CaptureService() override;

    QFuture<QImage> captureDisplay(std::uint32_t displayID) override;
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t displayID, double scale) override;

    // Tests use it to drive the GetImage route on a server that has MIT-SHM.
    void setSharedMemoryAllowed(bool allowed);

    // The pixels of `rect` on the root window, on the calling thread. Throws
    // AppError captureFailed.
    QImage grab(const QRect &rect);
    // Whether the server holds windows of the desktop type (icon holders).
    bool hasDesktopWindows();

private:
    // grab() for a display: a display that is not on the desktop, or a
    // picture the server refuses, fails with the display's own text.
    QImage grabDisplay(std::uint32_t displayID, const std::optional<QRect> &rect);
    std::optional<QImage> grabShared(xcb_connection_t *c, unsigned root, const QRect &rect);
    std::optional<QImage> grabPlain(xcb_connection_t *c, unsigned root, const QRect &rect);

    X11Connection m_x;
    DisplayLocator m_locator;
    QMutex m_mutex;
    bool m_sharedMemoryAllowed = true;
};
