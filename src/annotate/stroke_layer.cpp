#include "annotate/stroke_layer.h"

#include "annotate/shape_render_context.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel {
namespace {

constexpr qsizetype kSettledPieces = 32;
constexpr int kScratchSide = 512; ///< largest box that is drawn at once
constexpr double kWidest = 256;
constexpr double kLargestExtent = 32'000;
constexpr double kLargestArea = 64e6;
constexpr double kLongest = 400'000;
constexpr double kAbsurdLength = 50e6;
constexpr qsizetype kMostAbsurd = 2000; ///< points, each of which may cost a line across the picture
constexpr double kSubpixels = 256;

QRectF boxOf(const QPointF &a, const QPointF &b, const QPointF &c)
{
    const auto [left, right] = std::minmax({a.x(), b.x(), c.x()});
    const auto [top, bottom] = std::minmax({a.y(), b.y(), c.y()});
    return {QPointF(left, top), QPointF(right, bottom)};
}

/// A premultiplied pixel times coverage / 255.
QRgb fadedPixel(QRgb pixel, int coverage)
{
    const auto fade = [coverage](int channel) { return (channel * coverage + 127) / 255; };
    return qRgba(fade(qRed(pixel)), fade(qGreen(pixel)), fade(qBlue(pixel)), fade(qAlpha(pixel)));
}

enum class Extent {
    Maskable,
    Large,  ///< a mask of it could take too much memory
    Absurd, ///< no hand has drawn it
};

Extent extentOf(const QList<QPointF> &points, double scale)
{
    QPointF low = points.first();
    QPointF high = low;
    double length = 0;
    for (qsizetype i = 1; i < points.size(); ++i) {
        const QPointF step = points[i] - points[i - 1];
        length += std::abs(step.x()) + std::abs(step.y());
        low = {std::min(low.x(), points[i].x()), std::min(low.y(), points[i].y())};
        high = {std::max(high.x(), points[i].x()), std::max(high.y(), points[i].y())};
    }
    length *= scale;
    const QPointF size = (high - low) * scale;
    if (length > kAbsurdLength)
        return Extent::Absurd;
    const bool isSmall = size.x() * size.y() < kLargestArea || length < kLongest;
    return isSmall && size.x() < kLargestExtent && size.y() < kLargestExtent ? Extent::Maskable : Extent::Large;
}

} // namespace

QPainterPath smoothPath(const QList<QPointF> &points)
{
    QPainterPath path;
    if (points.size() < 2)
        return path;
    path.moveTo(points.first());
    for (qsizetype i = 1; i + 1 < points.size(); ++i)
        path.quadTo(points[i], (points[i] + points[i + 1]) / 2);
    path.lineTo(points.last());
    return path;
}

int StrokeLayer::tileOf(int at)
{
    return at >= 0 ? at / kSide : -((kSide - 1 - at) / kSide);
}

void StrokeLayer::clear()
{
    m_tiles.clear();
    m_settled = 0;
    m_look = {};
}

StrokeLayer::Piece StrokeLayer::piece(const QList<QPointF> &points, qsizetype index) const
{
    const auto map = [this, &points](const QPointF &point) {
        return (point - points.first()) * m_look.scale + m_look.fraction;
    };
    const QPointF from = index == 0 ? points.first() : (points[index] + points[index + 1]) / 2;
    if (index + 2 >= points.size())
        return {map(from), map((from + points.last()) / 2), map(points.last())};
    return {map(from), map(points[index + 1]), map((points[index + 1] + points[index + 2]) / 2)};
}

void StrokeLayer::settle(const QList<QPointF> &points)
{
    // The last piece is a line that the next point turns into a curve.
    const qsizetype curves = points.size() - 2;
    while (curves - m_settled >= kSettledPieces) {
        QList<Piece> pieces;
        pieces.reserve(kSettledPieces);
        for (qsizetype i = 0; i < kSettledPieces; ++i)
            pieces.append(piece(points, m_settled + i));
        draw(m_tiles, pieces);
        m_settled += kSettledPieces;
    }
}

StrokeLayer::Tiles StrokeLayer::tilesUnder(const QList<Piece> &pieces) const
{
    Tiles copies;
    const double pad = m_look.width / 2 + 2;
    for (const Piece &piece : pieces) {
        const QRect box = boxOf(piece.from, piece.control, piece.to).adjusted(-pad, -pad, pad, pad).toAlignedRect();
        for (int row = tileOf(box.top()); row <= tileOf(box.bottom()); ++row) {
            for (int column = tileOf(box.left()); column <= tileOf(box.right()); ++column) {
                const std::shared_ptr<Tile> tile = m_tiles.value({column, row});
                if (tile && !copies.contains({column, row}))
                    copies.insert({column, row}, std::make_shared<Tile>(*tile));
            }
        }
    }
    return copies;
}

void StrokeLayer::draw(Tiles &tiles, const QList<Piece> &pieces) const
{
    static thread_local QImage scratch;
    const double pad = m_look.width / 2 + 2;
    QRectF box;
    QPainterPath path(pieces.first().from);
    for (const Piece &piece : pieces) {
        // Qt's union leaves out boxes without a width or height, so every one is padded first.
        box |= boxOf(piece.from, piece.control, piece.to).adjusted(-pad, -pad, pad, pad);
        path.quadTo(piece.control, piece.to);
    }
    const QRect area = box.toAlignedRect();
    const QSize largest(kScratchSide, kScratchSide);
    const int reach = static_cast<int>(std::ceil(2 * pad));
    if (area.width() > largest.width() + reach || area.height() > largest.height() + reach) {
        if (const qsizetype half = pieces.size() / 2; half > 0) {
            draw(tiles, pieces.first(half));
            draw(tiles, pieces.sliced(half));
            return;
        }
        const Piece &whole = pieces.first();
        const QPointF first = (whole.from + whole.control) / 2;
        const QPointF last = (whole.control + whole.to) / 2;
        const QPointF middle = (first + last) / 2;
        draw(tiles, {{whole.from, first, middle}});
        draw(tiles, {{middle, last, whole.to}});
        return;
    }
    if (scratch.width() < area.width() || scratch.height() < area.height()) {
        scratch = QImage(std::max(scratch.width(), area.width()), std::max(scratch.height(), area.height()),
                         QImage::Format_ARGB32_Premultiplied);
    }
    for (int y = 0; y < area.height(); ++y)
        std::fill_n(reinterpret_cast<QRgb *>(scratch.scanLine(y)), area.width(), 0U);
    {
        QPainter painter(&scratch);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setClipRect(QRect(QPoint(), area.size()));
        painter.translate(-area.topLeft());
        painter.strokePath(path, QPen(Qt::black, m_look.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    merge(tiles, scratch, area, pieces.first().from);
}

void StrokeLayer::merge(Tiles &tiles, const QImage &drawn, const QRect &area, const QPointF &joint) const
{
    const double reach = m_look.width / 2 + 1.5;
    for (int row = tileOf(area.top()); row <= tileOf(area.bottom()); ++row) {
        for (int column = tileOf(area.left()); column <= tileOf(area.right()); ++column) {
            const QRect part = area.intersected(QRect(column * kSide, row * kSide, kSide, kSide));
            std::shared_ptr<Tile> tile = tiles.value({column, row});
            for (int y = part.top(); y <= part.bottom(); ++y) {
                const auto *from = reinterpret_cast<const QRgb *>(drawn.constScanLine(y - area.top())) - area.left();
                const double dy = y + 0.5 - joint.y();
                const double halfChord = std::sqrt(std::max(0.0, reach * reach - dy * dy));
                for (int x = part.left(); x <= part.right(); ++x) {
                    const int coverage = qAlpha(from[x]);
                    if (coverage == 0)
                        continue;
                    if (!tile) {
                        tile = std::make_shared<Tile>();
                        tiles.insert({column, row}, tile);
                    }
                    uchar &into =
                        tile->coverage[static_cast<std::size_t>((y - row * kSide) * kSide + x - column * kSide)];
                    const bool isAtJoint = std::abs(x + 0.5 - joint.x()) < halfChord;
                    const int both = 255 - ((255 - into) * (255 - coverage) + 127) / 255;
                    into = static_cast<uchar>(isAtJoint ? std::max<int>(into, coverage) : both);
                }
            }
        }
    }
}

/// Puts tiles on a painter in the colour or texture of a brush.
class StrokeLayer::TilePainter final
{
public:
    /// device  of the painter, which is set to the layer's pixels
    /// base    where the layer's origin lies on the device
    TilePainter(QPainter &painter, const QTransform &device, const QPoint &base, const QBrush &brush,
                const ShapeRenderContext &context)
        : m_painter(painter),
          m_toDevice(device * QTransform::fromTranslate(-base.x(), -base.y())),
          m_toUnits(QTransform::fromTranslate(base.x(), base.y()) * device.inverted()),
          m_brush(brush),
          m_context(context)
    {
        const QColor color = brush.color();
        for (int i = 0; i < 256; ++i) {
            const auto alpha = static_cast<int>(std::lround(color.alpha() * i / 255.0));
            m_shades[static_cast<std::size_t>(i)] =
                qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
        }
        painter.setWorldTransform(m_toUnits * painter.worldTransform());
    }

    void put(const QPoint &at, const Tile &tile)
    {
        const QRect area(at * kSide, QSize(kSide, kSide));
        if (!m_context.isExposed(m_toUnits.mapRect(QRectF(area))))
            return;
        const bool isTexture = m_brush.style() == Qt::TexturePattern;
        if (isTexture)
            fill(area);
        for (int y = 0; y < kSide; ++y) {
            auto *to = reinterpret_cast<QRgb *>(m_shaded.scanLine(y));
            const uchar *coverage = tile.coverage.data() + static_cast<std::size_t>(y * kSide);
            for (int x = 0; x < kSide; ++x)
                to[x] = isTexture ? fadedPixel(to[x], coverage[x]) : m_shades[coverage[x]];
        }
        m_painter.drawImage(area.topLeft(), m_shaded);
    }

private:
    void fill(const QRect &area)
    {
        QPainter texture(&m_shaded);
        texture.setCompositionMode(QPainter::CompositionMode_Source);
        texture.setTransform(m_toDevice * QTransform::fromTranslate(-area.x(), -area.y()));
        texture.fillRect(m_toUnits.mapRect(QRectF(area)).adjusted(-1, -1, 1, 1), m_brush);
    }

    QPainter &m_painter;
    const QTransform m_toDevice;
    const QTransform m_toUnits;
    const QBrush m_brush;
    const ShapeRenderContext &m_context;
    std::array<QRgb, 256> m_shades{};
    QImage m_shaded{kSide, kSide, QImage::Format_ARGB32_Premultiplied};
};

void StrokeLayer::paint(QPainter &painter, const QList<QPointF> &points, double width, const QBrush &brush,
                        const ShapeRenderContext &context)
{
    if (points.size() < 2 || brush.style() == Qt::NoBrush)
        return;
    const QTransform device = painter.deviceTransform();
    const double scale = device.m11();
    const bool isPlain = device.type() <= QTransform::TxScale && scale > 0 && qFuzzyCompare(scale, device.m22());
    const Extent extent = m_settled == 0 ? extentOf(points, scale) : Extent::Maskable;
    if (!isPlain || width * scale > kWidest || extent != Extent::Maskable) {
        const bool isAbsurd = extent == Extent::Absurd;
        painter.strokePath(smoothPath(isAbsurd ? points.first(std::min(points.size(), kMostAbsurd)) : points),
                           QPen(brush, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        return;
    }
    const QPointF first = device.map(points.first());
    const QPointF snapped(std::round(first.x() * kSubpixels) / kSubpixels,
                          std::round(first.y() * kSubpixels) / kSubpixels);
    const QPoint base(static_cast<int>(std::floor(snapped.x())), static_cast<int>(std::floor(snapped.y())));
    const Look look{scale, width * scale, snapped - base};
    if (look != m_look) {
        clear();
        m_look = look;
    }
    settle(points);
    QList<Piece> rest;
    for (qsizetype i = m_settled; i + 1 < points.size(); ++i)
        rest.append(piece(points, i));
    Tiles tail = tilesUnder(rest);
    draw(tail, rest);

    painter.save();
    TilePainter tiles(painter, device, base, brush, context);
    for (auto it = m_tiles.cbegin(); it != m_tiles.cend(); ++it) {
        if (!tail.contains(it.key()))
            tiles.put(it.key(), *it.value());
    }
    for (auto it = tail.cbegin(); it != tail.cend(); ++it)
        tiles.put(it.key(), *it.value());
    painter.restore();
}

} // namespace tavrel
