#pragma once

#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QString>

class QPainter;

namespace tavrel::ui {

/// White brackets at the corners and a tick at the middle of each side.
void paintSelectionMarks(QPainter &painter, const QRectF &selection, double handleScale);

/// "640 × 480"
[[nodiscard]] QString sizeLabelText(const QSize &pixels);
/// Above the selection, or in its upper left corner where no room is above it; never beyond the overlay's sides.
[[nodiscard]] QRectF sizeLabelBox(const QRectF &selection, const QString &text, double overlayWidth);
void paintSizeLabel(QPainter &painter, const QRectF &box, const QString &text);

} // namespace tavrel::ui
