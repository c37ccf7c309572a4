#pragma once

#include <QColor>
#include <QImage>
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
    friend bool operator==(const MagnifierLook &, const MagnifierLook &) = default;
};

/// The box of lens and colour panel for a pointer position: to its lower right, flipped where that leaves `overlay`.
[[nodiscard]] QRectF magnifierBox(const QPointF &pointer, const MagnifierLook &look, const QSizeF &overlay);
/// "12, 34, 56" or "#0C2238".
[[nodiscard]] QString colorText(const QColor &color, const QString &format);

/// Paints lens and colour panel, on whole device pixels.
///
/// It is painted at every move of the pointer: all that is the same each time is kept as pictures, and the lens is put
/// together from them pixel by pixel. Drawn anew with a painter it took longer than the rest of a move.
class MagnifierPainter final
{
public:
    /// ratio  device pixels per unit of the painter
    void paint(QPainter &painter, const QRectF &box, double ratio, const OverlayPicture &picture,
               const QPointF &pointer, const MagnifierLook &look);

private:
    void prepare(const MagnifierLook &look, double ratio);
    [[nodiscard]] QImage lensOf(const QImage &cells) const;

    MagnifierLook m_look;
    double m_ratio = 0;
    QImage m_below; ///< the shadow of the lens
    QImage m_disc;  ///< opaque where the lens shows its cells
    QImage m_above; ///< mark in the middle and ring
    QImage m_panel; ///< of the colours, without the colour itself
};

} // namespace tavrel::ui
