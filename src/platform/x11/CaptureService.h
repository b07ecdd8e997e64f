#pragma once

#include "platform/x11/ShmSegmentPool.h"
#include "platform/x11/X11Connection.h"

#include "acquire/CaptureServicing.h"

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QRect>

#include <functional>
#include <memory>
#include <optional>

struct xcb_connection_t;

// Frozen pictures of displays on an X server: the root window's pixels under
// a display's rectangle, written by the server straight into shared memory
// that is kept from one capture to the next (made ready ahead for large
// displays; without such a block, a large display is written piece by piece
// through a small one), and sent through the socket in pieces where the server
// cannot share memory with us.
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

    // Makes a block ready for each of these rectangles of the root window,
    // mapped on both sides, so that the first capture after start-up is as
    // quick as the later ones. Runs on a worker and returns at once; the
    // future finishes when the blocks are ready and free.
    QFuture<void> prepare(QList<QRect> rects);
    QFuture<QImage> captureDisplayHidingDesktopIcons(std::uint32_t displayID, double scale) override;
    void releaseKeptMemory() override;
    // Makes blocks ready for the large displays captured in pieces since the
    // last call.
    QFuture<void> keepMemoryReady() override;

    // Tests use these to drive the other routes on a server that has them all:
    // without shared memory, GetImage; without server-side drawing, the
    // server's copy into shared memory (ShmGetImage).
    void setSharedMemoryAllowed(bool allowed);
    void setRenderAllowed(bool allowed);
    // The shared blocks kept now, and made since the start.
    int sharedBlockCount();
    int sharedBlocksMade();

    // The pixels of `rect` on the root window, on the calling thread. Throws
    // AppError captureFailed.
    QImage grab(const QRect &rect);
    // Whether the server holds windows of the desktop type (icon holders).
    bool hasDesktopWindows();

private:
    // grab() when `plainAllowed`: a kept block, a new small one, or the
    // socket. Otherwise shared memory only, with a new block of any size, as
    // making blocks ready ahead wants.
    QImage grab(const QRect &rect, bool plainAllowed);
    // grab() for a display: a display that is not on the desktop, or a
    // picture the server refuses, fails with the display's own text.
    QImage grabDisplay(std::uint32_t displayID, const std::optional<QRect> &rect);
    std::optional<QImage> grabShared(xcb_connection_t *c, const QRect &rect, ShmSegmentPool::Making making);
    // The whole picture written into one lent block, which it then lives in.
    std::optional<QImage> grabIntoBlock(xcb_connection_t *c, const QRect &rect, const ShmSegmentPool::Lease &lease);
    // A large picture with no kept block to fit it: written piece by piece
    // into a small block and copied out into memory of its own.
    std::optional<QImage> grabSharedInPieces(xcb_connection_t *c, const QRect &rect);
    std::optional<QImage> grabPlain(xcb_connection_t *c, unsigned root, const QRect &rect);
    // Whether the server can draw the root into a 32-bit picture of ours; the
    // formats it needs are asked once per connection.
    bool canRender(xcb_connection_t *c);
    bool renderInto(xcb_connection_t *c, const ShmSegmentPool::Lease &lease, const QRect &rect);

    struct RenderFormats {
        quint64 generation = 0;
        bool usable = false;
        std::uint32_t root = 0;
        std::uint32_t argb32 = 0;
    };

    X11Connection m_x;
    DisplayLocator m_locator;
    // Preparations under way; the service waits for them before it goes.
    QList<QFuture<void>> m_preparing;
    // Large displays captured in pieces, for want of a block.
    QList<QRect> m_wanted;
    QMutex m_mutex;
    ShmSegmentPool m_pool;
    RenderFormats m_render;
    bool m_sharedMemoryAllowed = true;
    bool m_renderAllowed = true;
};
