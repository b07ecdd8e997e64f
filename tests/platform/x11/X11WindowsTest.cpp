#include "platform/x11/CaptureService.h"
#include "platform/x11/X11WindowGrabber.h"
#include "platform/x11/X11WindowList.h"

#include "XvfbServer.h"

#include "acquire/WindowCapture.h"
#include "appbase/AppError.h"

#include <xcb/composite.h>
#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

// Another X client that makes windows of plain colours, and plays the window
// manager's part where a test needs it (the stacking list, frame extents).
class Desktop
{
public:
    explicit Desktop(const QByteArray &display) : m_c(xcb_connect(display.constData(), nullptr))
    {
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
    }
    ~Desktop() { xcb_disconnect(m_c); }
    xcb_window_t root() const { return m_screen->root; }

    xcb_atom_t atom(const char *name)
    {
        auto *reply = xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
        const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(reply);
        return result;
    }

    // A mapped window filled by the server with `pixel`.
    xcb_window_t window(QRect rect, std::uint32_t pixel, bool argb = false)
    {
        const xcb_window_t window = xcb_generate_id(m_c);
        xcb_visualid_t visual = m_screen->root_visual;
        std::uint8_t depth = XCB_COPY_FROM_PARENT;
        std::vector<std::uint32_t> values = {pixel, pixel, 0};
        std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL;
        if (argb) {
            visual = argbVisual();
            depth = 32;
            const xcb_colormap_t colormap = xcb_generate_id(m_c);
            xcb_create_colormap(m_c, XCB_COLORMAP_ALLOC_NONE, colormap, m_screen->root, visual);
            values[2] = colormap;
            mask |= XCB_CW_COLORMAP;
        }
        xcb_create_window(m_c, depth, window, m_screen->root, std::int16_t(rect.x()), std::int16_t(rect.y()),
                          std::uint16_t(rect.width()), std::uint16_t(rect.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          visual, mask, values.data());
        xcb_map_window(m_c, window);
        sync();
        return window;
    }

    void setCardinals(xcb_window_t window, const char *name, std::vector<std::uint32_t> values)
    {
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, atom(name), XCB_ATOM_CARDINAL, 32,
                            std::uint32_t(values.size()), values.data());
        sync();
    }
    void setAtoms(xcb_window_t window, const char *name, std::vector<const char *> values)
    {
        std::vector<xcb_atom_t> atoms;
        for (const char *value : values)
            atoms.push_back(atom(value));
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, atom(name), XCB_ATOM_ATOM, 32,
                            std::uint32_t(atoms.size()), atoms.data());
        sync();
    }
    void setClass(xcb_window_t window, const std::string &wmClass)
    {
        const std::string both = "instance" + std::string(1, '\0') + wmClass + std::string(1, '\0');
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            std::uint32_t(both.size()), both.data());
        sync();
    }
    // The window manager's list, bottom to top.
    void setStacking(std::vector<xcb_window_t> windows)
    {
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, m_screen->root, atom("_NET_CLIENT_LIST_STACKING"),
                            XCB_ATOM_WINDOW, 32, std::uint32_t(windows.size()), windows.data());
        sync();
    }
    void unmap(xcb_window_t window)
    {
        xcb_unmap_window(m_c, window);
        sync();
    }
    void destroy(xcb_window_t window)
    {
        xcb_destroy_window(m_c, window);
        sync();
    }
    // As a compositing manager does: every window in a picture of its own.
    void redirectAll()
    {
        std::free(xcb_composite_query_version_reply(m_c, xcb_composite_query_version(m_c, 0, 4), nullptr));
        xcb_composite_redirect_subwindows(m_c, m_screen->root, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        sync();
    }

private:
    xcb_visualid_t argbVisual()
    {
        for (auto d = xcb_screen_allowed_depths_iterator(m_screen); d.rem; xcb_depth_next(&d))
            if (d.data->depth == 32)
                for (auto v = xcb_depth_visuals_iterator(d.data); v.rem; xcb_visualtype_next(&v))
                    return v.data->visual_id;
        return m_screen->root_visual;
    }
    void sync() { std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr)); }

    xcb_connection_t *m_c;
    xcb_screen_t *m_screen;
};

X11ScreenGeometry oneScreen()
{
    return X11ScreenGeometry({{QRect(0, 0, kWidth, kHeight), 1.0}}, QRect(0, 0, kWidth, kHeight));
}

class X11Windows : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!server.isRunning())
            GTEST_SKIP() << server.reason().toStdString();
        desktop = std::make_unique<Desktop>(server.display());
        capture = std::make_unique<CaptureService>(server.display(), [](std::uint32_t) { return std::nullopt; });
        grabber = std::make_unique<X11WindowGrabber>(server.display(),
                                                     [this](const QRect &rect) { return capture->grab(rect); });
        grabber->setScreens(oneScreen());
        list = std::make_unique<X11WindowList>(server.display(), &oneScreen);
    }

    static QRgb only(const QImage &image)
    {
        const QRgb first = image.pixel(0, 0);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) != first)
                    return 0x12345678;
        return first;
    }

    XvfbServer server{QSize(kWidth, kHeight)};
    std::unique_ptr<Desktop> desktop;
    std::unique_ptr<CaptureService> capture;
    std::unique_ptr<X11WindowGrabber> grabber;
    std::unique_ptr<X11WindowList> list;
};

} // namespace

TEST_F(X11Windows, ListsTheStackingFrontToBackWithFramesNamesAndProcesses)
{
    const xcb_window_t back = desktop->window({50, 60, 200, 100}, 0xff0000);
    const xcb_window_t front = desktop->window({100, 100, 150, 120}, 0x00ff00);
    desktop->setClass(back, "XTerm");
    desktop->setCardinals(back, "_NET_WM_PID", {4321});
    desktop->setCardinals(back, "_NET_FRAME_EXTENTS", {2, 3, 20, 4}); // left, right, top, bottom
    desktop->setStacking({back, front});
    const QList<WindowList::Entry> entries = list->onScreenEntries();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(*entries[0].windowID, front);
    EXPECT_EQ(*entries[1].windowID, back);
    EXPECT_EQ(entries[1].appName, "XTerm");
    EXPECT_EQ(entries[1].processID, 4321);
    EXPECT_FALSE(entries[0].processID);
    // Decorations included; global points, y up from the bottom of the display.
    EXPECT_EQ(*entries[1].frame, QRectF(48, kHeight - (60 + 100 + 4), 205, 124));
    EXPECT_TRUE(entries[0].isNormalLayer);
}

TEST_F(X11Windows, LeavesOutHiddenUnmappedAndOtherWorkspacesWindowsAndMarksDocks)
{
    const xcb_window_t dock = desktop->window({0, 0, 640, 30}, 0x333333);
    const xcb_window_t hidden = desktop->window({10, 40, 100, 100}, 0x444444);
    const xcb_window_t elsewhere = desktop->window({20, 40, 100, 100}, 0x555555);
    const xcb_window_t unmapped = desktop->window({30, 40, 100, 100}, 0x666666);
    const xcb_window_t sticky = desktop->window({40, 40, 100, 100}, 0x777777);
    desktop->setAtoms(dock, "_NET_WM_WINDOW_TYPE", {"_NET_WM_WINDOW_TYPE_DOCK"});
    desktop->setAtoms(hidden, "_NET_WM_STATE", {"_NET_WM_STATE_HIDDEN"});
    desktop->setCardinals(elsewhere, "_NET_WM_DESKTOP", {1});
    desktop->setCardinals(sticky, "_NET_WM_DESKTOP", {0xffffffffu});
    desktop->setCardinals(sticky, "_NET_WM_WINDOW_OPACITY", {0x7fffffffu});
    desktop->unmap(unmapped);
    desktop->setCardinals(desktop->root(), "_NET_CURRENT_DESKTOP", {0});
    desktop->setStacking({dock, hidden, elsewhere, unmapped, sticky});
    const QList<WindowList::Entry> entries = list->onScreenEntries();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(*entries[0].windowID, sticky);
    EXPECT_NEAR(*entries[0].opacity, 0.5, 0.01);
    EXPECT_EQ(*entries[1].windowID, dock);
    EXPECT_FALSE(entries[1].isNormalLayer);
}

TEST_F(X11Windows, WithoutAWindowManagerTheMappedWindowsStandIn)
{
    const xcb_window_t first = desktop->window({10, 10, 100, 100}, 0x111111);
    const xcb_window_t second = desktop->window({20, 20, 100, 100}, 0x222222);
    const QList<WindowList::Entry> entries = list->onScreenEntries();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(*entries[0].windowID, second);
    EXPECT_EQ(*entries[1].windowID, first);
}

TEST_F(X11Windows, AWindowThatNothingCoversIsCutFromTheScreen)
{
    const xcb_window_t window = desktop->window({30, 40, 120, 90}, 0x2080c0);
    const WindowGrabbing::Shot shot = grabber->grab(window, false);
    EXPECT_EQ(grabber->lastRoute(), X11WindowGrabber::Route::screenCut);
    EXPECT_EQ(shot.image.size(), QSize(120, 90));
    EXPECT_EQ(only(shot.image), qRgb(0x20, 0x80, 0xc0));
    EXPECT_EQ(shot.scale, 1.0);
}

TEST_F(X11Windows, ACoveredWindowGivesItsOwnPixelsNotThoseAboveIt)
{
    const xcb_window_t window = desktop->window({30, 40, 120, 90}, 0x2080c0);
    desktop->window({60, 60, 200, 200}, 0xff00ff);
    const WindowGrabbing::Shot shot = grabber->grab(window, false);
    EXPECT_EQ(grabber->lastRoute(), X11WindowGrabber::Route::redirected);
    EXPECT_EQ(shot.image.size(), QSize(120, 90));
    EXPECT_EQ(only(shot.image), qRgb(0x20, 0x80, 0xc0));
}

TEST_F(X11Windows, UnderACompositorTheWindowsOwnPictureIsRead)
{
    desktop->redirectAll();
    const xcb_window_t window = desktop->window({30, 40, 120, 90}, 0x2080c0);
    desktop->window({60, 60, 200, 200}, 0xff00ff);
    const WindowGrabbing::Shot shot = grabber->grab(window, false);
    EXPECT_EQ(grabber->lastRoute(), X11WindowGrabber::Route::windowPicture);
    EXPECT_EQ(only(shot.image), qRgb(0x20, 0x80, 0xc0));
}

TEST_F(X11Windows, AnArgbWindowKeepsItsAlpha)
{
    // Half-transparent red, premultiplied as X keeps it.
    const xcb_window_t window = desktop->window({30, 40, 64, 48}, 0x80800000u, true);
    const WindowGrabbing::Shot shot = grabber->grab(window, false);
    EXPECT_TRUE(shot.image.hasAlphaChannel());
    const QRgb pixel = qUnpremultiply(shot.image.pixel(10, 10));
    EXPECT_EQ(qAlpha(pixel), 0x80);
    EXPECT_NEAR(qRed(pixel), 255, 2);
    EXPECT_EQ(qGreen(pixel), 0);
}

TEST_F(X11Windows, AWindowPartlyOffScreenKeepsItsSizeWithTheHiddenPartTransparent)
{
    const xcb_window_t window = desktop->window({-40, 100, 100, 50}, 0x10c010);
    // Composite's picture has all of it; force the screen cut by asking for
    // it the way a desktop without Composite would.
    const WindowGrabbing::Shot shot = grabber->grab(window, false);
    EXPECT_EQ(shot.image.size(), QSize(100, 50));
    EXPECT_EQ(shot.image.pixel(60, 20), qRgb(0x10, 0xc0, 0x10));
    if (grabber->lastRoute() == X11WindowGrabber::Route::screenCut) {
        EXPECT_EQ(qAlpha(shot.image.pixel(10, 20)), 0);
    }
}

TEST_F(X11Windows, AWindowThatIsGoneFailsWithItsOwnText)
{
    const xcb_window_t window = desktop->window({30, 40, 120, 90}, 0x2080c0);
    desktop->destroy(window);
    try {
        grabber->grab(window, false);
        FAIL() << "no failure";
    } catch (const AppError &error) {
        EXPECT_EQ(error.errorDescription(), "Capture failed: " + WindowCapture::closedText());
    }
}

TEST_F(X11Windows, JustUncoveredWindowsAreWaitedForOnlyWhileTheyAreDrawn)
{
    const xcb_window_t window = desktop->window({30, 40, 120, 90}, 0x2080c0);
    QElapsedTimer timer;
    timer.start();
    const WindowGrabbing::Shot shot = grabber->grab(window, true);
    EXPECT_LT(timer.elapsed(), X11WindowGrabber::redrawLimitMs + 200);
    EXPECT_EQ(only(shot.image), qRgb(0x20, 0x80, 0xc0));
}
