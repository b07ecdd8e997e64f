// A helper of the end-to-end test of sound and pictures in step: a square
// window that flashes white at the instant a beep is heard, once a second.
//
//   glimpso_flash_beep WxH+X+Y SECONDS
//
// The beeps (30 ms at 1 kHz, half a second into each second) are played into
// the default output of $PULSE_SERVER, sample by sample; when each is heard
// is worked out from the server's latency, and the window turns white at that
// moment on the media clock, black again 300 ms later. Prints "beep T" for
// each when it is scheduled, and "flash T late L" when it was shown, L seconds
// after T.
#include "PrivatePulse.h"

#include "videowriting/MediaClock.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <numbers>
#include <thread>

namespace {

void paint(xcb_connection_t *x, xcb_window_t window, std::uint32_t colour)
{
    xcb_change_window_attributes(x, window, XCB_CW_BACK_PIXEL, &colour);
    xcb_clear_area(x, 0, window, 0, 0, 0, 0);
    xcb_flush(x);
}

} // namespace

int main(int argc, char **argv)
{
    int w = 0, h = 0, left = 0, top = 0;
    if (argc < 3 || std::sscanf(argv[1], "%dx%d+%d+%d", &w, &h, &left, &top) != 4) {
        std::fprintf(stderr, "usage: %s WxH+X+Y SECONDS\n", argv[0]);
        return 2;
    }
    const double seconds = std::atof(argv[2]);
    const char *server = std::getenv("PULSE_SERVER");
    PulsePlayer player(server ? server : "", nullptr, 2);
    if (!player.isOpen()) {
        std::fprintf(stderr, "no sound server\n");
        return 1;
    }
    xcb_connection_t *x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(x)) {
        std::fprintf(stderr, "no X server\n");
        return 1;
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    const xcb_window_t window = xcb_generate_id(x);
    const std::uint32_t values[] = {screen->black_pixel, 1};
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window, screen->root, std::int16_t(left), std::int16_t(top),
                      std::uint16_t(w), std::uint16_t(h), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(x, window);
    xcb_flush(x);

    // The flashes, due on the media clock, handed from the player to the painter.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<double> due;
    bool done = false;
    std::thread painter([&] {
        for (;;) {
            double at = 0;
            {
                std::unique_lock guard(mutex);
                changed.wait(guard, [&] { return done || !due.empty(); });
                if (due.empty())
                    return;
                at = due.front();
                due.pop_front();
            }
            std::this_thread::sleep_for(std::chrono::duration<double>(at - videowriting::MediaClock::now()));
            paint(x, window, screen->white_pixel);
            // How late the flash came after its beep (a busy machine wakes
            // this thread late): the test counts it out.
            std::printf("flash %.4f late %.4f\n", at, videowriting::MediaClock::now() - at);
            std::fflush(stdout);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            paint(x, window, screen->black_pixel);
        }
    });

    const long long beepLength = 48000 * 30 / 1000;
    const auto beepStart = [](long long second) { return second * 48000 + 24000; };
    long long nextBeep = 0;
    // Written 10 ms at a time: a beep's flash is scheduled as soon as its
    // first samples are with the server, well before they are heard.
    for (double played = 0; played < seconds; played += 0.01) {
        player.play(0.01, [&](long long frame) {
            const long long second = frame / 48000;
            const long long into = frame - beepStart(second);
            return into >= 0 && into < beepLength ? float(0.8 * std::sin(2 * std::numbers::pi * 1000 * into / 48000.0))
                                                  : 0.0f;
        });
        // Every beep written so far, once the server can say when it is heard.
        while (beepStart(nextBeep) < (long long)((played + 0.01) * 48000)) {
            const double heard = player.latestHeardAt(beepStart(nextBeep));
            std::printf("beep %.4f\n", heard);
            std::fflush(stdout);
            {
                std::lock_guard guard(mutex);
                due.push_back(heard);
            }
            changed.notify_all();
            ++nextBeep;
        }
    }
    {
        std::lock_guard guard(mutex);
        done = true;
    }
    changed.notify_all();
    painter.join();
    xcb_disconnect(x);
    return 0;
}
