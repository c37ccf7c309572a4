#pragma once

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

class QPainter;

namespace tavrel::ui {

class OverlayPicture;

/// The lens beside the pointer with the colour under it.
struct MagnifierLook
{
    bool lens = true;
    bool colors = true;
    QString colorFormat; ///< hex or rgb

    [[nodiscard]] bool isShown() const { return lens || colors; }
};

/// The box of lens and colour panel for a pointer position: to its lower right, flipped where that leaves `overlay`.
[[nodiscard]] QRectF magnifierBox(const QPointF &pointer, const MagnifierLook &look, const QSizeF &overlay);
/// "12, 34, 56" or "#0C2238".
[[nodiscard]] QString colorText(const QColor &color, const QString &format);

void paintMagnifier(QPainter &painter, const QRectF &box, const OverlayPicture &picture, const QPointF &pointer,
                    const MagnifierLook &look);

} // namespace tavrel::ui
