#include "platform/x11/X11FocusKeeper.h"

#include "XvfbServer.h"

#include <QDeadlineTimer>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

// Plays the window manager's part on a bare Xvfb: makes windows, says which is
// active, and watches for the requests a pager sends to the root window.
class FakeWindowManager
{
public:
    explicit FakeWindowManager(const QByteArray &display) : m_c(xcb_connect(display.constData(), nullptr))
    {
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_c)).data;
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_c, m_screen->root, XCB_CW_EVENT_MASK, &mask);
        sync();
    }
    ~FakeWindowManager() { xcb_disconnect(m_c); }

    xcb_window_t makeWindow(const char *wmClass, std::optional<std::uint32_t> pid)
    {
        const xcb_window_t window = xcb_generate_id(m_c);
        xcb_create_window(m_c, XCB_COPY_FROM_PARENT, window, m_screen->root, 0, 0, 10, 10, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual, 0, nullptr);
        // Instance and class, each ending in a zero byte.
        const std::string both = std::string("instance") + '\0' + wmClass + '\0';
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            std::uint32_t(both.size()), both.data());
        if (pid)
            xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                                &*pid);
        sync();
        return window;
    }

    void setActive(xcb_window_t window)
    {
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, m_screen->root, atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW,
                            32, 1, &window);
        sync();
    }

    void destroy(xcb_window_t window)
    {
        xcb_destroy_window(m_c, window);
        sync();
    }

    // The window of the next _NET_ACTIVE_WINDOW request, or 0 after ten seconds.
    xcb_window_t nextActivationRequest()
    {
        const xcb_atom_t request = atom("_NET_ACTIVE_WINDOW");
        const QDeadlineTimer deadline(10000);
        while (!deadline.hasExpired()) {
            xcb_generic_event_t *event = xcb_poll_for_event(m_c);
            if (!event) {
                sync();
                continue;
            }
            xcb_window_t window = 0;
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                const auto *message = reinterpret_cast<xcb_client_message_event_t *>(event);
                if (message->type == request)
                    window = message->window;
            }
            std::free(event);
            if (window)
                return window;
        }
        return 0;
    }

private:
    void sync() { std::free(xcb_get_input_focus_reply(m_c, xcb_get_input_focus(m_c), nullptr)); }
    xcb_atom_t atom(const char *name)
    {
        auto *r = xcb_intern_atom_reply(m_c, xcb_intern_atom(m_c, 0, std::uint16_t(std::strlen(name)), name), nullptr);
        const xcb_atom_t a = r ? r->atom : xcb_atom_t(XCB_ATOM_NONE);
        std::free(r);
        return a;
    }

    xcb_connection_t *m_c;
    xcb_screen_t *m_screen = nullptr;
};

class X11FocusKeeperTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        server = std::make_unique<XvfbServer>(QSize(64, 64));
        if (!server->isRunning())
            GTEST_SKIP() << server->reason().toStdString();
        wm = std::make_unique<FakeWindowManager>(server->display());
        keeper = std::make_unique<X11FocusKeeper>(server->display());
    }

    std::unique_ptr<XvfbServer> server;
    std::unique_ptr<FakeWindowManager> wm;
    std::unique_ptr<X11FocusKeeper> keeper;
};

} // namespace

TEST_F(X11FocusKeeperTest, RemembersTheActiveWindowWithItsClass)
{
    const xcb_window_t terminal = wm->makeWindow("XTerm", 4242u);
    wm->setActive(terminal);
    const auto active = keeper->activeForeignWindow();
    ASSERT_TRUE(active.has_value());
    EXPECT_EQ(active->id, terminal);
    EXPECT_EQ(active->name, "XTerm");
}

TEST_F(X11FocusKeeperTest, SkipsGlimpsosOwnWindowsAndNoActiveWindow)
{
    EXPECT_FALSE(keeper->activeForeignWindow().has_value());
    const xcb_window_t own = wm->makeWindow("glimpso", std::uint32_t(getpid()));
    wm->setActive(own);
    EXPECT_FALSE(keeper->activeForeignWindow().has_value());
}

TEST_F(X11FocusKeeperTest, HandsTheFocusBackThroughTheWindowManager)
{
    const xcb_window_t editor = wm->makeWindow("Gedit", std::nullopt);
    ASSERT_TRUE(keeper->activate(FocusKeeper::Window{editor, "Gedit"}));
    EXPECT_EQ(wm->nextActivationRequest(), editor);
}

TEST_F(X11FocusKeeperTest, AWindowThatWentAwayCannotBeActivated)
{
    const xcb_window_t gone = wm->makeWindow("Gone", std::nullopt);
    wm->destroy(gone);
    EXPECT_FALSE(keeper->activate(FocusKeeper::Window{gone, "Gone"}));
}
