#pragma once

#include <QBrush>
#include <QHash>
#include <QList>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QRect>
#include <QRectF>

#include <array>
#include <memory>

namespace tavrel {

struct ShapeRenderContext;

/// The smooth path through the points of a freehand stroke: a quadratic curve to the middle of every segment, with the
/// point before it as control, and a line to the last point. Empty for fewer than two points.
[[nodiscard]] QPainterPath smoothPath(const QList<QPointF> &points);

/// The coverage of one freehand stroke in device pixels, kept from paint to paint.
///
/// Stroking a path of thousands of points costs tens of milliseconds. Here every 32 pieces of the curve are drawn once
/// into a sparse mask of 64 by 64 tiles, always the same 32, so that the number of paints in between never shows.
/// Where one lot crosses an earlier one it lies over it; where they are joined the larger coverage stands, or every
/// joint would show as a knot. A growing stroke costs the pieces since the last full 32, a repaint the tiles that
/// are exposed. A moved stroke keeps its mask as long as it moves by whole pixels.
///
/// Painters that are turned or sheared, strokes wider than 256 pixels and strokes of absurd extent are drawn directly.
class StrokeLayer final
{
public:
    /// points   only ever grow or move together between two calls, else clear() is due
    /// width    logical, of the round pen
    /// brush    a colour, or a texture in the coordinates of the points
    /// context  says what has to be painted
    void paint(QPainter &painter, const QList<QPointF> &points, double width, const QBrush &brush,
               const ShapeRenderContext &context);
    void clear();

private:
    static constexpr int kSide = 64;
    struct Tile
    {
        std::array<uchar, static_cast<std::size_t>(kSide *kSide)> coverage{};
    };
    class TilePainter;
    using Tiles = QHash<QPoint, std::shared_ptr<Tile>>;
    struct Look
    {
        double scale = 0; ///< device pixels per unit
        double width = 0; ///< device pixels
        QPointF fraction; ///< where in its pixel the first point lies
        bool operator==(const Look &) const = default;
    };

    /// A quadratic curve in device pixels from the layer's origin; a line has its control point in the middle.
    struct Piece
    {
        QPointF from;
        QPointF control;
        QPointF to;
    };
    [[nodiscard]] Piece piece(const QList<QPointF> &points, qsizetype index) const;
    void settle(const QList<QPointF> &points);
    void draw(Tiles &tiles, const QList<Piece> &pieces) const;
    /// area   where `drawn` lies on the layer
    /// joint  the point in which this lot goes on from the one before
    void merge(Tiles &tiles, const QImage &drawn, const QRect &area, const QPointF &joint) const;
    /// Copies of the tiles that pieces may touch.
    [[nodiscard]] Tiles tilesUnder(const QList<Piece> &pieces) const;
    /// The row or column of tiles at a pixel.
    [[nodiscard]] static int tileOf(int at);

    Look m_look;
    Tiles m_tiles;
    qsizetype m_settled = 0; ///< pieces that stand in the tiles
};

} // namespace tavrel
