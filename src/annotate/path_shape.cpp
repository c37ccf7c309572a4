#include "annotate/path_shape.h"

#include "annotate/vector_shapes.h"

#include <algorithm>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kSmallestReach = 6.0;
constexpr double kReach = 4.0;
constexpr double kSmallestStroke = 1.5;
constexpr double kTouchMargin = 3.0;

} // namespace

void PathShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    paintHighlighter(painter, *this, [&](double factor) {
        m_layer.paint(painter, m_points.list(), thickness, strokePen(*this, opacity * factor).color(), context);
    });
}

void PathShape::paintStroke(QPainter &painter, double width, const QBrush &brush,
                            const ShapeRenderContext &context) const
{
    m_layer.paint(painter, m_points.list(), width, brush, context);
}

bool PathShape::hitTest(double x, double y) const
{
    return m_points.passesNear({x, y}, std::max(thickness / 2 + kReach, kSmallestReach));
}

void PathShape::updateDrag(double startX, double startY, double x, double y)
{
    if (m_points.isEmpty())
        m_points.append({startX, startY});
    m_points.append({x, y});
}

void PathShape::translate(double dx, double dy)
{
    m_points.translate(dx, dy);
}

std::optional<QRectF> PathShape::bounds() const
{
    std::optional<QRectF> box = m_points.box();
    if (box)
        box->adjust(-thickness / 2, -thickness / 2, thickness / 2, thickness / 2);
    return box;
}

QRectF PathShape::grownSince(qsizetype growth) const
{
    // The line to the last point has become a curve, which begins in the middle of the segment before.
    // A quick stroke is drawn in other lots than before once there are enough points, which moves their joints.
    constexpr qsizetype kLot = 32;
    constexpr double kQuick = 200;
    qsizetype from = std::clamp<qsizetype>(growth - 2, 0, std::max<qsizetype>(m_points.size() - 1, 0));
    const qsizetype lot = std::max<qsizetype>(0, (growth - 3) / kLot * kLot);
    QRectF since(m_points.list().value(lot), QSizeF());
    for (qsizetype i = lot; i < m_points.size(); ++i)
        since |= QRectF(m_points.list().at(i), QSizeF(1e-3, 1e-3));
    if (since.width() > kQuick || since.height() > kQuick)
        from = lot;
    QRectF box;
    const double pad = thickness / 2 + 2;
    for (qsizetype i = from; i < m_points.size(); ++i) {
        const QPointF &point = m_points.list().at(i);
        box |= QRectF(point.x() - pad, point.y() - pad, 2 * pad, 2 * pad);
    }
    return box;
}

void PathShape::transform(const ImageTransform &transform)
{
    m_points.transform(transform);
    m_layer.clear();
}

void PathShape::scale(double factor)
{
    BaseShape::scale(factor);
    m_points.scale(factor);
    m_layer.clear();
}

void PathShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    out.insert(QStringLiteral("points"), m_points.toJson());
}

QByteArray PathShape::toJsonText() const
{
    QJsonObject object;
    writeBase(object);
    return jsonTextWithPoints(object, m_points);
}

void PathShape::readJson(const QJsonObject &in)
{
    m_points.readJson(in.value(QStringLiteral("points")).toArray());
    m_layer.clear();
}

void PathShape::takePoints(QList<QPointF> points)
{
    m_points.assign(std::move(points));
    m_layer.clear();
}

void PathShape::takeAttributes(const ShapeAttributes &attributes)
{
    BaseShape::takeAttributes(attributes);
    if (type() != ToolType::Marker)
        return;
    opacity = 1.0;
    compositeOperation = QStringLiteral("multiply");
}

void PathShape::giveAttributes(ShapeAttributes &attributes) const
{
    BaseShape::giveAttributes(attributes);
    if (type() == ToolType::Marker)
        attributes.markerRectMode = false;
}

bool PathShape::isTooSmall() const
{
    return m_points.staysWithin(kSmallestStroke);
}

bool PathShape::straighten(const QPointF &from, const QPointF &to)
{
    m_points.assign({from, to});
    m_layer.clear();
    return true;
}

bool PathShape::touches(const QRectF &box) const
{
    const QList<QPointF> &points = m_points.list();
    const auto isInside = [&box](const QPointF &point) {
        return point.x() >= box.left() && point.x() <= box.right() && point.y() >= box.top() &&
               point.y() <= box.bottom();
    };
    for (qsizetype i = 1; i < points.size(); ++i) {
        const QPointF from = points[i - 1];
        const QPointF step = points[i] - from;
        const QRectF around = QRectF(from, points[i]).normalized();
        if (around.left() > box.right() || around.right() < box.left() || around.top() > box.bottom() ||
            around.bottom() < box.top())
            continue;
        const int count = std::max(1, static_cast<int>(std::ceil(std::hypot(step.x(), step.y()) / 2)));
        for (int k = 0; k <= count; ++k) {
            if (isInside(from + step * (static_cast<double>(k) / count)))
                return true;
        }
    }
    return false;
}

QList<std::shared_ptr<BaseShape>> PathShape::snappedTo(const QList<QRectF> &lines,
                                                       const ShapeAttributes &attributes) const
{
    QList<std::shared_ptr<BaseShape>> pieces;
    if (type() != ToolType::Marker || m_points.size() < 2)
        return pieces;
    for (const QRectF &line : lines) {
        if (!touches(line.adjusted(-kTouchMargin, -kTouchMargin, kTouchMargin, kTouchMargin)))
            continue;
        auto piece = std::make_shared<MarkerRectShape>();
        piece->takeAttributes(attributes);
        piece->color = color;
        piece->setBox({line.x() - 2.0, line.y() - 1.5, line.width() + 4.0, line.height() + 3.0});
        pieces.append(piece);
    }
    return pieces;
}

} // namespace tavrel
