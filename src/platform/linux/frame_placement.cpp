#include "platform/linux/frame_placement.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::platform {

namespace {

constexpr double kSmallestScale = 0.25;
constexpr double kLargestScale = 5.0;
constexpr double kNear = 2.0; // pixels of rounding
constexpr double kFar = 1e6;  // far outside any root, and far from overflow

double distance(const QPointF &a, const QPointF &b)
{
    return std::max(std::abs(a.x() - b.x()), std::abs(a.y() - b.y()));
}

/// Pixels per unit; nothing when the shapes differ.
std::optional<double> scaleBetween(const QSizeF &units, const QSize &pixels)
{
    const auto fits = [&](double scale) {
        return std::abs(pixels.width() - units.width() * scale) <= kNear + scale - 1.0 &&
               std::abs(pixels.height() - units.height() * scale) <= kNear + scale - 1.0;
    };
    // An eighth is finer than any scale that desktops offer.
    const double measured = pixels.width() / units.width();
    for (const double scale : {1.0, std::round(measured * 8.0) / 8.0, measured}) {
        if (scale >= kSmallestScale && scale <= kLargestScale && fits(scale))
            return scale;
    }
    return std::nullopt;
}

} // namespace

QRect FramePlacement::toNative(const QRectF &extents) const
{
    const auto edge = [this](double value, double from, double to) {
        return static_cast<int>(std::lround(std::clamp(to + (value - from) * scale, -kFar, kFar)));
    };
    const QPoint topLeft(edge(extents.left(), origin.x(), native.x()), edge(extents.top(), origin.y(), native.y()));
    return {topLeft, QSize(edge(extents.right(), origin.x(), native.x()) - topLeft.x(),
                           edge(extents.bottom(), origin.y(), native.y()) - topLeft.y())};
}

QPointF FramePlacement::fromNative(const QPoint &pixel) const
{
    return origin + (QPointF(pixel) + QPointF(0.5, 0.5) - native) / scale;
}

std::optional<FramePlacement> placeFrame(const NativeFrame &native, const AccessibleFrame &accessible)
{
    if (accessible.onScreen.width() < 1 || accessible.onScreen.height() < 1)
        return std::nullopt;
    std::optional<FramePlacement> best;
    for (const QRect &rect : std::array{native.client, native.outer, native.visible}) {
        const auto scale = scaleBetween(accessible.onScreen.size(), rect.size());
        if (!scale)
            continue;
        const QPointF corner = rect.topLeft();
        const double apart = std::min(distance(accessible.onScreen.topLeft(), corner),
                                      distance(accessible.onScreen.topLeft() * *scale, corner));
        const bool moved = distance(accessible.onScreen.topLeft(), accessible.inWindow.topLeft()) > 0.5;
        FramePlacement placement;
        placement.scale = *scale;
        placement.windowCoordinates = apart > kNear && !moved;
        placement.origin = placement.windowCoordinates ? accessible.inWindow.topLeft() : accessible.onScreen.topLeft();
        placement.native = corner;
        // Windows of one application often have one size. The place tells them apart, where it is known, else the
        // title.
        const double otherTitle = apart <= kNear ? 5.0 : 50.0;
        placement.mismatch = std::min(apart, 2000.0) / 20.0 + 20.0 * std::abs(std::log2(*scale)) +
                             (accessible.name == native.title ? 0.0 : otherTitle) + (accessible.showing ? 0.0 : 200.0);
        if (!best || placement.mismatch < best->mismatch)
            best = placement;
    }
    return best;
}

} // namespace tavrel::platform
