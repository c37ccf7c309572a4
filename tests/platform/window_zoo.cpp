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
#include "platform/foreign_x_client.h"

#include <xcb/xcb_icccm.h>

#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

using tavrel::test::ForeignXClient;
using tavrel::test::XReply;

namespace {

using Items = std::vector<std::uint32_t>;

/// Squares of one colour each: red for the first size, green for the second, blue for the third.
Items icons(const std::string &sides)
{
    Items items;
    std::istringstream list(sides);
    std::uint32_t color = 0xffff0000U;
    for (std::string side; std::getline(list, side, ','); color = 0xff000000U | (color & 0xffffffU) >> 8) {
        const auto length = static_cast<std::uint32_t>(std::stoul(side));
        items.insert(items.end(), {length, length});
        items.insert(items.end(), std::size_t(length) * length, color);
    }
    return items;
}

class Zoo final : public ForeignXClient
{
public:
    xcb_window_t openAs(std::istringstream &words)
    {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        words >> x >> y >> width >> height;
        std::map<std::string, std::string> with;
        for (std::string word; words >> word;)
            with[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
        const auto number = [&with](const char *key) { return static_cast<std::uint32_t>(std::stoul(with[key])); };

        const xcb_window_t window =
            open({x, y, width, height}, {.bypassing = with.count("bypass") != 0, .mapped = false});
        setText(window, "WM_CLASS", "STRING", std::string("zoo\0Zoo", 8));
        if (with.count("title"))
            setText(window, "_NET_WM_NAME", "UTF8_STRING", with["title"]);
        if (with.count("old-title"))
            setText(window, "WM_NAME", "STRING", with["old-title"]);
        if (with.count("type"))
            setItems(window, "_NET_WM_WINDOW_TYPE", "ATOM",
                     {atom("_NET_WM_WINDOW_TYPE_" + QByteArray::fromStdString(with["type"]))});
        if (with.count("shadow"))
            setItems(window, "_GTK_FRAME_EXTENTS", "CARDINAL", Items(4, number("shadow")));
        if (with.count("icons"))
            setItems(window, "_NET_WM_ICON", "CARDINAL", icons(with["icons"]));
        if (!with.count("pid") || number("pid") != 0)
            tellProcess(window, with.count("pid") ? number("pid") : static_cast<std::uint32_t>(getpid()));
        if (with.count("iconic")) {
            xcb_icccm_wm_hints_t hints = {};
            xcb_icccm_wm_hints_set_iconic(&hints);
            xcb_icccm_set_wm_hints(m_c, window, &hints);
        }
        if (with.count("map"))
            return window;
        if (!with.count("iconic")) {
            map(window);
            return window;
        }
        xcb_map_window(m_c, window);
        while (property(window, "WM_STATE").isEmpty()) { // it becomes a client without being seen
        }
        return window;
    }

    void churn(int count)
    {
        for (int i = 0; i < count; ++i) {
            const xcb_window_t window = open({50 + i % 40, 60, 300, 200}, {.bypassing = false, .mapped = false});
            tellProcess(window, static_cast<std::uint32_t>(getpid()));
            xcb_map_window(m_c, window);
            sync();
            close(window);
        }
    }

    void forgetEvents()
    {
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(m_c)}) {
        }
    }

private:
    void setItems(xcb_window_t window, const char *name, const char *type, const Items &items)
    {
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, atom(name), atom(type), 32,
                            static_cast<std::uint32_t>(items.size()), items.data());
    }

    void setText(xcb_window_t window, const char *name, const char *type, std::string text)
    {
        for (char &letter : text)
            letter = letter == '_' ? ' ' : letter;
        xcb_change_property(m_c, XCB_PROP_MODE_REPLACE, window, atom(name), atom(type), 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }

    void tellProcess(xcb_window_t window, std::uint32_t process)
    {
        setItems(window, "_NET_WM_PID", "CARDINAL", {process});
    }
};

} // namespace

int main()
{
    Zoo zoo;
    for (std::string line; std::getline(std::cin, line); zoo.forgetEvents()) {
        std::istringstream words(line);
        std::string verb;
        words >> verb;
        if (verb == "open") {
            std::cout << zoo.openAs(words) << std::endl;
            continue;
        }
        unsigned number = 0;
        unsigned modifiers = 0;
        words >> number >> modifiers;
        const auto key = static_cast<xcb_keycode_t>(number);
        bool good = true;
        if (verb == "close")
            zoo.close(number);
        else if (verb == "grab")
            good = zoo.grabKey(ForeignXClient::GrabKind::Core, key, modifiers);
        else if (verb == "ungrab")
            zoo.ungrabKey(ForeignXClient::GrabKind::Core, key, modifiers);
        else if (verb == "churn")
            zoo.churn(static_cast<int>(number));
        std::cout << (good ? "ok" : "taken") << std::endl;
    }
    return 0;
}
