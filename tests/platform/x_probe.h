#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRect>
#include <QRegion>
#include <QString>

#include <xcb/xcb.h>

#include <functional>

namespace tavrel::test {

/// A test's own view of the X server, independent of the code under test: it looks, draws, opens windows of its own
/// and presses keys. Its connection counts as another client's, though it lives in this process.
class XProbe final
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

    /// Pixels of the root by way of xcb_get_image, alpha 255.
    [[nodiscard]] QImage grab(const QRect &rect) const;
    /// The whole root.
    [[nodiscard]] QImage grab() const;
    /// grab() as soon as the screen has stopped changing: compositors and Qt paint when they find the time.
    [[nodiscard]] QImage settled(const std::function<void()> &work) const;
    [[nodiscard]] QRect rootRect() const;

    /// Fills the root with noise that is told apart pixel by pixel, and publishes it as the desktop's picture.
    void setRootNoise();
    /// Cuts the root into monitors, by name. An empty rectangle removes one.
    void setMonitor(const QByteArray &name, const QRect &rect);
    void warpPointer(const QPoint &position);
    /// Gives the whole screen a pointer of 128 x 128 magenta pixels, hot spot at (120, 64), by way of an input-only
    /// window over everything.
    xcb_window_t showBigCursor();
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
    void sync() const;

    [[nodiscard]] xcb_connection_t *xcb() const { return m_c; }

private:
    xcb_connection_t *m_c;
    xcb_screen_t *m_screen;
};

} // namespace tavrel::test
