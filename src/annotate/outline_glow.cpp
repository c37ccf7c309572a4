#include "annotate/outline_glow.h"

#include "annotate/base_shape.h"
#include "annotate/selection_marks.h"

#include <array>
#include <cmath>
#include <numbers>

namespace tavrel {
namespace {

constexpr double kLargestGlow = 1'500'000; ///< pixels
constexpr int kDirections = 32;            ///< of each layer

struct Layer
{
    double radius;
    int alpha;
};
constexpr std::array kLayers{Layer{5.0, 26}, Layer{3.2, 56}, Layer{1.6, 110}};

QImage silhouetteOf(const QImage &image)
{
    QImage silhouette = image;
    QPainter painter(&silhouette);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(silhouette.rect(), QColor::fromRgb(kGlowColor));
    return silhouette;
}

/// A cheap blur: the silhouette drawn around a circle and once in its middle.
QImage spread(const QImage &silhouette, double radius)
{
    QImage layer(silhouette.size(), QImage::Format_ARGB32_Premultiplied);
    layer.fill(Qt::transparent);
    QPainter painter(&layer);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int i = 0; i < kDirections; ++i) {
        const double angle = 2 * std::numbers::pi * i / kDirections;
        painter.drawImage(QPointF(radius * std::cos(angle), radius * std::sin(angle)), silhouette);
    }
    painter.drawImage(0, 0, silhouette);
    return layer;
}

} // namespace

OutlineGlow makeOutlineGlow(const BaseShape &shape, const ShapeRenderContext &context, double deviceScale)
{
    const std::optional<QRectF> bounds = shape.bounds();
    if (shape.type() == ToolType::Spotlight || !bounds || !(deviceScale > 0))
        return {};
    const double working = std::min(deviceScale, 1.0);
    // In a view that shows less than one pixel per unit the rings are wider than a unit and need more room.
    const double pad = 7.0 * std::max(context.handleScale, 1.0) + std::max(shape.thickness * 1.5, 4.0);
    const QRectF area = bounds->adjusted(-pad, -pad, pad, pad);
    const double width = std::ceil(area.width() * working);
    const double height = std::ceil(area.height() * working);
    if (!(width >= 1 && height >= 1) || width * height > kLargestGlow)
        return {};

    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter inside(&image);
        inside.setRenderHint(QPainter::Antialiasing);
        inside.scale(working, working);
        inside.translate(-area.topLeft());
        shape.paint(inside, context);
    }
    const QImage silhouette = silhouetteOf(image);
    QImage glow(image.size(), QImage::Format_ARGB32_Premultiplied);
    glow.fill(Qt::transparent);
    {
        QPainter inside(&glow);
        for (const Layer &layer : kLayers) {
            inside.setOpacity(layer.alpha / 255.0);
            inside.drawImage(0, 0, spread(silhouette, layer.radius * context.handleScale * working));
        }
        inside.setOpacity(1.0);
        inside.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        inside.drawImage(0, 0, image);
    }
    return {glow, QRectF(area.topLeft(), QSizeF(width, height) / working)};
}

bool GlowCache::paint(QPainter &painter, const BaseShape &shape, const QByteArray &json,
                      const ShapeRenderContext &context)
{
    const QTransform device = painter.deviceTransform();
    const double deviceScale = std::hypot(device.m11(), device.m12());
    const Key key{&shape, json, std::min(deviceScale, 1.0), context.handleScale};
    if (!(key == m_key)) {
        m_glow = makeOutlineGlow(shape, context, deviceScale);
        m_key = key;
    }
    if (m_glow.image.isNull())
        return false;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(m_glow.area, m_glow.image);
    painter.restore();
    return true;
}

void GlowCache::forget(const BaseShape *shape)
{
    if (m_key.shape == shape)
        clear();
}

void GlowCache::clear()
{
    m_key = {};
    m_glow = {};
}

} // namespace tavrel
