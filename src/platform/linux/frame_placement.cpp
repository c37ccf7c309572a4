#include "platform/linux/frame_placement.h"

#include <algorithm>
#include <cmath>
#include <vector>

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

struct Match
{
    QPointF corner; ///< of the extents, on the root
    double scale = 1.0;
};

/// Some windows draw a border of equal width all around and leave it out of their extents.
std::vector<Match> withinBorder(const QRect &rect, const QSizeF &units)
{
    constexpr double kBroadest = 32.0; // units
    std::vector<Match> matches;
    for (const double scale : {1.0, 2.0, 3.0}) {
        const double broad = (rect.width() - units.width() * scale) / 2.0;
        const double high = (rect.height() - units.height() * scale) / 2.0;
        if (broad >= 0 && broad <= kBroadest * scale && std::abs(broad - high) <= 1.0)
            matches.push_back({QPointF(rect.topLeft()) + QPointF(broad, high), scale});
    }
    return matches;
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

FramePlacement FramePlacement::forChild(const QRectF &parent, const QRectF &child) const
{
    const bool scaled = std::abs(scale - 1.0) > 0.05 && !windowCoordinates;
    if (!scaled || child.isEmpty())
        return *this;
    const QRectF pixels(toNative(parent));
    if (distance(pixels.topLeft(), child.topLeft()) > kNear ||
        distance(pixels.bottomRight(), child.bottomRight()) > kNear)
        return *this;
    FramePlacement inPixels = *this;
    inPixels.scale = 1.0;
    inPixels.origin = inPixels.native = QPointF();
    return inPixels;
}

std::optional<FramePlacement> placeFrame(const NativeFrame &native, const AccessibleFrame &accessible)
{
    const QRectF &extents = accessible.onScreen;
    if (extents.width() < 1 || extents.height() < 1)
        return std::nullopt;
    const bool knowsPlace = distance(extents.topLeft(), accessible.inWindow.topLeft()) > 0.5;
    std::vector<Match> matches;
    for (const QRect &rect : {native.client, native.outer, native.visible}) {
        if (const auto scale = scaleBetween(extents.size(), rect.size()))
            matches.push_back({QPointF(rect.topLeft()), *scale});
    }
    if (!knowsPlace && matches.empty())
        matches = withinBorder(native.visible, extents.size());

    std::optional<FramePlacement> best;
    for (const Match &match : matches) {
        const double apart = std::min(distance(extents.topLeft(), match.corner),
                                      distance(extents.topLeft() * match.scale, match.corner));
        FramePlacement placement;
        placement.scale = match.scale;
        placement.windowCoordinates = apart > kNear && !knowsPlace;
        placement.origin = placement.windowCoordinates ? accessible.inWindow.topLeft() : extents.topLeft();
        placement.native = match.corner;
        // Windows of one application often have one size. The place tells them apart, where it is known, else the
        // title.
        const double otherTitle = apart <= kNear ? 5.0 : 50.0;
        placement.mismatch = std::min(apart, 2000.0) / 20.0 + 20.0 * std::abs(std::log2(match.scale)) +
                             (accessible.name == native.title ? 0.0 : otherTitle) + (accessible.showing ? 0.0 : 200.0);
        if (!best || placement.mismatch < best->mismatch)
            best = placement;
    }
    return best;
}

} // namespace tavrel::platform
