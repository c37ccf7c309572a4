#pragma once

#include <QPointF>
#include <QRectF>

#include <optional>
#include <vector>

namespace tavrel::platform {

/// Where the pointer was during a row of raw motions.
///
/// Raw motion events tell what a device has sent, not where the pointer is: steps for a mouse, places for injected
/// jumps, in one and the same form. The place after the last one is asked of the server; which of the two forms leads
/// there is what the events meant. Of a tablet or of the pointer of a virtual machine it is known beforehand. When
/// neither does, because the pointer was stopped at an edge, by a barrier or by a program that moves it itself, steps
/// are followed as far as the bounds allow and the rest is spread evenly.
class MotionResolver final
{
public:
    /// The axes that a motion has a value for, in device pixels.
    struct Motion
    {
        std::optional<double> x;
        std::optional<double> y;
        bool isPlace = false; ///< certainly; else a step or a place
    };

    /// bounds  of the root window, in device pixels
    explicit MotionResolver(const QRectF &bounds) : m_bounds(bounds) {}

    /// returns  the place after each motion; the last one is `end`
    [[nodiscard]] std::vector<QPointF> resolve(const QPointF &begin, const std::vector<Motion> &motions,
                                               const QPointF &end) const;

private:
    [[nodiscard]] std::vector<QPointF> follow(const QPointF &begin, const std::vector<Motion> &motions,
                                              bool placesOnly) const;

    QRectF m_bounds;
};

} // namespace tavrel::platform
