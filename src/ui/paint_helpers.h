#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace tavrel::ui {

class Theme;

/// A soft shadow of a rounded rectangle: twelve layers that shrink from `spread / 2` around `rect` to nearly nothing,
/// moved down by `offsetY`. Lengths in the painter's units. Paints nothing at a spread of 0 or less or a transparent
/// colour. The painter is left as it was.
void softShadow(QPainter &painter, const QRectF &rect, qreal radius, qreal spread, qreal offsetY, const QColor &color);

/// The surface of cards and menus: rounded with radius 12, with a hairline of half a unit.
void panelSurface(QPainter &painter, const QRectF &rect, const Theme &theme);

/// An outline that stays visible around a patch of `color`, as "#rrggbb": very dark colours are lightened, all others
/// darkened.
[[nodiscard]] QString swatchEdgeColor(const QColor &color);

} // namespace tavrel::ui
