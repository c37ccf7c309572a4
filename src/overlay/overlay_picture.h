#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>

class QPainter;

namespace tavrel::ui {

/// The frozen picture of an overlay and its darker twin, made once per picture.
///
/// On a widget of the same ratio both are drawn without resampling, from views of ratio 1 on the same pixels. The
/// darker twin is on the way from hotkey to overlay: 8.3 million pixels take a few milliseconds (bench_overlay_paint).
class OverlayPicture final
{
public:
    OverlayPicture() = default;
    /// image   any format; its device pixel ratio says how large it is
    /// origin  of the picture in overlay coordinates, a whole number of device pixels
    explicit OverlayPicture(const QImage &image, const QPointF &origin = {});

    [[nodiscard]] const QImage &image() const { return m_image; }
    [[nodiscard]] const QPointF &origin() const { return m_origin; }
    [[nodiscard]] double ratio() const { return m_ratio; }
    [[nodiscard]] QSizeF logicalSize() const { return QSizeF(m_image.size()) / m_ratio; }
    /// Overlay coordinates.
    [[nodiscard]] QRectF area() const { return {m_origin, logicalSize()}; }

    /// Draws the darker picture. deviceRatio is that of the painted surface.
    void paintDimmed(QPainter &painter, double deviceRatio) const;
    /// Draws the picture itself in a rectangle of overlay coordinates, with every device pixel that it touches.
    void paintClear(QPainter &painter, const QRectF &rect, double deviceRatio) const;
    /// The pixel under a point of overlay coordinates; opaque black outside the picture.
    [[nodiscard]] QColor colorAt(const QPointF &point) const;
    [[nodiscard]] bool hasPixelAt(const QPointF &point) const { return m_image.rect().contains(pixelAt(point)); }
    [[nodiscard]] QPoint pixelAt(const QPointF &point) const;

private:
    [[nodiscard]] bool paintsFast(double deviceRatio) const;

    QImage m_image;
    QImage m_dimmed;
    QImage m_nativeImage;  ///< the same pixels at ratio 1
    QImage m_nativeDimmed; ///< the same pixels at ratio 1
    QPointF m_origin;
    double m_ratio = 1.0;
};

/// The picture under half-transparent black (alpha 128), in Format_ARGB32_Premultiplied with the same ratio.
[[nodiscard]] QImage dimmedImage(const QImage &image);

} // namespace tavrel::ui
