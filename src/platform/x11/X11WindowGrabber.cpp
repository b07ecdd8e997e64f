#include "platform/x11/X11WindowGrabber.h"

#include "platform/x11/X11Reply.h"

#include "acquire/WindowCapture.h"
#include "appbase/AppError.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMutexLocker>
#include <QPainter>

#include <xcb/composite.h>
#include <xcb/damage.h>

#include <poll.h>

Q_LOGGING_CATEGORY(lcWindowGrabber, "glimpso.WindowCapture")

namespace {

// The picture of a drawable as the server has it: 32 bits per pixel,
// premultiplied alpha at depth 32, an unused top byte at depth 24.
std::optional<QImage> imageOf(xcb_connection_t *c, std::uint32_t drawable, QSize size, std::uint8_t depth)
{
    xcb_generic_error_t *error = nullptr;
    auto reply = X11Reply::own(xcb_get_image_reply(
        c,
        xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, 0, 0, std::uint16_t(size.width()),
                      std::uint16_t(size.height()), ~0u),
        &error));
    if (error || !reply) {
        std::free(error);
        return std::nullopt;
    }
    const std::size_t bytes = std::size_t(size.width()) * std::size_t(size.height()) * 4;
    if (std::size_t(xcb_get_image_data_length(reply.get())) < bytes)
        return std::nullopt;
    const bool alpha = depth == 32;
    QImage image(size, alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    const uchar *data = xcb_get_image_data(reply.get());
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<std::uint32_t *>(image.scanLine(y));
        std::memcpy(line, data + std::size_t(y) * std::size_t(size.width()) * 4, std::size_t(size.width()) * 4);
        if (!alpha)
            for (int x = 0; x < size.width(); ++x)
                line[x] |= 0xff000000u;
    }
    return image;
}

} // namespace

X11WindowGrabber::X11WindowGrabber(QByteArray displayName, RootGrab rootGrab)
    : m_x(std::move(displayName)), m_rootGrab(std::move(rootGrab))
{
}

X11WindowGrabber::~X11WindowGrabber() = default;

void X11WindowGrabber::prepare()
{
    setScreens(X11ScreenGeometry::current());
}

void X11WindowGrabber::setScreens(const X11ScreenGeometry &geometry)
{
    QMutexLocker lock(&m_mutex);
    m_geometry = geometry;
}

std::optional<X11WindowGrabber::Route> X11WindowGrabber::lastRoute() const
{
    QMutexLocker lock(&m_mutex);
    return m_lastRoute;
}

std::optional<X11WindowGrabber::Frame> X11WindowGrabber::frameOf(xcb_connection_t *c, std::uint32_t windowID)
{
    const xcb_window_t root = X11Reply::firstScreen(c)->root;
    // The client's top-level ancestor: the window manager's frame, which
    // holds the decorations.
    xcb_window_t window = windowID;
    for (int depth = 0; depth < 64; ++depth) {
        auto tree = X11Reply::own(xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr));
        if (!tree)
            return std::nullopt;
        if (tree->parent == root || tree->parent == XCB_WINDOW_NONE)
            break;
        window = tree->parent;
    }
    const auto geometryCookie = xcb_get_geometry(c, window);
    const auto attributesCookie = xcb_get_window_attributes(c, window);
    auto geometry = X11Reply::own(xcb_get_geometry_reply(c, geometryCookie, nullptr));
    auto attributes = X11Reply::own(xcb_get_window_attributes_reply(c, attributesCookie, nullptr));
    if (!geometry || !attributes || window == root)
        return std::nullopt;
    Frame frame;
    frame.id = window;
    frame.rect = QRect(geometry->x + geometry->border_width, geometry->y + geometry->border_width, geometry->width,
                       geometry->height);
    frame.depth = geometry->depth;
    frame.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    return frame;
}

std::optional<QImage> X11WindowGrabber::windowPicture(xcb_connection_t *c, const Frame &frame)
{
    // Refused (BadMatch) unless the window is redirected, as a compositing
    // manager redirects every window.
    const xcb_pixmap_t pixmap = xcb_generate_id(c);
    if (xcb_generic_error_t *error =
            xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, frame.id, pixmap))) {
        std::free(error);
        return std::nullopt;
    }
    std::optional<QImage> image = imageOf(c, pixmap, frame.rect.size(), frame.depth);
    xcb_free_pixmap(c, pixmap);
    return image;
}

bool X11WindowGrabber::isCovered(xcb_connection_t *c, const Frame &frame)
{
    const xcb_window_t root = X11Reply::firstScreen(c)->root;
    auto tree = X11Reply::own(xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr));
    if (!tree)
        return false;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    const int count = xcb_query_tree_children_length(tree.get());
    // Children run bottom to top: those after the frame lie above it.
    int index = 0;
    while (index < count && children[index] != frame.id)
        ++index;
    std::vector<std::pair<xcb_get_window_attributes_cookie_t, xcb_get_geometry_cookie_t>> above;
    for (int i = index + 1; i < count; ++i)
        above.emplace_back(xcb_get_window_attributes(c, children[i]), xcb_get_geometry(c, children[i]));
    bool covered = false;
    for (const auto &[attributesCookie, geometryCookie] : above) {
        auto attributes = X11Reply::own(xcb_get_window_attributes_reply(c, attributesCookie, nullptr));
        auto geometry = X11Reply::own(xcb_get_geometry_reply(c, geometryCookie, nullptr));
        if (covered || !attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT)
            continue;
        const QRect rect(geometry->x, geometry->y, geometry->width + 2 * geometry->border_width,
                         geometry->height + 2 * geometry->border_width);
        covered = rect.intersects(frame.rect);
    }
    return covered;
}

void X11WindowGrabber::waitForRedraw(xcb_connection_t *c, std::uint32_t drawable)
{
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_damage_id);
    if (!extension || !extension->present)
        return;
    if (m_damageGeneration != m_x.generation()) {
        // The extension answers nothing before its version is asked, once
        // per connection.
        std::free(xcb_damage_query_version_reply(c, xcb_damage_query_version(c, 1, 1), nullptr));
        m_damageGeneration = m_x.generation();
    }
    const xcb_damage_damage_t damage = xcb_generate_id(c);
    xcb_damage_create(c, damage, drawable, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    xcb_flush(c);
    const std::uint8_t notify = extension->first_event + XCB_DAMAGE_NOTIFY;
    QElapsedTimer total, quiet;
    total.start();
    quiet.start();
    int drawings = 0;
    // Until the program has paused in its drawing for a moment, within a
    // limit: a program that never stops (a clock with seconds) is not waited
    // for forever.
    while (quiet.elapsed() < redrawQuietMs && total.elapsed() < redrawLimitMs) {
        while (xcb_generic_event_t *event = xcb_poll_for_event(c)) {
            if ((event->response_type & 0x7f) == notify) {
                ++drawings;
                quiet.restart();
            }
            std::free(event);
        }
        pollfd fd{xcb_get_file_descriptor(c), POLLIN, 0};
        const int left = int(std::min<qint64>(redrawQuietMs - quiet.elapsed(), redrawLimitMs - total.elapsed()));
        if (left > 0)
            ::poll(&fd, 1, left);
    }
    xcb_damage_destroy(c, damage);
    xcb_flush(c);
    qCDebug(lcWindowGrabber, "window 0x%x drawn again: %d drawings in %lld ms", drawable, drawings,
            static_cast<long long>(total.elapsed()));
}

std::optional<QImage> X11WindowGrabber::redirectedPicture(xcb_connection_t *c, const Frame &frame)
{
    // Redirected, the window gets a picture of its own that its program
    // fills as it draws the window again; on the screen nothing changes.
    const xcb_void_cookie_t redirect =
        xcb_composite_redirect_window_checked(c, frame.id, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (xcb_generic_error_t *error = xcb_request_check(c, redirect)) {
        // Another client redirects it by hand: its picture is that client's.
        std::free(error);
        return std::nullopt;
    }
    waitForRedraw(c, frame.id);
    std::optional<QImage> image = windowPicture(c, frame);
    xcb_composite_unredirect_window(c, frame.id, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xcb_flush(c);
    return image;
}

QImage X11WindowGrabber::screenCut(xcb_connection_t *c, const Frame &frame)
{
    const xcb_screen_t *screen = X11Reply::firstScreen(c);
    const QRect visible = frame.rect.intersected(QRect(0, 0, screen->width_in_pixels, screen->height_in_pixels));
    if (visible.isEmpty())
        throw AppError::captureFailed(QStringLiteral("the window lies outside the screen"));
    const QImage cut = m_rootGrab(visible);
    if (visible == frame.rect)
        return cut.copy(); // its own memory, not the capture service's block
    // What lies past the screen edge stays transparent.
    QImage whole(frame.rect.size(), QImage::Format_ARGB32_Premultiplied);
    whole.fill(Qt::transparent);
    QPainter painter(&whole);
    painter.drawImage(visible.topLeft() - frame.rect.topLeft(), cut);
    return whole;
}

WindowGrabbing::Shot X11WindowGrabber::grab(std::uint32_t windowID, bool justUncovered)
{
    QMutexLocker lock(&m_mutex);
    xcb_connection_t *c = m_x.get();
    if (!c)
        throw AppError::captureFailed(QStringLiteral("no connection to the X server"));
    const std::optional<Frame> frame = frameOf(c, windowID);
    if (!frame || frame->rect.isEmpty())
        throw AppError::captureFailed(WindowCapture::closedText());
    const double scale = m_geometry.scaleAt(frame->rect);
    const xcb_query_extension_reply_t *composite = xcb_get_extension_data(c, &xcb_composite_id);
    const bool hasComposite = composite && composite->present;

    if (frame->viewable && hasComposite) {
        if (std::optional<QImage> image = windowPicture(c, *frame)) {
            m_lastRoute = Route::windowPicture;
            return {*image, scale};
        }
        // A covered window is drawn again into a picture of its own; so is
        // a window with alpha, whose alpha the screen doesn't keep.
        if (frame->depth == 32 || isCovered(c, *frame)) {
            if (std::optional<QImage> image = redirectedPicture(c, *frame)) {
                m_lastRoute = Route::redirected;
                return {*image, scale};
            }
        } else if (justUncovered) {
            // Our picker lay over it: its program is drawing it again.
            waitForRedraw(c, frame->id);
        }
    }
    m_lastRoute = Route::screenCut;
    return {screenCut(c, *frame), scale};
}
