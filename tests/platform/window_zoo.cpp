// A program with windows, as tests need another process to have. Reads commands from standard input, one per line,
// and answers each with one line:
//
//   open X Y W H [KEY=VALUE]...   the new window's id, once it is on the screen
//       title=TEXT (underscores stand for spaces)  old-title=TEXT  type=DOCK|TOOLTIP|...  shadow=PIXELS
//       bypass=1  iconic=1  icons=SIDE,SIDE,...  pid=NUMBER (0: no such property)  map=0
//   close ID                      ok
//   grab KEYCODE MODIFIERS        reserves a key on the root; ok or taken
//   ungrab KEYCODE MODIFIERS      ok
//   churn COUNT                   opens and closes that many windows as fast as it can; ok when done
#include <xcb/xcb.h>
#include <xcb/xcb_icccm.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

xcb_connection_t *c = nullptr;
xcb_screen_t *screen = nullptr;

xcb_atom_t atom(const std::string &name)
{
    const Reply<xcb_intern_atom_reply_t> reply{
        xcb_intern_atom_reply(c, xcb_intern_atom(c, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr)};
    return reply ? reply->atom : xcb_atom_t(0);
}

void syncServer()
{
    const Reply<xcb_get_input_focus_reply_t> reply{xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr)};
}

void setItems(xcb_window_t window, const std::string &name, const char *type, const std::vector<std::uint32_t> &items)
{
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, atom(name), atom(type), 32,
                        static_cast<std::uint32_t>(items.size()), items.data());
}

void setText(xcb_window_t window, const std::string &name, const char *type, std::string text)
{
    for (char &letter : text)
        letter = letter == '_' ? ' ' : letter;
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, atom(name), atom(type), 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

/// Squares of one colour each: red for the first size, green for the second, blue for the third.
std::vector<std::uint32_t> icons(const std::string &sides)
{
    std::vector<std::uint32_t> items;
    std::istringstream list(sides);
    std::uint32_t color = 0xffff0000U;
    for (std::string side; std::getline(list, side, ','); color = 0xff000000U | (color & 0xffffffU) >> 8) {
        const auto length = static_cast<std::uint32_t>(std::stoul(side));
        items.insert(items.end(), {length, length});
        items.insert(items.end(), std::size_t(length) * length, color);
    }
    return items;
}

bool isViewable(xcb_window_t window)
{
    const Reply<xcb_get_window_attributes_reply_t> attributes{
        xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr)};
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

xcb_window_t create(int x, int y, int width, int height, bool bypass)
{
    const xcb_window_t window = xcb_generate_id(c);
    const std::uint32_t values[] = {0x80a0c0, bypass, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, static_cast<std::int16_t>(x),
                      static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    return window;
}

xcb_window_t open(std::istringstream &words)
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    words >> x >> y >> width >> height;
    std::map<std::string, std::string> with;
    for (std::string word; words >> word;)
        with[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);

    const xcb_window_t window = create(x, y, width, height, with.count("bypass") != 0);
    setText(window, "WM_CLASS", "STRING", std::string("zoo\0Zoo", 8));
    if (with.count("title"))
        setText(window, "_NET_WM_NAME", "UTF8_STRING", with["title"]);
    if (with.count("old-title"))
        setText(window, "WM_NAME", "STRING", with["old-title"]);
    if (with.count("type"))
        setItems(window, "_NET_WM_WINDOW_TYPE", "ATOM", {atom("_NET_WM_WINDOW_TYPE_" + with["type"])});
    if (with.count("shadow")) {
        const auto shadow = static_cast<std::uint32_t>(std::stoul(with["shadow"]));
        setItems(window, "_GTK_FRAME_EXTENTS", "CARDINAL", {shadow, shadow, shadow, shadow});
    }
    if (with.count("icons"))
        setItems(window, "_NET_WM_ICON", "CARDINAL", icons(with["icons"]));
    const std::uint32_t pid =
        with.count("pid") ? static_cast<std::uint32_t>(std::stoul(with["pid"])) : static_cast<std::uint32_t>(getpid());
    if (pid != 0)
        setItems(window, "_NET_WM_PID", "CARDINAL", {pid});
    xcb_size_hints_t size = {};
    xcb_icccm_size_hints_set_position(&size, 1, x, y);
    xcb_icccm_set_wm_normal_hints(c, window, &size);
    if (with.count("iconic")) {
        xcb_icccm_wm_hints_t hints = {};
        xcb_icccm_wm_hints_set_iconic(&hints);
        xcb_icccm_set_wm_hints(c, window, &hints);
    }
    if (with.count("map"))
        return window;
    xcb_map_window(c, window);
    // A window manager frames it in its own time; an iconic window becomes a client without being seen.
    const xcb_atom_t state = atom("WM_STATE");
    for (;;) {
        const Reply<xcb_get_property_reply_t> managed{
            xcb_get_property_reply(c, xcb_get_property(c, 0, window, state, XCB_ATOM_ANY, 0, 2), nullptr)};
        if (with.count("iconic") ? managed && managed->value_len > 0 : isViewable(window))
            return window;
    }
}

bool grab(xcb_keycode_t key, std::uint16_t modifiers, bool take)
{
    const xcb_void_cookie_t sent =
        take ? xcb_grab_key_checked(c, 0, screen->root, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)
             : xcb_ungrab_key_checked(c, key, screen->root, modifiers);
    const Reply<xcb_generic_error_t> error{xcb_request_check(c, sent)};
    return !error;
}

void churn(int count)
{
    for (int i = 0; i < count; ++i) {
        const xcb_window_t window = create(50 + i % 40, 60, 300, 200, false);
        setItems(window, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(getpid())});
        xcb_map_window(c, window);
        syncServer();
        xcb_destroy_window(c, window);
        syncServer();
    }
}

} // namespace

int main()
{
    c = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(c))
        return 1;
    screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb;
        words >> verb;
        if (verb == "open") {
            std::cout << open(words) << std::endl;
        } else if (verb == "close") {
            xcb_window_t window = 0;
            words >> window;
            xcb_destroy_window(c, window);
            syncServer();
            std::cout << "ok" << std::endl;
        } else if (verb == "grab" || verb == "ungrab") {
            unsigned key = 0;
            unsigned modifiers = 0;
            words >> key >> modifiers;
            std::cout << (grab(static_cast<xcb_keycode_t>(key), static_cast<std::uint16_t>(modifiers), verb == "grab")
                              ? "ok"
                              : "taken")
                      << std::endl;
        } else if (verb == "churn") {
            int count = 0;
            words >> count;
            churn(count);
            std::cout << "ok" << std::endl;
        }
        while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(c)}) {
        }
    }
    xcb_disconnect(c);
    return 0;
}
