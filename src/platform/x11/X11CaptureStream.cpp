#include "platform/x11/X11CaptureStream.h"

#include "platform/x11/X11PixelFormat.h"
#include "platform/x11/X11ScreenList.h"

#include "acquire/DesktopSpace.h"
#include "appbase/AppError.h"
#include "recording/HostClock.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>

#include <xcb/damage.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcStream, "glimpso.CaptureStream")

namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> reply(T *raw)
{
    return Reply<T>(raw, &std::free);
}

bool hasExtension(xcb_connection_t *c, xcb_extension_t *extension)
{
    const xcb_query_extension_reply_t *data = xcb_get_extension_data(c, extension);
    return data && data->present;
}

// More rectangles than this in one tick are taken as fewer, larger ones: each
// costs the server a request.
constexpr int mostGrabsPerTick = 8;
// When the changed parts cover this much of the area, one whole grab is cheaper.
constexpr double wholeGrabShare = 0.6;
// Changed rectangles handed on per frame; a tick with more hands on the grabs.
constexpr int mostRectsPerFrame = 64;

qint64 areaOf(const QRect &r)
{
    return qint64(r.width()) * r.height();
}

// Rectangles fewer and larger: the pair whose union adds least is merged
// until at most `most` remain.
QList<QRect> merged(QList<QRect> rects, int most)
{
    while (rects.size() > most) {
        qint64 bestCost = -1;
        int a = 0, b = 1;
        for (int i = 0; i < rects.size(); ++i)
            for (int j = i + 1; j < rects.size(); ++j) {
                const qint64 cost = areaOf(rects[i].united(rects[j])) - areaOf(rects[i]) - areaOf(rects[j]);
                if (bestCost < 0 || cost < bestCost) {
                    bestCost = cost;
                    a = i;
                    b = j;
                }
            }
        rects[a] = rects[a].united(rects[b]);
        rects.removeAt(b);
    }
    return rects;
}

// `rect` less every keep-out rectangle.
QList<QRect> without(const QRect &rect, const QList<QRect> &holes)
{
    QList<QRect> pieces{rect};
    for (const QRect &hole : holes) {
        QList<QRect> next;
        for (const QRect &piece : std::as_const(pieces)) {
            if (!piece.intersects(hole)) {
                next << piece;
                continue;
            }
            const QRect cut = piece.intersected(hole);
            if (cut.top() > piece.top())
                next << QRect(piece.left(), piece.top(), piece.width(), cut.top() - piece.top());
            if (cut.bottom() < piece.bottom())
                next << QRect(piece.left(), cut.bottom() + 1, piece.width(), piece.bottom() - cut.bottom());
            if (cut.left() > piece.left())
                next << QRect(piece.left(), cut.top(), cut.left() - piece.left(), cut.height());
            if (cut.right() < piece.right())
                next << QRect(cut.right() + 1, cut.top(), piece.right() - cut.right(), cut.height());
        }
        pieces = next;
    }
    return pieces;
}

} // namespace

X11CaptureStream::X11CaptureStream(QByteArray displayName, Geometry geometry, int framesPerSecond, bool showsCursor)
    : m_displayName(std::move(displayName)),
      m_geometry(std::move(geometry)),
      m_framesPerSecond(std::max(framesPerSecond, 1)),
      m_showsCursor(showsCursor)
{
}

X11CaptureStream::~X11CaptureStream()
{
    stop();
}

X11CaptureStream::Counts X11CaptureStream::counts() const
{
    return {m_ticks.load(), m_frames.load(), m_skipped.load()};
}

std::optional<X11CaptureStream::Geometry> X11CaptureStream::geometryFor(const StreamRequest &request)
{
    const QList<QScreen *> screens = X11ScreenList::ordered();
    const QScreen *primary = QGuiApplication::primaryScreen();
    const DesktopSpace space(primary ? primary->geometry() : QRect());
    for (int i = 0; i < screens.size(); ++i) {
        const QScreen *screen = screens.at(i);
        if (DesktopSpace::displayID(screen->name(), i) != request.displayID)
            continue;
        const QRect qt = screen->geometry();
        const double ratio = screen->devicePixelRatio();
        const QRect native = DesktopSpace::nativePixelRect(qt, ratio);
        // Qt keeps a screen's top left where the server has it and scales its size only.
        const auto toRoot = [&](const QRectF &global) {
            const QRectF inQt = space.toQt(global);
            const QPointF offset = (inQt.topLeft() - QPointF(qt.topLeft())) * ratio;
            return QRectF(QPointF(native.topLeft()) + offset, inQt.size() * ratio).toAlignedRect().intersected(native);
        };
        Geometry geometry;
        geometry.area = toRoot(request.area);
        if (geometry.area.isEmpty())
            return std::nullopt;
        geometry.output = request.outputSize;
        for (const QRectF &keep : request.keepOut)
            if (const QRect root = toRoot(keep).intersected(geometry.area); !root.isEmpty())
                geometry.keepOut << root;
        return geometry;
    }
    return std::nullopt;
}

CaptureStreamFactory X11CaptureStream::factory(QByteArray displayName)
{
    return [displayName](const StreamRequest &request) -> std::unique_ptr<CaptureStream> {
        const std::optional<Geometry> geometry = geometryFor(request);
        if (!geometry)
            throw AppError::displayNotFound();
        return std::make_unique<X11CaptureStream>(displayName, *geometry, request.framesPerSecond,
                                                  request.showsCursor);
    };
}

void X11CaptureStream::start(OnSample onSample, OnStopped onStopped)
{
    m_onSample = std::move(onSample);
    m_onStopped = std::move(onStopped);
    connectAndPrepare();
    m_stopping = false;
    m_thread = std::thread([this] { run(); });
}

void X11CaptureStream::connectAndPrepare()
{
    m_c = xcb_connect(m_displayName.isEmpty() ? nullptr : m_displayName.constData(), nullptr);
    if (xcb_connection_has_error(m_c)) {
        release();
        throw AppError::captureFailed(QStringLiteral("the X server cannot be reached"));
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
    m_root = screen->root;
    if (!X11PixelFormat::hasRgb32Layout(m_c, screen->root_depth)) {
        release();
        throw AppError::captureFailed(QStringLiteral("the X server's screen is not in 32-bit colour"));
    }
    const QRect rootRect(0, 0, screen->width_in_pixels, screen->height_in_pixels);
    m_geometry.area = m_geometry.area.intersected(rootRect);
    if (m_geometry.area.isEmpty()) {
        release();
        throw AppError::displayNotFound();
    }
    const QRect area = m_geometry.area;
    const std::size_t bytes = std::size_t(area.width()) * std::size_t(area.height()) * 4;

    if (m_sharedMemoryAllowed && hasExtension(m_c, &xcb_shm_id)) {
        m_frameLease = m_pool.lend(m_c, 1, bytes);
    }
    if (!m_frameLease) {
        qCInfo(lcStream, "no shared memory with the X server: recording takes the pixels through the socket");
        m_plainFrame.assign(std::size_t(area.width()) * std::size_t(area.height()), 0);
    }

    if (hasExtension(m_c, &xcb_xfixes_id)) {
        auto version = reply(xcb_xfixes_query_version_reply(m_c, xcb_xfixes_query_version(m_c, 4, 0), nullptr));
        m_xfixes = version && version->major_version >= 2;
    }
    if (m_damageAllowed && m_xfixes && hasExtension(m_c, &xcb_damage_id)) {
        auto version = reply(xcb_damage_query_version_reply(m_c, xcb_damage_query_version(m_c, 1, 1), nullptr));
        if (version) {
            m_damage = xcb_generate_id(m_c);
            xcb_damage_create(m_c, m_damage, m_root, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
            m_region = xcb_generate_id(m_c);
            xcb_xfixes_create_region(m_c, m_region, 0, nullptr);
        }
    }
    if (!m_damage)
        qCInfo(lcStream, "no DAMAGE extension: recording takes whole frames and cannot tell what changed");
    if (m_showsCursor && !m_xfixes)
        qCInfo(lcStream, "no XFixes extension: the pointer is not drawn into the recording");

    // The first frame, whole, before anything of ours can be over the area;
    // what the keep-out parts hold now is what they show for good.
    if (!grabWhole()) {
        release();
        throw AppError::captureFailed(QStringLiteral("the X server gave no picture of the area"));
    }
    for (const QRect &keep : std::as_const(m_geometry.keepOut))
        m_keepOut << savePatch(keep.translated(-area.topLeft()));
    m_first = true;
    qCInfo(lcStream, "stream of %dx%d+%d+%d at %d fps%s%s", area.width(), area.height(), area.x(), area.y(),
           m_framesPerSecond, m_frameLease ? ", shared memory" : "", m_damage ? ", damage" : "");
}

void X11CaptureStream::release()
{
    if (!m_c)
        return;
    if (!xcb_connection_has_error(m_c)) {
        if (m_damage)
            xcb_damage_destroy(m_c, m_damage);
        if (m_region)
            xcb_xfixes_destroy_region(m_c, m_region);
        m_frameLease.reset();
        m_pool.releaseFree(m_c, 1);
        xcb_flush(m_c);
    }
    m_frameLease.reset();
    m_damage = 0;
    m_region = 0;
    xcb_disconnect(m_c);
    m_c = nullptr;
}

void X11CaptureStream::stop()
{
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
        qCInfo(lcStream, "stream stopped: %lld ticks, %lld frames, %lld ticks skipped for being late",
               qlonglong(m_ticks.load()), qlonglong(m_frames.load()), qlonglong(m_skipped.load()));
    }
    release();
}

void X11CaptureStream::run()
{
    // The ticks are due at fixed times: this thread asks to be run before
    // the batch work of the machine (nice -10) where it may; elsewhere it
    // stays as it is, which only makes late ticks likelier on a busy machine.
    if (setpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)), -10) != 0)
        qCDebug(lcStream, "the stream's thread keeps its priority");
    using namespace std::chrono;
    const duration<double> period(1.0 / m_framesPerSecond);
    const auto origin = steady_clock::now();
    qint64 index = 0;
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        const auto due = origin + duration_cast<steady_clock::duration>(period * double(index));
        if (m_wake.wait_until(lock, due, [this] { return m_stopping; }))
            break;
        lock.unlock();
        const auto now = steady_clock::now();
        // A tick come too late for the next one too is skipped: the stream
        // keeps to its clock rather than catching up with a burst.
        const qint64 behind = qint64(duration<double>(now - origin) / period) - index;
        if (behind > 0) {
            m_skipped += behind;
            index += behind;
        }
        ++m_ticks;
        tick(duration<double>(now.time_since_epoch()).count());
        ++index;
        lock.lock();
        if (m_c && xcb_connection_has_error(m_c)) {
            lock.unlock();
            if (m_onStopped)
                m_onStopped(QStringLiteral("the connection to the X server was lost"));
            lock.lock();
            break;
        }
    }
}

std::uint32_t *X11CaptureStream::frameLine(int y)
{
    const int width = m_geometry.area.width();
    std::uint32_t *base = m_frameLease ? reinterpret_cast<std::uint32_t *>(m_frameLease->data) : m_plainFrame.data();
    return base + qsizetype(y) * width;
}

X11CaptureStream::Patch X11CaptureStream::savePatch(const QRect &rect) const
{
    Patch patch{rect, {}};
    patch.pixels.reserve(std::size_t(areaOf(rect)));
    auto *self = const_cast<X11CaptureStream *>(this);
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        const std::uint32_t *line = self->frameLine(y) + rect.left();
        patch.pixels.insert(patch.pixels.end(), line, line + rect.width());
    }
    return patch;
}

void X11CaptureStream::pastePatch(const Patch &patch)
{
    const std::uint32_t *from = patch.pixels.data();
    for (int y = patch.rect.top(); y <= patch.rect.bottom(); ++y, from += patch.rect.width())
        std::memcpy(frameLine(y) + patch.rect.left(), from, std::size_t(patch.rect.width()) * 4);
}

bool X11CaptureStream::grabWhole()
{
    const QRect area = m_geometry.area;
    if (m_frameLease) {
        auto image = reply(xcb_shm_get_image_reply(
            m_c,
            xcb_shm_get_image(m_c, m_root, std::int16_t(area.x()), std::int16_t(area.y()), std::uint16_t(area.width()),
                              std::uint16_t(area.height()), ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP, m_frameLease->segment, 0),
            nullptr));
        return image != nullptr;
    }
    grabThroughSocket(QRect(QPoint(0, 0), area.size()));
    return !xcb_connection_has_error(m_c);
}

void X11CaptureStream::grabThroughSocket(const QRect &rect)
{
    const QRect area = m_geometry.area;
    // Rows in pieces of about 256 KiB: the server holds no more than that at once.
    const int rowsPerPiece = std::max(1, (256 << 10) / std::max(1, rect.width() * 4));
    for (int top = rect.top(); top <= rect.bottom(); top += rowsPerPiece) {
        const int rows = std::min(rowsPerPiece, rect.bottom() + 1 - top);
        auto image = reply(xcb_get_image_reply(
            m_c,
            xcb_get_image(m_c, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, std::int16_t(area.x() + rect.x()),
                          std::int16_t(area.y() + top), std::uint16_t(rect.width()), std::uint16_t(rows), ~0u),
            nullptr));
        if (!image || xcb_get_image_data_length(image.get()) < rect.width() * rows * 4)
            return;
        const auto *data = reinterpret_cast<const std::uint32_t *>(xcb_get_image_data(image.get()));
        for (int y = 0; y < rows; ++y)
            std::memcpy(frameLine(top + y) + rect.left(), data + qsizetype(y) * rect.width(),
                        std::size_t(rect.width()) * 4);
    }
}

void X11CaptureStream::grab(const QList<QRect> &rects)
{
    if (!m_frameLease) {
        for (const QRect &rect : rects)
            grabThroughSocket(rect);
        return;
    }
    // The server writes each band of rows that holds a change straight into
    // its place in the frame (a band as wide as the area has the frame's own
    // row length), so nothing is copied on this side. Bands a few rows apart
    // are taken as one; all are asked for before the first answer is read.
    QList<std::pair<int, int>> bands; // first row, last row
    for (const QRect &rect : rects)
        bands.append({rect.top(), rect.bottom()});
    std::sort(bands.begin(), bands.end());
    QList<std::pair<int, int>> joined;
    for (const auto &band : std::as_const(bands)) {
        if (!joined.isEmpty() && band.first <= joined.last().second + 16)
            joined.last().second = std::max(joined.last().second, band.second);
        else
            joined.append(band);
    }
    const QRect area = m_geometry.area;
    const std::size_t stride = std::size_t(area.width()) * 4;
    std::vector<xcb_shm_get_image_cookie_t> cookies;
    for (const auto &[top, bottom] : std::as_const(joined))
        cookies.push_back(xcb_shm_get_image(m_c, m_root, std::int16_t(area.x()), std::int16_t(area.y() + top),
                                            std::uint16_t(area.width()), std::uint16_t(bottom - top + 1), ~0u,
                                            XCB_IMAGE_FORMAT_Z_PIXMAP, m_frameLease->segment,
                                            std::uint32_t(std::size_t(top) * stride)));
    for (const xcb_shm_get_image_cookie_t &cookie : cookies)
        std::free(xcb_shm_get_image_reply(m_c, cookie, nullptr));
}

QList<QRect> X11CaptureStream::damagedSinceLastTick()
{
    const QRect area = m_geometry.area;
    xcb_damage_subtract(m_c, m_damage, XCB_NONE, m_region);
    auto parts = reply(xcb_xfixes_fetch_region_reply(m_c, xcb_xfixes_fetch_region(m_c, m_region), nullptr));
    QList<QRect> changed;
    if (!parts)
        return changed;
    const xcb_rectangle_t *rects = xcb_xfixes_fetch_region_rectangles(parts.get());
    const int count = xcb_xfixes_fetch_region_rectangles_length(parts.get());
    for (int i = 0; i < count; ++i) {
        const QRect r = QRect(rects[i].x, rects[i].y, rects[i].width, rects[i].height).intersected(area);
        if (r.isEmpty())
            continue;
        for (const QRect &piece : without(r, m_geometry.keepOut))
            changed << piece.translated(-area.topLeft());
    }
    return changed;
}

void X11CaptureStream::restoreCursorPatch()
{
    if (m_cursorPatch) {
        pastePatch(*m_cursorPatch);
        m_cursorPatch.reset();
    }
}

std::optional<QRect> X11CaptureStream::updateCursor()
{
    // The pointer where it is now, drawn over a frame whose pixels under it
    // were put back first; its rectangle in area pixels, if it is on the area.
    if (!m_showsCursor || !m_xfixes)
        return std::nullopt;
    auto image = reply(xcb_xfixes_get_cursor_image_reply(m_c, xcb_xfixes_get_cursor_image(m_c), nullptr));
    if (!image)
        return std::nullopt;
    if (image->cursor_serial != m_cursor.serial || m_cursor.pixels.empty()) {
        m_cursor.serial = image->cursor_serial;
        m_cursor.size = QSize(image->width, image->height);
        m_cursor.hotspot = QPoint(image->xhot, image->yhot);
        const std::uint32_t *pixels = xcb_xfixes_get_cursor_image_cursor_image(image.get());
        m_cursor.pixels.assign(pixels, pixels + std::size_t(image->width) * image->height);
    }
    const QRect area = m_geometry.area;
    const QRect placed(QPoint(image->x - m_cursor.hotspot.x(), image->y - m_cursor.hotspot.y()) - area.topLeft(),
                       m_cursor.size);
    const QRect visible = placed.intersected(QRect(QPoint(0, 0), area.size()));
    if (visible.isEmpty())
        return std::nullopt;
    m_cursorPatch = savePatch(visible);
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        std::uint32_t *line = frameLine(y);
        const std::uint32_t *source = m_cursor.pixels.data() + qsizetype(y - placed.top()) * placed.width();
        for (int x = visible.left(); x <= visible.right(); ++x) {
            const std::uint32_t s = source[x - placed.left()];
            const std::uint32_t alpha = s >> 24;
            if (alpha == 0)
                continue;
            const std::uint32_t d = line[x];
            const std::uint32_t keep = 255 - alpha;
            const auto channel = [&](int shift) {
                return std::min<std::uint32_t>(255, ((s >> shift) & 0xff) + (((d >> shift) & 0xff) * keep + 127) / 255);
            };
            line[x] = 0xff000000u | (channel(16) << 16) | (channel(8) << 8) | channel(0);
        }
    }
    return visible;
}

void X11CaptureStream::pasteKeepOut()
{
    for (const Patch &patch : std::as_const(m_keepOut))
        pastePatch(patch);
}

void X11CaptureStream::tick(double now)
{
    if (xcb_connection_has_error(m_c))
        return;
    // Events are only the damage's "something changed"; the region says what.
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_c))
        std::free(event);

    const QRect whole(QPoint(0, 0), m_geometry.area.size());
    std::optional<QList<QRect>> changed;
    bool grabbedWhole = false;
    QList<QRect> sinceStart;
    if (m_first) {
        // Taken whole at the start already; only what changed since is taken again.
        changed = QList<QRect>{whole};
        if (m_damage)
            sinceStart = damagedSinceLastTick();
    } else if (m_damage) {
        changed = damagedSinceLastTick();
    }

    const std::optional<QRect> oldCursor = m_cursorRect;
    const std::uint32_t oldSerial = m_cursor.serial;
    restoreCursorPatch();

    if (m_first) {
        if (!sinceStart.isEmpty())
            grab(merged(sinceStart, mostGrabsPerTick));
    } else if (!changed) {
        grabWhole();
        grabbedWhole = true;
    } else if (!m_first && !changed->isEmpty()) {
        qint64 covered = 0;
        for (const QRect &r : std::as_const(*changed))
            covered += areaOf(r);
        const QList<QRect> plan = merged(*changed, mostGrabsPerTick);
        if (covered >= qint64(wholeGrabShare * double(areaOf(whole)))) {
            grabWhole();
            grabbedWhole = true;
        } else {
            grab(plan);
        }
    }
    // A grab may have met glimpso's own windows over the area.
    if (grabbedWhole || !m_keepOut.isEmpty())
        pasteKeepOut();
    m_first = false;

    m_cursorRect = updateCursor();
    if (changed && (oldCursor != m_cursorRect || (m_cursorRect && oldSerial != m_cursor.serial))) {
        if (oldCursor)
            *changed << *oldCursor;
        if (m_cursorRect)
            *changed << *m_cursorRect;
    }
    if (changed && changed->isEmpty())
        return;

    std::optional<QList<QRectF>> rects;
    if (changed) {
        const QList<QRect> handed = changed->size() > mostRectsPerFrame ? merged(*changed, mostGrabsPerTick) : *changed;
        rects.emplace();
        for (const QRect &r : handed)
            rects->append(QRectF(r));
    }
    deliver(now, rects);
}

void X11CaptureStream::deliver(double seconds, const std::optional<QList<QRectF>> &changed)
{
    const QSize areaSize = m_geometry.area.size();
    RecordedFrame frame;
    frame.seconds = seconds;
    frame.changedRects = changed;
    if (m_geometry.output.isEmpty() || m_geometry.output == areaSize) {
        frame.pixels = {reinterpret_cast<const uchar *>(frameLine(0)), areaSize.width(), areaSize.height(),
                        qsizetype(areaSize.width()) * 4};
    } else {
        // A display whose scale the recording doesn't keep: the frame is
        // scaled as a whole, and its changed parts with it.
        const QImage source(reinterpret_cast<const uchar *>(frameLine(0)), areaSize.width(), areaSize.height(),
                            qsizetype(areaSize.width()) * 4, QImage::Format_RGB32);
        m_scaled = source.scaled(m_geometry.output, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const double sx = double(m_geometry.output.width()) / areaSize.width();
        const double sy = double(m_geometry.output.height()) / areaSize.height();
        if (frame.changedRects)
            for (QRectF &r : *frame.changedRects)
                r = QRectF(r.x() * sx, r.y() * sy, r.width() * sx, r.height() * sy);
        frame.pixels = {m_scaled.constBits(), m_scaled.width(), m_scaled.height(), m_scaled.bytesPerLine()};
    }
    ++m_frames;
    if (m_onSample)
        m_onSample(Sample{FrameStatus::complete, frame});
}
