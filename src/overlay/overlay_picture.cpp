#include "overlay/overlay_picture.h"

#include "base/parallel.h"
#include "overlay/selection_geometry.h"

#include <QColor>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace tavrel::ui {
namespace {

/// Below this a second thread costs more than it brings.
constexpr qsizetype kPixelsPerBand = 1 << 20;

/// One pixel under black at alpha 128: each channel times 127 / 255, the alpha towards opaque. Two channels at a time,
/// in a form that compilers turn into vector instructions.
inline quint32 dimmed(quint32 pixel)
{
    constexpr quint32 mask = 0x00ff00ff;
    quint32 redBlue = (pixel & mask) * 127;
    quint32 alphaGreen = ((pixel >> 8) & mask) * 127;
    redBlue = ((redBlue + ((redBlue >> 8) & mask) + 0x00800080) >> 8) & mask;
    alphaGreen = ((alphaGreen + ((alphaGreen >> 8) & mask) + 0x00800080) >> 8) & mask;
    return (redBlue | (alphaGreen << 8)) + 0x80000000U;
}

struct Band
{
    const quint32 *from;
    quint32 *to;
    qsizetype count;
};

void dimBand(const Band &band)
{
    for (qsizetype i = 0; i < band.count; ++i)
        band.to[i] = dimmed(band.from[i]);
}

QImage asPremultiplied(const QImage &image)
{
    return image.format() == QImage::Format_ARGB32_Premultiplied
               ? image
               : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

/// A view on the same pixels with ratio 1; `image` must outlive it.
QImage nativeView(const QImage &image)
{
    return {image.constBits(), image.width(), image.height(), image.bytesPerLine(), image.format()};
}

} // namespace

QImage dimmedImage(const QImage &image)
{
    const QImage source = asPremultiplied(image);
    QImage result(source.size(), QImage::Format_ARGB32_Premultiplied);
    if (result.isNull())
        return result;
    result.setDevicePixelRatio(source.devicePixelRatio());
    // Rows of 32-bit pixels have no padding, so both images are one run each.
    const auto *from = reinterpret_cast<const quint32 *>(source.constBits());
    auto *to = reinterpret_cast<quint32 *>(result.bits());
    const qsizetype pixels = qsizetype(source.width()) * source.height();
    QList<Band> bands;
    for (qsizetype start = 0; start < pixels; start += kPixelsPerBand)
        bands.append({from + start, to + start, std::min(kPixelsPerBand, pixels - start)});
    inParallel(static_cast<int>(bands.size()), [&bands](int i) { dimBand(bands[i]); });
    return result;
}

OverlayPicture::OverlayPicture(const QImage &image, const QPointF &origin)
    : m_image(asPremultiplied(image)),
      m_dimmed(dimmedImage(m_image)),
      m_nativeImage(nativeView(m_image)),
      m_nativeDimmed(nativeView(m_dimmed)),
      m_origin(origin),
      m_ratio(image.isNull() ? 1.0 : image.devicePixelRatio())
{}

bool OverlayPicture::paintsFast(double deviceRatio) const
{
    return qFuzzyCompare(deviceRatio, m_ratio);
}

void OverlayPicture::paintDimmed(QPainter &painter, double deviceRatio) const
{
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    if (paintsFast(deviceRatio)) {
        painter.scale(1 / m_ratio, 1 / m_ratio);
        painter.drawImage((m_origin * m_ratio).toPoint(), m_nativeDimmed);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(m_origin, m_dimmed);
    }
    painter.restore();
}

void OverlayPicture::paintClear(QPainter &painter, const QRectF &rect, double deviceRatio) const
{
    painter.save();
    if (paintsFast(deviceRatio)) {
        const QRect pixels = coveredPixels(rect.translated(-m_origin), m_ratio, m_image.size());
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.scale(1 / m_ratio, 1 / m_ratio);
        painter.drawImage(pixels.topLeft() + (m_origin * m_ratio).toPoint(), m_nativeImage, pixels);
    } else {
        // Mapped as the darker picture is, so that every pixel shows in the same place in both.
        const QPointF topLeft(std::floor(rect.left() * deviceRatio), std::floor(rect.top() * deviceRatio));
        const QPointF bottomRight(std::ceil(rect.right() * deviceRatio), std::ceil(rect.bottom() * deviceRatio));
        painter.setClipRect(QRectF(topLeft / deviceRatio, bottomRight / deviceRatio), Qt::IntersectClip);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(m_origin, m_image);
    }
    painter.restore();
}

QPoint OverlayPicture::pixelAt(const QPointF &point) const
{
    const QPointF inPicture = (point - m_origin) * m_ratio;
    return {static_cast<int>(std::floor(inPicture.x())), static_cast<int>(std::floor(inPicture.y()))};
}

QColor OverlayPicture::colorAt(const QPointF &point) const
{
    const QPoint pixel = pixelAt(point);
    return m_image.rect().contains(pixel) ? m_image.pixelColor(pixel) : QColor(Qt::black);
}

} // namespace tavrel::ui
