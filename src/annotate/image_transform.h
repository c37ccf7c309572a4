#pragma once

#include <QPointF>
#include <QRectF>

namespace tavrel {

/// A quarter turn or a mirroring of the picture below the shapes.
struct ImageTransform
{
    enum class Kind { RotateCw, RotateCcw, FlipHorizontal };

    Kind kind = Kind::RotateCw;
    /// RotateCw: height of the picture before the turn. RotateCcw and FlipHorizontal: its width.
    double extent = 0;

    [[nodiscard]] QPointF map(const QPointF &point) const;
    /// Maps two opposite corners; normalised.
    [[nodiscard]] QRectF mapBox(const QRectF &box) const;
    /// Whether width and height of what lies in the picture change places.
    [[nodiscard]] bool swapsAxes() const { return kind != Kind::FlipHorizontal; }
};

} // namespace tavrel
