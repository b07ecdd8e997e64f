// Times a screen-capture overlay the way a person sees it: from the moment a
// command is started to the moment a window covering the screen is mapped,
// and then to the moment the server has had that whole area drawn (X Damage
// on the root window). The same probe measures glimpso and its peers, so no
// program's own idea of "shown" is trusted.
//
//   glimpso-overlay-probe TIMEOUT_MS COMMAND [ARGS...]
//   glimpso-overlay-probe TIMEOUT_MS --keys KEYCODE...
// prints "mapped_ms painted_ms" and leaves the overlay up. With --keys the
// probe itself presses the keys (XTEST, in order, released in reverse) and
// times from the first press: a global shortcut as a person types it.

#include <xcb/damage.h>
#include <xcb/xtest.h>
#include <xcb/xcb.h>

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

extern char **environ;

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Which 8×8 cells of the screen have been drawn since the overlay mapped.
class Coverage
{
public:
    Coverage(int width, int height) : m_columns((width + 7) / 8), m_rows((height + 7) / 8), m_cells(size_t(m_columns * m_rows)) {}

    void add(int x, int y, int width, int height)
    {
        for (int row = std::max(0, y / 8); row < std::min(m_rows, (y + height + 7) / 8); ++row)
            for (int column = std::max(0, x / 8); column < std::min(m_columns, (x + width + 7) / 8); ++column)
                m_cells[size_t(row * m_columns + column)] = true;
    }
    double fractionWithin(int x, int y, int width, int height) const
    {
        long covered = 0, all = 0;
        for (int row = std::max(0, y / 8); row < std::min(m_rows, (y + height) / 8); ++row)
            for (int column = std::max(0, x / 8); column < std::min(m_columns, (x + width) / 8); ++column) {
                ++all;
                covered += m_cells[size_t(row * m_columns + column)];
            }
        return all ? double(covered) / double(all) : 0;
    }
    void clear() { std::fill(m_cells.begin(), m_cells.end(), false); }

private:
    int m_columns;
    int m_rows;
    std::vector<bool> m_cells;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s TIMEOUT_MS COMMAND [ARGS...]\n", argv[0]);
        return 2;
    }
    const int timeoutMs = std::atoi(argv[1]);
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "no X display\n");
        return 2;
    }
    xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_query_extension_reply_t *damageExtension = xcb_get_extension_data(connection, &xcb_damage_id);
    if (!damageExtension || !damageExtension->present) {
        std::fprintf(stderr, "the X server has no Damage extension\n");
        return 2;
    }
    std::free(xcb_damage_query_version_reply(connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, screen->root, XCB_CW_EVENT_MASK, &mask);
    const xcb_damage_damage_t damage = xcb_generate_id(connection);
    xcb_damage_create(connection, damage, screen->root, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);

    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));

    Coverage coverage(screen->width_in_pixels, screen->height_in_pixels);
    const Clock::time_point start = Clock::now();
    pid_t child = 0;
    if (std::string_view(argv[2]) == "--keys") {
        std::vector<uint8_t> keys;
        for (int i = 3; i < argc; ++i)
            keys.push_back(uint8_t(std::atoi(argv[i])));
        for (uint8_t key : keys)
            xcb_test_fake_input(connection, XCB_KEY_PRESS, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        for (auto key = keys.rbegin(); key != keys.rend(); ++key)
            xcb_test_fake_input(connection, XCB_KEY_RELEASE, *key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(connection);
    } else {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 0x1 /* O_WRONLY */, 0);
        if (posix_spawnp(&child, argv[2], &actions, nullptr, argv + 2, environ) != 0) {
            std::fprintf(stderr, "cannot start %s\n", argv[2]);
            return 2;
        }
    }

    double mappedMs = -1;
    int ox = 0, oy = 0, ow = 0, oh = 0;
    const int fd = xcb_get_file_descriptor(connection);
    while (msSince(start) < timeoutMs) {
        std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(xcb_poll_for_event(connection), &std::free);
        if (!event) {
            pollfd waiting{fd, POLLIN, 0};
            poll(&waiting, 1, 5);
            continue;
        }
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_MAP_NOTIFY && mappedMs < 0) {
            const auto *map = reinterpret_cast<xcb_map_notify_event_t *>(event.get());
            std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> geometry(
                xcb_get_geometry_reply(connection, xcb_get_geometry(connection, map->window), nullptr), &std::free);
            // Only a window over most of the screen is an overlay; toasts and
            // tray icons do not count.
            if (geometry && long(geometry->width) * geometry->height * 10
                                >= long(screen->width_in_pixels) * screen->height_in_pixels * 9) {
                mappedMs = msSince(start);
                ox = geometry->x;
                oy = geometry->y;
                ow = geometry->width;
                oh = geometry->height;
                coverage.clear();
            }
        } else if (type == damageExtension->first_event + XCB_DAMAGE_NOTIFY) {
            const auto *notify = reinterpret_cast<xcb_damage_notify_event_t *>(event.get());
            if (mappedMs >= 0) {
                coverage.add(notify->area.x, notify->area.y, notify->area.width, notify->area.height);
                if (coverage.fractionWithin(ox, oy, ow, oh) >= 0.98) {
                    std::printf("%.1f %.1f\n", mappedMs, msSince(start));
                    if (child)
                        waitpid(child, nullptr, WNOHANG);
                    return 0;
                }
            }
        }
    }
    std::fprintf(stderr, "timed out (mapped: %s)\n", mappedMs >= 0 ? "yes" : "no");
    return 1;
}
