// heartbeat PID STALL_MS: watches the main thread of a program with windows on the display at hand and prints a line
// for each time it did not come back to its event loop for STALL_MS, until the program or this one is ended.
//
// A busy machine is no stall of the program. So three things have to be true for all of that time: the thread was never
// seen waiting in its event loop; a _NET_WM_PING to its newest window, where it has one, was not answered; and time in
// which it waited for a processor, a disk or the X server, in which the X server did not answer us either, or in which
// we were not run ourselves, is not counted.
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <poll.h>
#include <sys/syscall.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kTick(20);
constexpr milliseconds kLongestTick(60); ///< after a longer one nobody knows what happened meanwhile

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

/// What the kernel tells of the main thread.
class MainThread final
{
public:
    explicit MainThread(const std::string &pid) : m_folder("/proc/" + pid + "/") {}

    [[nodiscard]] bool isAlive() const { return std::ifstream(m_folder + "stat").good() && state() != 'Z'; }
    enum class Place { EventLoop, XServer, Elsewhere };
    /// An event loop polls several descriptors; one alone is the X server's, whose answer is waited for.
    [[nodiscard]] Place place() const
    {
        std::istringstream line(read("syscall"));
        long number = -1;
        std::string descriptors;
        std::string count;
        line >> number >> descriptors >> count;
#ifdef SYS_poll
        const bool isPoll = number == SYS_poll || number == SYS_ppoll;
#else
        const bool isPoll = number == SYS_ppoll;
#endif
        if (!isPoll)
            return Place::Elsewhere;
        return std::strtoul(count.c_str(), nullptr, 16) > 1 ? Place::EventLoop : Place::XServer;
    }
    [[nodiscard]] bool waitsForDisk() const
    {
        return state() == 'D';
    }
    /// Neither in a system call nor, as far as it is up to the thread, doing nothing.
    [[nodiscard]] bool wantsToRun() const
    {
        return read("syscall") == "running";
    }
    /// How long it has had a processor, since its start.
    [[nodiscard]] std::chrono::nanoseconds run() const
    {
        std::istringstream line(read("schedstat"));
        long long run = 0;
        line >> run;
        return std::chrono::nanoseconds(run);
    }
    [[nodiscard]] std::string doing() const
    {
        return read("syscall");
    }

private:
    [[nodiscard]] std::string read(const char *name) const
    {
        std::ifstream file(m_folder + name);
        std::string line;
        std::getline(file, line);
        return line;
    }
    [[nodiscard]] char state() const
    {
        const std::string line = read("stat");
        const auto end = line.rfind(')');
        return end == std::string::npos || end + 2 >= line.size() ? 'Z' : line[end + 2];
    }

    std::string m_folder;
};

class Display final
{
public:
    explicit Display(std::uint32_t pid) : m_pid(pid), m_connection(xcb_connect(nullptr, nullptr))
    {
        if (isBroken())
            return;
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        m_root = screen->root;
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        m_own = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_own, m_root, -5, -5, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, 0, nullptr);
        m_ping = atom("_NET_WM_PING");
        m_protocols = atom("WM_PROTOCOLS");
        m_pidAtom = atom("_NET_WM_PID");
        m_control = atom("TAVREL_CONTROL");
        xcb_flush(m_connection);
    }
    ~Display() { xcb_disconnect(m_connection); }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    [[nodiscard]] bool isBroken() const { return xcb_connection_has_error(m_connection) != 0; }
    [[nodiscard]] bool hasControl() const { return m_controlAnswered == m_controlSent; }
    [[nodiscard]] bool isPinged() const { return m_pingAnswered != m_pingSent; }

    /// The program's window that came last and answers pings; 0 while there is none.
    xcb_window_t window()
    {
        if (m_isSettled)
            return m_window;
        m_isSettled = true;
        m_window = 0;
        xcb_window_t &found = m_window;
        const auto tree = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, m_root), nullptr));
        if (!tree)
            return 0;
        const xcb_window_t *children = xcb_query_tree_children(tree.get());
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            if (isOurs(children[i]))
                found = children[i];
            // In the frame of a window manager.
            const auto inner =
                owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, children[i]), nullptr));
            for (int j = 0; inner && j < xcb_query_tree_children_length(inner.get()); ++j) {
                if (isOurs(xcb_query_tree_children(inner.get())[j]))
                    found = xcb_query_tree_children(inner.get())[j];
            }
        }
        return found;
    }
    void ping(xcb_window_t window) { send(window, m_protocols, {m_ping, ++m_pingSent, window, 0, 0}); }
    /// A ping to nobody, or to a window that has gone, is not waited for.
    void forgetPing() { m_pingAnswered = m_pingSent; }
    void askControl() { send(m_own, m_control, {++m_controlSent, 0, 0, 0, 0}); }

    void takeAnswers(milliseconds wait)
    {
        xcb_flush(m_connection);
        pollfd ready{xcb_get_file_descriptor(m_connection), POLLIN, 0};
        const auto until = Clock::now() + wait;
        do {
            while (const auto event = owned(xcb_poll_for_event(m_connection))) {
                const int type = event->response_type & 0x7f;
                if (type == XCB_MAP_NOTIFY || type == XCB_UNMAP_NOTIFY || type == XCB_DESTROY_NOTIFY ||
                    type == XCB_REPARENT_NOTIFY)
                    m_isSettled = false;
                if (type != XCB_CLIENT_MESSAGE)
                    continue;
                const auto *message = reinterpret_cast<const xcb_client_message_event_t *>(event.get());
                if (message->type == m_control)
                    m_controlAnswered = message->data.data32[0];
                else if (message->type == m_protocols && message->window == m_root &&
                         message->data.data32[0] == m_ping && message->data.data32[1] == m_pingSent)
                    m_pingAnswered = m_pingSent;
            }
            const auto left = std::chrono::duration_cast<milliseconds>(until - Clock::now());
            if (left.count() <= 0 || isBroken())
                return;
            poll(&ready, 1, static_cast<int>(left.count()));
        } while (true);
    }

private:
    xcb_atom_t atom(const char *name) const
    {
        const auto length = static_cast<std::uint16_t>(std::strlen(name));
        return owned(xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, length, name), nullptr))
            ->atom;
    }
    bool isOurs(xcb_window_t window) const
    {
        const auto ask = [&](xcb_atom_t property, xcb_atom_t type) {
            return owned(xcb_get_property_reply(
                m_connection, xcb_get_property(m_connection, 0, window, property, type, 0, 32), nullptr));
        };
        const auto pid = ask(m_pidAtom, XCB_ATOM_CARDINAL);
        if (!pid || xcb_get_property_value_length(pid.get()) < 4 ||
            *static_cast<const std::uint32_t *>(xcb_get_property_value(pid.get())) != m_pid)
            return false;
        const auto protocols = ask(m_protocols, XCB_ATOM_ATOM);
        if (!protocols)
            return false;
        const auto *listed = static_cast<const xcb_atom_t *>(xcb_get_property_value(protocols.get()));
        for (int i = 0; i < xcb_get_property_value_length(protocols.get()) / 4; ++i) {
            if (listed[i] == m_ping)
                return true;
        }
        return false;
    }
    void send(xcb_window_t window, xcb_atom_t type, const std::uint32_t (&data)[5])
    {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = type;
        std::memcpy(event.data.data32, data, sizeof data);
        xcb_send_event(m_connection, 0, window, 0, reinterpret_cast<const char *>(&event));
    }

    std::uint32_t m_pid;
    xcb_connection_t *m_connection;
    xcb_window_t m_root = 0;
    xcb_window_t m_own = 0;
    xcb_window_t m_window = 0;
    bool m_isSettled = false; ///< no window has come or gone since m_window was looked for
    xcb_atom_t m_ping = 0;
    xcb_atom_t m_protocols = 0;
    xcb_atom_t m_pidAtom = 0;
    xcb_atom_t m_control = 0;
    std::uint32_t m_pingSent = 0;
    std::uint32_t m_pingAnswered = 0;
    std::uint32_t m_controlSent = 0;
    std::uint32_t m_controlAnswered = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    const milliseconds limit(std::atoi(argv[2]));
    const MainThread thread(argv[1]);
    Display display(static_cast<std::uint32_t>(std::strtoul(argv[1], nullptr, 10)));

    std::chrono::nanoseconds stalled{}; // of the time since it was last seen well
    std::chrono::nanoseconds run = thread.run();
    Clock::time_point last = Clock::now();
    bool isTold = false;
    while (!display.isBroken() && thread.isAlive()) {
        const xcb_window_t window = display.isPinged() ? 0 : display.window();
        if (window != 0) { // and it has answered
            display.ping(window);
            stalled = {};
        }
        if (display.hasControl())
            display.askControl();
        display.takeAnswers(kTick);

        const auto now = Clock::now();
        const auto runNow = thread.run();
        const MainThread::Place place = thread.place();
        if (place == MainThread::Place::EventLoop) {
            stalled = {};
            isTold = false;
            display.forgetPing();
        } else if (place == MainThread::Place::Elsewhere && now - last < kLongestTick && display.hasControl() &&
                   !thread.waitsForDisk()) {
            stalled += thread.wantsToRun() ? runNow - run : now - last;
        }
        last = now;
        run = runNow;
        if (stalled >= limit && !isTold && thread.isAlive()) {
            std::printf("no answer for %lld ms of its own, in system call: %s\n",
                        static_cast<long long>(std::chrono::duration_cast<milliseconds>(stalled).count()),
                        thread.doing().c_str());
            std::fflush(stdout);
            isTold = true;
        }
    }
    return 0;
}
