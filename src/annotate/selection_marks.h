#pragma once

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QRectF>

namespace tavrel {

/// Marks that show what is selected or hovered. Lengths are multiplied by the handle scale; painters are left as found.

inline constexpr QRgb kGlowColor = 0xff4dadff;
inline constexpr QRgb kOutlineColor = 0xff007dff;

/// White disc of radius 6 over three black rings.
void paintRoundHandle(QPainter &painter, const QPointF &center, double handleScale);

/// An L at each corner of a box. armLength and width in painter units; shadow rings as for a round handle.
void paintCornerBrackets(QPainter &painter, const QRectF &box, double armLength, double width, double handleScale);
/// As above with the usual arm: 12 times the handle scale, at most 0.4 of the shorter side.
void paintCornerBrackets(QPainter &painter, const QRectF &box, double handleScale);
/// A tick along the middle of each side.
void paintEdgeTicks(QPainter &painter, const QRectF &box, double length, double width, double handleScale);

/// Soft rounded frame around a hovered shape.
void paintRoundedGlow(QPainter &painter, const QRectF &box, double handleScale);
/// The same along an ellipse.
void paintEllipseGlow(QPainter &painter, const QRectF &box, double handleScale);
/// Accent line over a darker, wider one.
void paintRectOutline(QPainter &painter, const QRectF &box, double handleScale);

} // namespace tavrel
