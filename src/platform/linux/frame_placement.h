#pragma once

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>

#include <optional>

namespace tavrel::platform {

/// A window of another application as the X server has it, in pixels of the root.
struct NativeFrame
{
    QRect client;  ///< the window itself, with shadows that the application draws
    QRect outer;   ///< with the window manager's frame
    QRect visible; ///< without shadows; what the window list tells
    QString title;
};

/// A window as its application tells it on the accessibility bus.
struct AccessibleFrame
{
    QRectF onScreen; ///< extents in screen coordinates
    QRectF inWindow; ///< the same in coordinates of the window
    QString name;
    bool showing = true;
};

/// How coordinates of one application's window map to pixels of the root.
///
/// Toolkits mean different things by "screen": some divide by the scale of the display, as a whole or from each
/// display's corner, and some do not know where their window is and answer in its own coordinates. So nothing is
/// taken on trust but the relation to the window's own extents, which are matched with what the X server has.
struct FramePlacement
{
    bool windowCoordinates = false; ///< whether to ask for extents in coordinates of the window
    double scale = 1.0;             ///< pixels per unit
    QPointF origin;                 ///< a point of the tree ...
    QPointF native;                 ///< ... and where it is on the root
    double mismatch = 0.0;          ///< the lower, the likelier both are the same window

    [[nodiscard]] QRect toNative(const QRectF &extents) const;
    /// The centre of a pixel.
    [[nodiscard]] QPointF fromNative(const QPoint &pixel) const;
    /// The placement of a child. There are browsers whose own parts are scaled, while the page, which fills the part
    /// that holds it, and all that is in it are in pixels.
    [[nodiscard]] FramePlacement forChild(const QRectF &parent, const QRectF &child) const;
};

/// Nothing when the two cannot be the same window: the sizes fit at no scale.
[[nodiscard]] std::optional<FramePlacement> placeFrame(const NativeFrame &native, const AccessibleFrame &accessible);

} // namespace tavrel::platform
