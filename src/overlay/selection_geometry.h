#pragma once

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>

namespace tavrel::ui {

/// Handles: 0 top left, 1 top, 2 top right, 3 left, 4 right, 5 bottom left, 6 bottom, 7 bottom right.
inline constexpr int kNoHit = -1;
inline constexpr int kInsideHit = 8;

/// What a point meets when no tool is active: a handle within 16 units, else the inside.
[[nodiscard]] int hitBroad(const QRectF &selection, const QPointF &point);
/// What a point meets while a tool is active: corners first, then the edges, narrow enough to draw close to them.
/// Never kInsideHit.
[[nodiscard]] int hitNarrow(const QRectF &selection, const QPointF &point);

/// The pointer over a hit.
[[nodiscard]] Qt::CursorShape cursorOfHit(int hit);

/// The selection after dragging one of its handles, cut to `area`. Dragging over the opposite edge flips it.
[[nodiscard]] QRectF resizedSelection(const QRectF &pressed, int handle, const QPointF &delta, const QRectF &area);
/// The selection after dragging it as a whole: it keeps its size and stays within `area`.
[[nodiscard]] QRectF movedSelection(const QRectF &pressed, const QPointF &delta, const QRectF &area);
/// The rubber band between two points, both clamped to `area`.
[[nodiscard]] QRectF bandSelection(const QPointF &from, const QPointF &to, const QRectF &area);

/// The pixels that a selection touches in a picture, cut to it: rounded outwards, unlike those of the result, so that
/// no dimmed fringe is left along its edges.
///
/// selection  logical units from the picture's top-left
/// ratio      device pixels per unit, above 0
[[nodiscard]] QRect coveredPixels(const QRectF &selection, double ratio, const QSize &pixels);

/// Where a picture of another size than the overlay lies: centred, on a whole device pixel.
[[nodiscard]] QPointF centredOrigin(const QSizeF &picture, const QSizeF &overlay, double ratio);

} // namespace tavrel::ui
