#include "annotate/outline_glow.h"

#include "annotate/base_shape.h"
#include "annotate/selection_marks.h"

#include <algorithm>
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

/// Where a glow can show: squares near ink that are not wholly covered by it. A large shape has its ink along a line or
/// covers everything, and the layers take a fraction of the time there.
///
/// reach  how far the glow goes from the ink, pixels
QRegion glowingRegion(const QImage &image, double reach)
{
    constexpr int side = 64;
    const int width = image.width();
    const int columns = (width + side - 1) / side;
    const int rows = (image.height() + side - 1) / side;
    struct Square
    {
        bool hasInk = false;
        bool isCovered = true;
    };
    QList<Square> squares(qsizetype{columns} * rows);
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        Square *row = squares.data() + qsizetype{columns} * (y / side);
        for (int x = 0; x < width; ++x) {
            row[x / side].hasInk |= qAlpha(line[x]) != 0;
            row[x / side].isCovered &= qAlpha(line[x]) == 255;
        }
    }
    const int around = static_cast<int>(std::min(reach / side, 1000.0)) + 1;
    QRegion region;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (squares[qsizetype{columns} * row + column].isCovered)
                continue;
            bool isNear = false;
            for (int y = std::max(row - around, 0); y <= std::min(row + around, rows - 1) && !isNear; ++y) {
                for (int x = std::max(column - around, 0); x <= std::min(column + around, columns - 1) && !isNear; ++x)
                    isNear = squares[qsizetype{columns} * y + x].hasInk;
            }
            if (isNear)
                region += QRect(column * side, row * side, side, side);
        }
    }
    return region & image.rect();
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

/// The layers over each other.
QImage layersOf(const QImage &silhouette, double pixelsPerRadius)
{
    QImage glow(silhouette.size(), QImage::Format_ARGB32_Premultiplied);
    glow.fill(Qt::transparent);
    QPainter painter(&glow);
    for (const Layer &layer : kLayers) {
        painter.setOpacity(layer.alpha / 255.0);
        painter.drawImage(0, 0, spread(silhouette, layer.radius * pixelsPerRadius));
    }
    return glow;
}

/// The glow of what an image shows, beside it only.
QImage glowOf(const QImage &image, double pixelsPerRadius)
{
    const double reach = kLayers.front().radius * pixelsPerRadius + 1;
    const QRegion region = glowingRegion(image, reach);
    const int margin = static_cast<int>(std::ceil(std::min(reach, 1000.0)));
    qint64 work = 0;
    for (const QRect &part : region)
        work += qint64{part.width() + 2 * margin} * (part.height() + 2 * margin);
    const bool inParts = work < qint64{image.width()} * image.height();

    const QImage silhouette = silhouetteOf(image);
    QImage glow(image.size(), QImage::Format_ARGB32_Premultiplied);
    glow.fill(Qt::transparent);
    QPainter painter(&glow);
    for (const QRect &part : inParts ? region : QRegion(image.rect())) {
        const QRect grown = inParts ? part.adjusted(-margin, -margin, margin, margin) : part;
        painter.drawImage(part.topLeft(), layersOf(silhouette.copy(grown), pixelsPerRadius),
                          part.translated(-grown.topLeft()));
    }
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.drawImage(0, 0, image);
    return glow;
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
    // On whole pixels, or the shape that is cut out of the glow would lie beside the one that is on the picture.
    const QRectF wanted = shape.inkBounds().adjusted(-pad, -pad, pad, pad);
    const QPointF corner(std::floor(wanted.left() * working) / working, std::floor(wanted.top() * working) / working);
    const QRectF area(corner, wanted.bottomRight());
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
        ShapeRenderContext whole = context;
        whole.exposed.clear();
        shape.paint(inside, whole);
    }
    const QImage glow = glowOf(image, context.handleScale * working);
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
