#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRect>
#include <QRegion>
#include <QString>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace tavrel::test {

struct XFree
{
    void operator()(void *memory) const noexcept { std::free(memory); }
};
/// What the server has answered.
template <typename T>
using XReply = std::unique_ptr<T, XFree>;
/// Asks the server and waits for its answer: TAVREL_X_ASK(connection, get_geometry, window).
#define TAVREL_X_ASK(connection, request, ...)                                                                         \
    tavrel::test::XReply<xcb_##request##_reply_t>                                                                      \
    {                                                                                                                  \
        xcb_##request##_reply(connection, xcb_##request(connection __VA_OPT__(, ) __VA_ARGS__), nullptr)               \
    }

/// The monitors LEFT and RIGHT of TAVREL_TWO_MONITORS_MAIN; the size of the second is odd, so that no scale factor
/// divides it.
constexpr QRect kLeft(0, 0, 1000, 1080);
constexpr QRect kRight(1000, 100, 919, 901);

/// A test's own view of the X server, independent of the code under test: it looks, draws, opens windows of its own
/// and presses keys. Its connection counts as another client's, though it lives in this process.
class XProbe
{
public:
    XProbe();
    ~XProbe();
    XProbe(const XProbe &) = delete;
    XProbe &operator=(const XProbe &) = delete;

    struct Look
    {
        QColor color = Qt::red; ///< alpha below 255 only with `argb`
        bool bypassing = true;  ///< override-redirect
        bool argb = false;      ///< a 32-bit window
        bool patterned = false; ///< the client draws noise once, after it is mapped, and never again
        bool mapped = true;
        int border = 0;
        QRegion shape = {}; ///< bounding shape, empty for none
    };
    /// Opens a window and waits until it is viewable.
    xcb_window_t open(const QRect &rect, const Look &look);
    void map(xcb_window_t window);
    void raise(xcb_window_t window);
    void close(xcb_window_t window);
    /// Draws noise over a window, as its client.
    void paintNoise(xcb_window_t window, quint32 seed);

    /// The root by way of xcb_get_image, alpha 255.
    [[nodiscard]] QImage grab() const;
    /// grab() as soon as the screen has stopped changing: compositors and Qt paint when they find the time.
    [[nodiscard]] QImage settled() const;
    [[nodiscard]] QRect rootRect() const;

    /// Fills the root with noise that is told apart pixel by pixel, and publishes it as the desktop's picture.
    void setRootNoise();
    /// Cuts the root into monitors, by name. An empty rectangle removes one.
    void setMonitor(const QByteArray &name, const QRect &rect);
    void warpPointer(const QPoint &position);
    /// Gives the whole screen a pointer of 128 x 128 magenta pixels, hot spot at (120, 64), by way of an input-only
    /// window over everything.
    xcb_window_t showBigCursor();
    /// The key code that makes a symbol; 0 when there is none.
    [[nodiscard]] xcb_keycode_t keyCode(xcb_keysym_t symbol) const;
    void pressKey(xcb_keysym_t key);
    void click(const QPoint &position);

    [[nodiscard]] bool isViewable(xcb_window_t window) const;
    /// Outer rectangle in pixels of the root.
    [[nodiscard]] QRect geometry(xcb_window_t window) const;
    [[nodiscard]] xcb_window_t focus() const;
    void setFocus(xcb_window_t window);
    /// The child of the root that a window lies in.
    [[nodiscard]] xcb_window_t frameOf(xcb_window_t window) const;
    /// The root's child that is seen at a point: viewable, not input-only, and not a compositor's own canvas.
    [[nodiscard]] xcb_window_t topMostAt(const QPoint &point) const;
    /// Position among the root's children, bottom to top.
    [[nodiscard]] int stackPosition(xcb_window_t window) const;
    [[nodiscard]] QList<quint32> property(xcb_window_t window, const QByteArray &name) const;
    [[nodiscard]] xcb_atom_t atom(const QByteArray &name) const;
    /// Whether there is a window manager.
    [[nodiscard]] bool isManaged() const { return !property(0, "_NET_SUPPORTING_WM_CHECK").isEmpty(); }
    void sync() const;

    [[nodiscard]] xcb_connection_t *xcb() const { return m_c; }

protected:
    xcb_connection_t *m_c;
    xcb_screen_t *m_screen;
};

} // namespace tavrel::test

/// main() of a test on a screen that is cut into two monitors before Qt looks: those that come later reach it by
/// events, which is another thing to test.
#define TAVREL_TWO_MONITORS_MAIN(Application, TestClass)                                                               \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        {                                                                                                              \
            tavrel::test::XProbe probe;                                                                                \
            probe.setMonitor("LEFT", tavrel::test::kLeft);                                                             \
            probe.setMonitor("RIGHT", tavrel::test::kRight);                                                           \
        }                                                                                                              \
        const tavrel::test::IsolatedHome home;                                                                         \
        Application app(argc, argv);                                                                                   \
        Application::setQuitOnLastWindowClosed(false);                                                                 \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
