#pragma once

#include "platform/x11/ShmSegmentPool.h"

#include "recording/CaptureStream.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QRect>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

struct xcb_connection_t;

// The live capture of an area of an X server's screen. A thread of its own,
// paced by the monotonic clock at the requested rate, asks the server what
// changed since the last frame (the DAMAGE extension on the root window),
// has only those parts written into shared memory (MIT-SHM), draws the
// pointer in at its hotspot (XFixes), and hands the frame with its changed
// rectangles on. The server writes the rows that changed straight into the
// frame, so this side copies no pixels; a tick where nothing changed hands on
// nothing. Without DAMAGE every tick takes the whole area and says nothing
// of what changed; without shared memory the pixels come through the socket.
// Either is logged once.
//
// The stream holds a connection of its own, so nothing of it runs on the
// GUI's.
class X11CaptureStream : public CaptureStream
{
public:
    struct Geometry {
        // The area on the root window, in pixels.
        QRect area;
        // The size of the frames handed on; the area is scaled to it when they differ.
        QSize output;
        // Parts of the area, in root pixels, that always show what they held at the start.
        QList<QRect> keepOut;
    };

    // How many ticks ran, how many handed on a frame, and the ticks the
    // thread came too late for and skipped.
    struct Counts {
        qint64 ticks = 0;
        qint64 frames = 0;
        qint64 skipped = 0;
    };

    X11CaptureStream(QByteArray displayName, Geometry geometry, int framesPerSecond, bool showsCursor);
    ~X11CaptureStream() override;

    void start(OnSample onSample, OnStopped onStopped) override;
    void stop() override;

    // Tests drive the fallbacks on a server that has everything.
    void setDamageAllowed(bool allowed) { m_damageAllowed = allowed; }
    void setSharedMemoryAllowed(bool allowed) { m_sharedMemoryAllowed = allowed; }
    bool usesDamage() const { return m_damage != 0; }
    bool usesSharedMemory() const { return m_frameLease.has_value(); }
    Counts counts() const;

    // Streams for the session: a request in global points made into root
    // pixels of the display it names. Throws AppError displayNotFound when
    // the display is gone.
    static CaptureStreamFactory factory(QByteArray displayName = {});
    // Where `area` (global points) of display `displayID` lies on the root
    // window, and the same for `keepOut`; absent when the display is gone.
    static std::optional<Geometry> geometryFor(const StreamRequest &request);

private:
    struct CursorImage {
        std::uint32_t serial = 0;
        QPoint hotspot;
        QSize size;
        std::vector<std::uint32_t> pixels; // premultiplied ARGB
    };
    struct Patch {
        QRect rect; // area pixels
        std::vector<std::uint32_t> pixels;
    };

    void connectAndPrepare();
    void release();
    void run();
    void tick(double now);
    QList<QRect> damagedSinceLastTick();
    void grab(const QList<QRect> &rects);
    bool grabWhole();
    void grabThroughSocket(const QRect &rect);
    std::optional<QRect> updateCursor();
    void restoreCursorPatch();
    void pasteKeepOut();
    Patch savePatch(const QRect &rect) const;
    void pastePatch(const Patch &patch);
    std::uint32_t *frameLine(int y);
    void deliver(double seconds, const std::optional<QList<QRectF>> &changed);

    QByteArray m_displayName;
    Geometry m_geometry;
    int m_framesPerSecond;
    bool m_showsCursor;
    bool m_damageAllowed = true;
    bool m_sharedMemoryAllowed = true;

    OnSample m_onSample;
    OnStopped m_onStopped;

    xcb_connection_t *m_c = nullptr;
    std::uint32_t m_root = 0;
    std::uint32_t m_damage = 0;
    std::uint32_t m_region = 0;
    bool m_xfixes = false;
    ShmSegmentPool m_pool;
    std::optional<ShmSegmentPool::Lease> m_frameLease;
    std::vector<std::uint32_t> m_plainFrame; // without shared memory
    QImage m_scaled;                         // the frames handed on, when scaled

    QList<Patch> m_keepOut;
    std::optional<Patch> m_cursorPatch;
    CursorImage m_cursor;
    std::optional<QRect> m_cursorRect;
    bool m_first = true;

    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping = false;
    std::atomic<qint64> m_ticks{0};
    std::atomic<qint64> m_frames{0};
    std::atomic<qint64> m_skipped{0};
};
