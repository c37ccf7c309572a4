// press_to_paint [PRESSES]: how long the running program takes from the hotkey to a painted overlay, seen from
// outside. Presses Ctrl+1 by XTEST, polls the screen's last pixels until the overlay has dimmed them, leaves with Esc.
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};

// Key codes of the standard layout of the virtual server.
constexpr unsigned char kControl = 37, kOne = 10, kEscape = 9;

class Screen
{
public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr))
    {
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    }
    ~Screen() { xcb_disconnect(m_connection); }
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    void key(unsigned char code, bool down)
    {
        xcb_test_fake_input(m_connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code, 0, m_screen->root, 0, 0, 0);
        xcb_flush(m_connection);
    }

    /// The bottom right pixel: painted last by any top-down painting.
    unsigned pixel()
    {
        const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root,
                                          static_cast<short>(m_screen->width_in_pixels - 1),
                                          static_cast<short>(m_screen->height_in_pixels - 1), 1, 1, ~0U);
        const std::unique_ptr<xcb_get_image_reply_t, Free> reply(xcb_get_image_reply(m_connection, cookie, nullptr));
        if (!reply)
            return 0;
        const unsigned char *bytes = xcb_get_image_data(reply.get());
        return bytes[0] | bytes[1] * 256U | bytes[2] * 65536U;
    }

    bool waitFor(unsigned value, bool equal)
    {
        const auto deadline = Clock::now() + 10s;
        while ((pixel() == value) != equal) {
            if (Clock::now() > deadline)
                return false;
        }
        return true;
    }

private:
    xcb_connection_t *m_connection;
    xcb_screen_t *m_screen;
};

} // namespace

int main(int argc, char *argv[])
{
    const int presses = argc > 1 ? std::atoi(argv[1]) : 30;
    Screen screen;
    const unsigned idle = screen.pixel();
    if (idle == 0) {
        std::fprintf(stderr, "the desktop is black: dimming would not show\n");
        return 2;
    }
    std::vector<double> times;
    for (int i = 0; i < presses; ++i) {
        const auto start = Clock::now();
        screen.key(kControl, true);
        screen.key(kOne, true);
        if (!screen.waitFor(idle, false)) {
            std::fprintf(stderr, "press %d: no overlay within 10 s\n", i);
            return 1;
        }
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        screen.key(kOne, false);
        screen.key(kControl, false);
        std::this_thread::sleep_for(150ms);
        screen.key(kEscape, true);
        screen.key(kEscape, false);
        if (!screen.waitFor(idle, true)) {
            std::fprintf(stderr, "press %d: the overlay did not close\n", i);
            return 1;
        }
        std::this_thread::sleep_for(300ms);
    }
    std::sort(times.begin(), times.end());
    const auto at = [&times](double share) {
        return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
    };
    std::printf("{\"presses\": %d, \"min_ms\": %.1f, \"median_ms\": %.1f, \"p90_ms\": %.1f, \"max_ms\": %.1f}\n",
                presses, times.front(), at(0.5), at(0.9), times.back());
    return 0;
}
