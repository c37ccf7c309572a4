#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace tavrel::ui {

class Theme;

/// What colour choosers paint alike. Every function leaves the painter as it was.

/// Squares of `cell` behind a colour that lets through, on a rounded rectangle of radius 12 or half its height.
void paintChessboard(QPainter &painter, const QRectF &rect, qreal cell, bool dark);

/// A translucent line that shows the edge of a patch of `color` on any ground.
[[nodiscard]] QColor chipBorder(const QColor &color);
/// A round patch with its border.
void paintChip(QPainter &painter, const QRectF &circle, const QColor &color);
/// The ring of the chosen chip, 2 inside of `rect`.
void paintSelectionRing(QPainter &painter, const QRectF &rect);

/// A round handle: `color` in a thick white ring with a soft edge.
void paintHandle(QPainter &painter, const QPointF &centre, qreal radius, const QColor &color);
/// Shows where the keyboard is: a line of the accent just inside of `rect`.
void paintFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const Theme &theme);

} // namespace tavrel::ui
