#pragma once

#include <QImage>
#include <QRectF>

class QPainter;

namespace tavrel::ui {

/// The program's mark: a rounded tile with a selection frame whose last corner is a sheet being turned over.
void paintAppMark(QPainter &painter, const QRectF &rect);

/// The mark on a transparent square of `size` pixels; a null image for a size below 1.
[[nodiscard]] QImage renderAppIcon(int size);

} // namespace tavrel::ui
