#pragma once

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QRegion>
#include <QSet>
#include <QWindow>

#include <memory>

namespace tavrel::platform {

class CaptureExclusions;
class XConnection;

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

    /// The frames of windows to leave out, found for all displays at once: children of the root.
    struct Hidden
    {
        QSet<quint32> frames;
        QRegion region; ///< what they cover, in pixels of the root
    };
    /// Finds the mapped frames of `windows` and of those in the shared set. One to four round trips; none when there
    /// is nothing to look for.
    [[nodiscard]] Hidden findHidden(const QSet<WId> &windows) const;
    /// False when looking behind `hidden` may show holes yet: ask again after kRepaintMs.
    [[nodiscard]] bool prepare(const Hidden &hidden, const QRect &rect);

    /// A picture of `rect` (pixels of the root window) in Format_ARGB32_Premultiplied, opaque, ratio 1; null on
    /// failure. `slot` names the kept segment of shared memory, one per display.
    [[nodiscard]] QImage grab(const QString &slot, const QRect &rect, const Hidden &hidden);
    /// Draws the pointer into a picture of `rect`, if it lies within 64 pixels of it on every side.
    void drawCursor(QImage &image, const QRect &rect) const;
    /// Frees the segments of all displays but these.
    void keepOnly(const QSet<QString> &slots);

    /// What clients get for repainting parts that had been covered, in milliseconds.
    static constexpr int kRepaintMs = 80;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrel::platform
