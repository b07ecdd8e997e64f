#include "platform/x11/CaptureService.h"

#include "platform/x11/HugePageImage.h"
#include "platform/x11/X11PixelFormat.h"

#include "appbase/AppError.h"

#include <QLoggingCategory>
#include <QMutexLocker>
#include <QtConcurrent>

#include <xcb/render.h>
#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

Q_LOGGING_CATEGORY(lcCaptureService, "glimpso.CaptureService")

namespace {

// What the user reads after "Capture failed: ".
QString noPictureText(std::uint32_t displayID)
{
    return QStringLiteral("the X server gave no picture of display %1").arg(displayID);
}

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> reply(T *raw)
{
    return Reply<T>(raw, &std::free);
}

xcb_screen_t *firstScreen(xcb_connection_t *c)
{
    return xcb_setup_roots_iterator(xcb_get_setup(c)).data;
}

// X leaves the unused top byte of each 32-bit pixel at 0, while QImage's
// RGB32 promises 0xff there: drawn onto a canvas with alpha (the compositor's,
// a translucent window's) such a picture would vanish. Only the routes where
// the server copies raw pixels need this; the Render route gets 0xff from the
// server.
void makeOpaque(uchar *pixels, std::size_t count)
{
    auto *words = reinterpret_cast<std::uint32_t *>(pixels);
    for (std::size_t i = 0; i < count; ++i)
        words[i] |= 0xff000000u;
}

// The largest block a capture makes for itself. Fresh shared memory is
// costly: every page is cleared and mapped by the server the first time it
// writes it, which for a 4K screen takes longer than sending the picture
// through the socket. Larger blocks are made ready ahead (prepare()), when no
// one waits for them.
constexpr std::size_t largestBlockMadeOnDemand = std::size_t(4) << 20;

// A picture asked for in pieces comes in pieces of about these sizes, a few
// asked for ahead of the one being copied out: the server writes the next
// pieces while we copy out the last, on two cores at once, and neither side
// needs fresh memory for more than a few pieces. Through shared memory the
// pieces take turns in a small block that is kept; through the socket, asking
// for the whole screen at once would make the server hold all of it in fresh
// memory of its own before we had read much.
constexpr qsizetype sharedPieceBytes = qsizetype(512) << 10;
constexpr std::size_t sharedPieceSlots = 2;
constexpr qsizetype socketPieceBytes = qsizetype(128) << 10;
constexpr std::size_t socketPiecesInFlight = 8;

// How a picture of `rect` is cut into pieces of whole rows.
struct PiecePlan {
    PiecePlan(const QRect &rect, qsizetype pieceBytes)
        : rect(rect), bytesPerLine(qsizetype(rect.width()) * 4),
          rowsPerPiece(int(qBound(qsizetype(1), pieceBytes / bytesPerLine, qsizetype(rect.height())))),
          count(std::size_t((rect.height() + rowsPerPiece - 1) / rowsPerPiece))
    {
    }
    int top(std::size_t piece) const { return int(piece) * rowsPerPiece; }
    int rows(std::size_t piece) const { return qMin(rowsPerPiece, rect.height() - top(piece)); }
    std::size_t bytes(std::size_t piece) const { return std::size_t(bytesPerLine) * std::size_t(rows(piece)); }

    QRect rect;
    qsizetype bytesPerLine;
    int rowsPerPiece;
    std::size_t count;
};

// One piece's rows copied into their place in `to` and made opaque in the same
// pass over the pixels.
void copyPieceOpaque(const uchar *from, QImage &to, const PiecePlan &plan, std::size_t piece)
{
    const auto *pixels = reinterpret_cast<const std::uint32_t *>(from);
    const int width = plan.rect.width();
    for (int y = 0; y < plan.rows(piece); ++y) {
        auto *line = reinterpret_cast<std::uint32_t *>(to.scanLine(plan.top(piece) + y));
        const std::uint32_t *row = pixels + qsizetype(y) * width;
        for (int x = 0; x < width; ++x)
            line[x] = row[x] | 0xff000000u;
    }
}

// A direct picture format of 8-bit red, green and blue at the usual shifts;
// with `alpha`, 8-bit alpha on top, otherwise none.
bool isRgbFormat(const xcb_render_pictforminfo_t &format, bool alpha)
{
    const xcb_render_directformat_t &d = format.direct;
    return format.type == XCB_RENDER_PICT_TYPE_DIRECT && d.red_shift == 16 && d.red_mask == 0xff &&
           d.green_shift == 8 && d.green_mask == 0xff && d.blue_shift == 0 && d.blue_mask == 0xff &&
           (alpha ? d.alpha_shift == 24 && d.alpha_mask == 0xff : d.alpha_mask == 0);
}

} // namespace

CaptureService::CaptureService(QByteArray displayName, DisplayLocator locator)
    : m_x(std::move(displayName)), m_locator(std::move(locator))
{
}

// A preparation still running uses this service.
CaptureService::~CaptureService()
{
    for (QFuture<void> &preparation : m_preparing)
        preparation.waitForFinished();
}

QFuture<void> CaptureService::prepare(QList<QRect> rects)
{
    m_preparing.removeIf([](const QFuture<void> &preparation) { return preparation.isFinished(); });
    QFuture<void> preparation = QtConcurrent::run([this, rects] {
        // All held until each display has its own block.
        QList<QImage> held;
        for (const QRect &rect : rects) {
            try {
                // Only shared memory is kept: a server that cannot share
                // (a remote one) would send whole screens for nothing.
                held << grab(rect, false);
            } catch (const AppError &error) {
                qCInfo(lcCaptureService, "no block made ready ahead: %s", qUtf8Printable(error.errorDescription()));
            }
        }
        // The server has written every page; reading one byte of each maps
        // them here too, so the first reader of a picture does not pay for it.
        for (const QImage &image : held) {
            const volatile uchar *bytes = image.constBits();
            for (qsizetype i = 0; i < image.sizeInBytes(); i += 4096)
                (void)bytes[i];
        }
    });
    m_preparing << preparation;
    return preparation;
}

QFuture<void> CaptureService::keepMemoryReady()
{
    QList<QRect> wanted;
    {
        QMutexLocker lock(&m_mutex);
        wanted = std::exchange(m_wanted, {});
    }
    if (wanted.isEmpty())
        return {};
    qCDebug(lcCaptureService, "making %d block(s) ready after captures in pieces", int(wanted.size()));
    return prepare(wanted);
}

void CaptureService::setSharedMemoryAllowed(bool allowed)
{
    QMutexLocker lock(&m_mutex);
    m_sharedMemoryAllowed = allowed;
}

void CaptureService::setRenderAllowed(bool allowed)
{
    QMutexLocker lock(&m_mutex);
    m_renderAllowed = allowed;
}

void CaptureService::releaseKeptMemory()
{
    QMutexLocker lock(&m_mutex);
    const int before = m_pool.blockCount();
    m_pool.releaseFree(m_x.get(), m_x.generation());
    if (before != m_pool.blockCount())
        qCInfo(lcCaptureService, "released kept capture memory: %d block(s) of shared memory",
               before - m_pool.blockCount());
}

int CaptureService::sharedBlockCount()
{
    QMutexLocker lock(&m_mutex);
    return m_pool.blockCount();
}

int CaptureService::sharedBlocksMade()
{
    QMutexLocker lock(&m_mutex);
    return m_pool.blocksMade();
}

QImage CaptureService::grabDisplay(std::uint32_t displayID, const std::optional<QRect> &rect)
{
    if (!rect || rect->isEmpty()) {
        qCCritical(lcCaptureService, "screen image missing for display %u: not on the desktop", displayID);
        throw AppError::captureFailed(noPictureText(displayID));
    }
    try {
        return grab(*rect);
    } catch (const AppError &) {
        qCCritical(lcCaptureService, "screen image missing for display %u", displayID);
        throw AppError::captureFailed(noPictureText(displayID));
    }
}

QFuture<QImage> CaptureService::captureDisplay(std::uint32_t displayID)
{
    const std::optional<QRect> rect = m_locator(displayID);
    return QtConcurrent::run([this, displayID, rect]() -> QImage {
        return grabDisplay(displayID, rect);
    });
}

QFuture<QImage> CaptureService::captureDisplayHidingDesktopIcons(std::uint32_t displayID, double scale)
{
    Q_UNUSED(scale) // The root window's pixels already are the display's pixels.
    const std::optional<QRect> rect = m_locator(displayID);
    return QtConcurrent::run([this, displayID, rect]() -> QImage {
        if (hasDesktopWindows()) {
            // Icons live in the desktop window itself, together with the
            // wallpaper; without a compositor's per-window pictures the root
            // window cannot be read without them, so the plain picture it is.
            qCCritical(lcCaptureService, "capture without desktop icons failed, using the full display: %s",
                       "a desktop window holds the icons and the X server has no picture without it");
        }
        return grabDisplay(displayID, rect);
    });
}

QImage CaptureService::grab(const QRect &requested)
{
    return grab(requested, true);
}

QImage CaptureService::grab(const QRect &requested, bool plainAllowed)
{
    QMutexLocker lock(&m_mutex);
    xcb_connection_t *c = m_x.get();
    if (!c)
        throw AppError::captureFailed(QStringLiteral("no connection to the X server"));
    xcb_screen_t *screen = firstScreen(c);
    const QRect rootRect(0, 0, screen->width_in_pixels, screen->height_in_pixels);
    // GetImage refuses any pixel outside the root window; a display's
    // rectangle can reach past it for a moment while the layout changes.
    const QRect rect = requested.intersected(rootRect);
    if (rect.isEmpty())
        throw AppError::captureFailed(QStringLiteral("the display lies outside the X screen"));
    if (!X11PixelFormat::hasRgb32Layout(c, screen->root_depth))
        throw AppError::captureFailed(QStringLiteral("the X screen's pixel format is not supported"));

    std::optional<QImage> image;
    if (m_sharedMemoryAllowed)
        image = grabShared(c, rect, plainAllowed ? ShmSegmentPool::Making::keptOnly : ShmSegmentPool::Making::allowed);
    if (!image && plainAllowed)
        image = grabPlain(c, screen->root, rect);
    if (!image)
        throw AppError::captureFailed(QStringLiteral("the X server sent no pixels"));
    return *image;
}

std::optional<QImage> CaptureService::grabShared(xcb_connection_t *c, const QRect &rect,
                                                ShmSegmentPool::Making making)
{
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_shm_id);
    if (!extension || !extension->present)
        return std::nullopt;
    const std::size_t pixels = std::size_t(rect.width()) * std::size_t(rect.height());
    if (pixels * 4 <= largestBlockMadeOnDemand)
        making = ShmSegmentPool::Making::allowed;
    if (const auto lease = m_pool.lend(c, m_x.generation(), pixels * 4, making))
        return grabIntoBlock(c, rect, *lease);
    if (making == ShmSegmentPool::Making::keptOnly)
        return grabSharedInPieces(c, rect);
    return std::nullopt;
}

std::optional<QImage> CaptureService::grabIntoBlock(xcb_connection_t *c, const QRect &rect,
                                                   const ShmSegmentPool::Lease &lease)
{
    if (!(m_renderAllowed && canRender(c) && renderInto(c, lease, rect))) {
        xcb_generic_error_t *error = nullptr;
        auto image = reply(xcb_shm_get_image_reply(
            c,
            xcb_shm_get_image(c, firstScreen(c)->root, std::int16_t(rect.x()), std::int16_t(rect.y()),
                              std::uint16_t(rect.width()), std::uint16_t(rect.height()), ~0u,
                              XCB_IMAGE_FORMAT_Z_PIXMAP, lease.segment, 0),
            &error));
        if (error || !image) {
            std::free(error);
            return std::nullopt;
        }
        makeOpaque(lease.data, std::size_t(rect.width()) * std::size_t(rect.height()));
    }
    // The picture stays in the block: no copy of a 4K screen on the way.
    return ShmSegmentPool::picture(lease, rect.size(), QImage::Format_RGB32);
}

std::optional<QImage> CaptureService::grabSharedInPieces(xcb_connection_t *c, const QRect &rect)
{
    qCDebug(lcCaptureService, "snapshot of %dx%d in pieces: no kept block fits", rect.width(), rect.height());
    if (!m_wanted.contains(rect))
        m_wanted << rect;
    const PiecePlan plan(rect, sharedPieceBytes);
    const std::size_t slotBytes = plan.bytes(0);
    const auto lease = m_pool.lend(c, m_x.generation(), slotBytes * sharedPieceSlots);
    if (!lease)
        return std::nullopt;
    QImage result = HugePageImage::allocate(rect.size(), QImage::Format_RGB32);
    if (result.isNull())
        return std::nullopt;
    const auto slotOf = [&](std::size_t piece) { return (piece % sharedPieceSlots) * slotBytes; };
    std::vector<xcb_shm_get_image_cookie_t> pieces;
    pieces.reserve(plan.count);
    const auto askFor = [&](std::size_t piece) {
        pieces.push_back(xcb_shm_get_image(c, firstScreen(c)->root, std::int16_t(rect.x()),
                                           std::int16_t(rect.y() + plan.top(piece)), std::uint16_t(rect.width()),
                                           std::uint16_t(plan.rows(piece)), ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                           lease->segment, std::uint32_t(slotOf(piece))));
    };
    while (pieces.size() < qMin(plan.count, sharedPieceSlots))
        askFor(pieces.size());
    // After a failed piece no more are asked for; those already asked for
    // are let go.
    bool complete = true;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (!complete) {
            xcb_discard_reply(c, pieces[i].sequence);
            continue;
        }
        xcb_generic_error_t *error = nullptr;
        auto written = reply(xcb_shm_get_image_reply(c, pieces[i], &error));
        if (error || !written) {
            std::free(error);
            complete = false;
            continue;
        }
        copyPieceOpaque(lease->data + slotOf(i), result, plan, i);
        // Its slot is free again only now.
        if (pieces.size() < plan.count)
            askFor(pieces.size());
    }
    if (!complete)
        return std::nullopt;
    return result;
}

bool CaptureService::canRender(xcb_connection_t *c)
{
    if (m_render.generation == m_x.generation())
        return m_render.usable;
    m_render = RenderFormats{m_x.generation(), false, 0, 0};
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_render_id);
    if (!extension || !extension->present) {
        qCInfo(lcCaptureService, "snapshots: the server copies them into shared memory (no Render)");
        return false;
    }
    // Pixmaps on our memory: the server draws where we read.
    auto shm = reply(xcb_shm_query_version_reply(c, xcb_shm_query_version(c), nullptr));
    if (!shm || !shm->shared_pixmaps || shm->pixmap_format != XCB_IMAGE_FORMAT_Z_PIXMAP) {
        qCInfo(lcCaptureService, "snapshots: the server copies them into shared memory (no shared pixmaps)");
        return false;
    }
    auto formats = reply(xcb_render_query_pict_formats_reply(c, xcb_render_query_pict_formats(c), nullptr));
    if (!formats)
        return false;
    const xcb_visualid_t rootVisual = firstScreen(c)->root_visual;
    xcb_render_pictformat_t rootFormat = 0;
    for (auto s = xcb_render_query_pict_formats_screens_iterator(formats.get()); s.rem && !rootFormat;
         xcb_render_pictscreen_next(&s))
        for (auto d = xcb_render_pictscreen_depths_iterator(s.data); d.rem && !rootFormat; xcb_render_pictdepth_next(&d))
            for (auto v = xcb_render_pictdepth_visuals_iterator(d.data); v.rem; xcb_render_pictvisual_next(&v))
                if (v.data->visual == rootVisual)
                    rootFormat = v.data->format;
    for (auto f = xcb_render_query_pict_formats_formats_iterator(formats.get()); f.rem; xcb_render_pictforminfo_next(&f)) {
        // The root's format must be plain RGB, so the drawing is an exact copy
        // of its pixels with alpha 0xff added.
        if (f.data->id == rootFormat && isRgbFormat(*f.data, false))
            m_render.root = rootFormat;
        if (f.data->depth == 32 && isRgbFormat(*f.data, true))
            m_render.argb32 = f.data->id;
    }
    m_render.usable = m_render.root != 0 && m_render.argb32 != 0;
    qCInfo(lcCaptureService, m_render.usable ? "snapshots: the server draws them into shared memory"
                                             : "snapshots: the server copies them into shared memory (no ARGB32 Render format)");
    return m_render.usable;
}

bool CaptureService::renderInto(xcb_connection_t *c, const ShmSegmentPool::Lease &lease, const QRect &rect)
{
    // One pass in the server: the root's pixels drawn into a 32-bit pixmap
    // that lives in our block, its alpha made 0xff on the way. Windows above
    // the root are in the picture (IncludeInferiors), as on the screen.
    const xcb_pixmap_t pixmap = xcb_generate_id(c);
    const xcb_render_picture_t source = xcb_generate_id(c);
    const xcb_render_picture_t target = xcb_generate_id(c);
    const std::uint32_t includeInferiors = XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS;
    const xcb_void_cookie_t cookies[] = {
        xcb_shm_create_pixmap_checked(c, pixmap, firstScreen(c)->root, std::uint16_t(rect.width()),
                                      std::uint16_t(rect.height()), 32, lease.segment, 0),
        xcb_render_create_picture_checked(c, source, firstScreen(c)->root, m_render.root,
                                          XCB_RENDER_CP_SUBWINDOW_MODE, &includeInferiors),
        xcb_render_create_picture_checked(c, target, pixmap, m_render.argb32, 0, nullptr),
        xcb_render_composite_checked(c, XCB_RENDER_PICT_OP_SRC, source, XCB_RENDER_PICTURE_NONE, target,
                                     std::int16_t(rect.x()), std::int16_t(rect.y()), 0, 0, 0, 0,
                                     std::uint16_t(rect.width()), std::uint16_t(rect.height())),
    };
    xcb_render_free_picture(c, target);
    xcb_render_free_picture(c, source);
    xcb_free_pixmap(c, pixmap);
    // Every answer is in once the last is: the drawing is done, or failed.
    bool drawn = true;
    for (const xcb_void_cookie_t &cookie : cookies) {
        if (xcb_generic_error_t *error = xcb_request_check(c, cookie)) {
            drawn = false;
            std::free(error);
        }
    }
    if (!drawn) {
        // Not for this connection, then: ShmGetImage from now on.
        qCWarning(lcCaptureService, "the X server could not draw the screen into shared memory; copying it instead");
        m_render.usable = false;
    }
    return drawn;
}

std::optional<QImage> CaptureService::grabPlain(xcb_connection_t *c, unsigned root, const QRect &rect)
{
    QImage result = HugePageImage::allocate(rect.size(), QImage::Format_RGB32);
    if (result.isNull())
        return std::nullopt;
    const PiecePlan plan(rect, socketPieceBytes);
    std::vector<xcb_get_image_cookie_t> pieces;
    pieces.reserve(plan.count);
    const auto askFor = [&](std::size_t piece) {
        pieces.push_back(xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, root, std::int16_t(rect.x()),
                                       std::int16_t(rect.y() + plan.top(piece)), std::uint16_t(rect.width()),
                                       std::uint16_t(plan.rows(piece)), ~0u));
    };
    while (pieces.size() < qMin(plan.count, socketPiecesInFlight))
        askFor(pieces.size());
    // After a failed piece no more are asked for; those already asked for
    // are let go.
    bool complete = true;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (complete && pieces.size() < plan.count)
            askFor(pieces.size());
        if (!complete) {
            xcb_discard_reply(c, pieces[i].sequence);
            continue;
        }
        xcb_generic_error_t *error = nullptr;
        auto piece = reply(xcb_get_image_reply(c, pieces[i], &error));
        if (error || !piece || std::size_t(xcb_get_image_data_length(piece.get())) < plan.bytes(i)) {
            std::free(error);
            complete = false;
            continue;
        }
        copyPieceOpaque(xcb_get_image_data(piece.get()), result, plan, i);
    }
    if (!complete)
        return std::nullopt;
    return result;
}

bool CaptureService::hasDesktopWindows()
{
    QMutexLocker lock(&m_mutex);
    xcb_connection_t *c = m_x.get();
    if (!c)
        return false;
    auto atom = [c](const char *name) -> xcb_atom_t {
        auto r = reply(xcb_intern_atom_reply(c, xcb_intern_atom(c, 1, std::uint16_t(std::strlen(name)), name), nullptr));
        return r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
    };
    const xcb_atom_t clientList = atom("_NET_CLIENT_LIST");
    const xcb_atom_t windowType = atom("_NET_WM_WINDOW_TYPE");
    const xcb_atom_t desktopType = atom("_NET_WM_WINDOW_TYPE_DESKTOP");
    if (clientList == XCB_ATOM_NONE || windowType == XCB_ATOM_NONE || desktopType == XCB_ATOM_NONE)
        return false;
    auto clients = reply(xcb_get_property_reply(
        c, xcb_get_property(c, 0, firstScreen(c)->root, clientList, XCB_ATOM_WINDOW, 0, 4096), nullptr));
    if (!clients || clients->format != 32)
        return false;
    const auto *windows = static_cast<const xcb_window_t *>(xcb_get_property_value(clients.get()));
    const int count = xcb_get_property_value_length(clients.get()) / 4;
    // All questions first, then the answers: one round trip, not one per window.
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(std::size_t(count));
    for (int i = 0; i < count; ++i)
        cookies.push_back(xcb_get_property(c, 0, windows[i], windowType, XCB_ATOM_ATOM, 0, 32));
    bool found = false;
    for (const xcb_get_property_cookie_t &cookie : cookies) {
        auto types = reply(xcb_get_property_reply(c, cookie, nullptr));
        if (found || !types || types->format != 32)
            continue;
        const auto *atoms = static_cast<const xcb_atom_t *>(xcb_get_property_value(types.get()));
        const int n = xcb_get_property_value_length(types.get()) / 4;
        for (int j = 0; j < n; ++j)
            found = found || atoms[j] == desktopType;
    }
    return found;
}
