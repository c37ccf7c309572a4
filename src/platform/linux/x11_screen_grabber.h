#pragma once

#include "platform/linux/root_children.h"

#include <QImage>
#include <QRegion>
#include <QSet>
#include <QWindow>

#include <memory>

namespace tavrel::platform {

class CaptureExclusions;

/// Takes pictures of rectangles of the root window: the engine below the screen capturer. GUI thread only.
///
/// A plain picture of 3840 x 2160 takes one request into shared memory and one pass over the pixels. When an excluded
/// window meets the rectangle, the parts that it covers are put together on the server from the pixmaps of the
/// windows below and above it, and then fetched the same way.
class X11ScreenGrabber final
{
public:
    X11ScreenGrabber(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions);
    ~X11ScreenGrabber();
    X11ScreenGrabber(const X11ScreenGrabber &) = delete;
    X11ScreenGrabber &operator=(const X11ScreenGrabber &) = delete;

    /// What has to be left out of the pictures of one moment, found for all displays at once.
    struct Hidden
    {
        QSet<quint32> frames;    ///< children of the root
        QRegion region;          ///< what they cover, in pixels of the root
        QList<RootChild> stack;  ///< every window on the screen, bottom to top; empty with nothing hidden
        quint32 rootPixmap = 0;  ///< the desktop's picture, 0 when there is none
        bool composited = false; ///< a compositing manager blends translucent windows; else they show opaque

        [[nodiscard]] bool meets(const QRect &rect) const { return region.intersects(rect); }
    };
    /// Finds the mapped frames of `windows` and of those in the shared set. A few round trips; none when there is
    /// nothing to look for.
    [[nodiscard]] Hidden findHidden(const QSet<WId> &windows) const;

    /// A picture of `rect` (pixels of the root window) in Format_ARGB32_Premultiplied, opaque, ratio 1; null on
    /// failure. `slot` names the kept segment of shared memory, one per display.
    [[nodiscard]] QImage grab(const QString &slot, const QRect &rect, const Hidden &hidden);
    /// Draws the pointer into a picture of `rect`, if it lies within 64 pixels of it on every side.
    void drawCursor(QImage &image, const QRect &rect) const;
    /// Frees what is kept for all displays but these.
    void keepOnly(const QSet<QString> &names);
    /// Gives the memory of the kept segments back until the next picture; they stay attached.
    void dropPages() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrel::platform
