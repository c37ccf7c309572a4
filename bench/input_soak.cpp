// input_soak SECONDS: moves, clicks and keys at 1,000 a second for that long; the input monitor has to hear every one
// of them, in order and at its place. Prints what it cost. Exits with 1 when anything is missing or wrong.
#include "base/host_clock.h"
#include "platform/linux/x11_input_monitor.h"

#include <QGuiApplication>

#include <sys/resource.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

using namespace tavrel::platform;
using Type = InputEventRecord::Type;

namespace {

constexpr unsigned char kKey = 38; // "a" on the virtual server

struct Played
{
    int type;
    int x;
    int y;
    double hostMs;
};

class Hand
{
public:
    Hand() : m_connection(xcb_connect(nullptr, nullptr)) {}
    ~Hand() { xcb_disconnect(m_connection); }
    Hand(const Hand &) = delete;
    Hand &operator=(const Hand &) = delete;

    /// The event of a number: mostly moves, a click every 50, a key every 70.
    Played play(int number)
    {
        if (number % 50 == 20 || number % 50 == 21)
            return button(number % 50 == 20);
        if (number % 70 == 30 || number % 70 == 31)
            return key(number % 70 == 30);
        m_x = number * 7 % 1900;
        m_y = number * 3 % 1000;
        send(XCB_MOTION_NOTIFY, 0);
        return {Type::Move, m_x, m_y, tavrel::hostClockMs()};
    }

private:
    Played button(bool down)
    {
        send(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, 1);
        return {down ? Type::ButtonDown : Type::ButtonUp, m_x, m_y, tavrel::hostClockMs()};
    }
    Played key(bool down)
    {
        send(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, kKey);
        return {down ? Type::KeyDown : Type::KeyUp, m_x, m_y, tavrel::hostClockMs()};
    }
    void send(unsigned char type, unsigned char detail)
    {
        xcb_test_fake_input(m_connection, type, detail, 0, XCB_WINDOW_NONE, static_cast<short>(m_x),
                            static_cast<short>(m_y), 0);
        xcb_flush(m_connection);
    }

    xcb_connection_t *m_connection;
    int m_x = 0;
    int m_y = 0;
};

double processorSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    X11InputMonitor monitor;
    if (!monitor.start(nullptr))
        return 1;
    Hand hand;
    std::vector<Played> played;
    const auto begin = std::chrono::steady_clock::now();
    for (int number = 0; number < seconds * 1000; ++number) {
        std::this_thread::sleep_until(begin + std::chrono::milliseconds(number));
        played.push_back(hand.play(number));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const QList<InputEventRecord> heard = monitor.stop();

    int wrong = 0;
    double worstDelay = 0;
    const auto both = std::min<std::size_t>(played.size(), static_cast<std::size_t>(heard.size()));
    for (std::size_t i = 0; i < both; ++i) {
        const InputEventRecord &event = heard[static_cast<qsizetype>(i)];
        wrong += event.type != played[i].type || event.x != played[i].x || event.y != played[i].y;
        worstDelay = std::max(worstDelay, std::abs(event.hostMs - played[i].hostMs));
    }
    std::printf(
        "played %zu, heard %lld, wrong %d, times off by at most %.1f ms, processor %.1f %% of one core with the "
        "playing\n",
        played.size(), static_cast<long long>(heard.size()), wrong, worstDelay, 100 * processorSeconds() / seconds);
    return wrong != 0 || played.size() != static_cast<std::size_t>(heard.size());
}
