#include "platform/x11/CaptureService.h"

#include "appbase/AppError.h"

#include <QLoggingCategory>
#include <QMutexLocker>
#include <QtConcurrent>

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstdlib>
#include <cstring>
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

// The root window's own pixel format, when it is the one QImage::Format_RGB32
// reads: 32 bits per pixel, depth 24 or 32, least significant byte first.
bool hasRgb32Layout(xcb_connection_t *c, std::uint8_t depth)
{
    const xcb_setup_t *setup = xcb_get_setup(c);
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST || (depth != 24 && depth != 32))
        return false;
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem; xcb_format_next(&it))
        if (it.data->depth == depth)
            return it.data->bits_per_pixel == 32;
    return false;
}

// X leaves the unused top byte of each 32-bit pixel at 0, while QImage's
// RGB32 promises 0xff there; a picture drawn onto a transparent canvas would
// vanish otherwise.
void makeOpaque(uchar *pixels, std::size_t count)
{
    auto *words = reinterpret_cast<std::uint32_t *>(pixels);
    for (std::size_t i = 0; i < count; ++i)
        words[i] |= 0xff000000u;
}

struct SharedSegment {
    void *address;
};

void detachSegment(void *info)
{
    shmdt(static_cast<SharedSegment *>(info)->address);
    delete static_cast<SharedSegment *>(info);
}

} // namespace

CaptureService::CaptureService(QByteArray displayName, DisplayLocator locator)
    : m_x(std::move(displayName)), m_locator(std::move(locator))
{
}

CaptureService::~CaptureService() = default;

void CaptureService::setSharedMemoryAllowed(bool allowed)
{
    QMutexLocker lock(&m_mutex);
    m_sharedMemoryAllowed = allowed;
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
    if (!hasRgb32Layout(c, screen->root_depth))
        throw AppError::captureFailed(QStringLiteral("the X screen's pixel format is not supported"));

    std::optional<QImage> image;
    if (m_sharedMemoryAllowed)
        image = grabShared(c, screen->root, rect);
    if (!image)
        image = grabPlain(c, screen->root, rect);
    if (!image)
        throw AppError::captureFailed(QStringLiteral("the X server sent no pixels"));
    return *image;
}

std::optional<QImage> CaptureService::grabShared(xcb_connection_t *c, unsigned root, const QRect &rect)
{
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_shm_id);
    if (!extension || !extension->present)
        return std::nullopt;
    const std::size_t bytesPerLine = std::size_t(rect.width()) * 4;
    const std::size_t size = bytesPerLine * std::size_t(rect.height());
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    if (id < 0)
        return std::nullopt;
    void *address = shmat(id, nullptr, 0);
    // Marked for removal at once: it goes when the last of us and the server
    // lets go of it, whatever happens below.
    shmctl(id, IPC_RMID, nullptr);
    if (address == reinterpret_cast<void *>(-1))
        return std::nullopt;

    const xcb_shm_seg_t segment = xcb_generate_id(c);
    auto attachError = xcb_request_check(c, xcb_shm_attach_checked(c, segment, std::uint32_t(id), 0));
    if (attachError) {
        // A server on another machine cannot see our memory.
        std::free(attachError);
        shmdt(address);
        return std::nullopt;
    }
    xcb_generic_error_t *error = nullptr;
    auto image = reply(xcb_shm_get_image_reply(
        c,
        xcb_shm_get_image(c, root, std::int16_t(rect.x()), std::int16_t(rect.y()), std::uint16_t(rect.width()),
                          std::uint16_t(rect.height()), ~0u, XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0),
        &error));
    xcb_shm_detach(c, segment);
    xcb_flush(c);
    if (error || !image) {
        std::free(error);
        shmdt(address);
        return std::nullopt;
    }
    makeOpaque(static_cast<uchar *>(address), std::size_t(rect.width()) * std::size_t(rect.height()));
    // The picture stays in the segment: no copy of a 4K screen on the way.
    QImage result(static_cast<uchar *>(address), rect.width(), rect.height(), qsizetype(bytesPerLine),
                  QImage::Format_RGB32, &detachSegment, new SharedSegment{address});
    return result;
}

std::optional<QImage> CaptureService::grabPlain(xcb_connection_t *c, unsigned root, const QRect &rect)
{
    xcb_generic_error_t *error = nullptr;
    auto image = reply(xcb_get_image_reply(
        c,
        xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, root, std::int16_t(rect.x()), std::int16_t(rect.y()),
                      std::uint16_t(rect.width()), std::uint16_t(rect.height()), ~0u),
        &error));
    if (error || !image) {
        std::free(error);
        return std::nullopt;
    }
    const int length = xcb_get_image_data_length(image.get());
    const qsizetype bytesPerLine = qsizetype(rect.width()) * 4;
    if (length < bytesPerLine * rect.height())
        return std::nullopt;
    QImage result(rect.width(), rect.height(), QImage::Format_RGB32);
    const uchar *data = xcb_get_image_data(image.get());
    for (int y = 0; y < rect.height(); ++y)
        std::memcpy(result.scanLine(y), data + y * bytesPerLine, std::size_t(bytesPerLine));
    makeOpaque(result.bits(), std::size_t(rect.width()) * std::size_t(rect.height()));
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
