#include "annotate/magnifier_shape.h"

#include "annotate/selection_marks.h"
#include "base/color_text.h"
#include "base/json_read.h"

#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace tavrel {
namespace {

constexpr double kLargestLens = 900.0;
constexpr double kGap = 16.0;
constexpr double kReach = 6.0;
constexpr double kSmallest = 3.0;

QPainterPath outline(const QRectF &box, bool isRound)
{
    QPainterPath path;
    if (isRound)
        path.addEllipse(box);
    else
        path.addRect(box);
    return path;
}

/// Where the line from the centre of a box or ellipse towards a place leaves it.
QPointF rimPoint(const QRectF &box, bool isRound, const QPointF &towards)
{
    const QPointF center = box.center();
    const QPointF way = towards - center;
    const double length = std::hypot(way.x(), way.y());
    if (length <= 1e-9 || box.width() <= 0 || box.height() <= 0)
        return center;
    const QPointF direction = way / length;
    const double a = box.width() / 2;
    const double b = box.height() / 2;
    if (isRound)
        return center + direction / std::hypot(direction.x() / a, direction.y() / b);
    const auto reach = [](double half, double part) { return std::abs(part) <= 1e-9 ? 1e12 : half / std::abs(part); };
    return center + direction * std::min(reach(a, direction.x()), reach(b, direction.y()));
}

} // namespace

QPointF MagnifierShape::automaticCenter(const QSizeF &size, const QRectF &canvas) const
{
    const QRectF box = source();
    const QPointF center = box.center();
    const QPointF half(size.width() / 2, size.height() / 2);
    const std::array places{
        QPointF(box.right() + kGap + half.x(), center.y()), QPointF(center.x(), box.bottom() + kGap + half.y()),
        QPointF(box.left() - kGap - half.x(), center.y()), QPointF(center.x(), box.top() - kGap - half.y())};
    if (canvas.isEmpty())
        return places[0];
    for (const QPointF &place : places) {
        if (place.x() - half.x() >= canvas.left() && place.x() + half.x() <= canvas.right() &&
            place.y() - half.y() >= canvas.top() && place.y() + half.y() <= canvas.bottom())
            return place;
    }
    const auto push = [](double low, double high, double at, double halfSize) {
        return std::max(low + halfSize, std::min(at, high - halfSize));
    };
    return {push(canvas.left(), canvas.right(), places[0].x(), half.x()),
            push(canvas.top(), canvas.bottom(), places[0].y(), half.y())};
}

QRectF MagnifierShape::lens(const QRectF &canvas) const
{
    const QRectF box = source();
    QSizeF size = box.size() * zoom;
    const double larger = std::max(size.width(), size.height());
    if (larger > kLargestLens)
        size *= kLargestLens / larger;
    size = size.expandedTo({1.0, 1.0});
    const QPointF center = hasOffset ? box.center() + offset : automaticCenter(size, canvas);
    return {center - QPointF(size.width(), size.height()) / 2, size};
}

void MagnifierShape::paint(QPainter &painter, const ShapeRenderContext &context) const
{
    m_canvas = context.canvasBounds;
    const QRectF box = source();
    if (box.width() < 1 || box.height() < 1)
        return;
    const QRectF glass = lens(context.canvasBounds);
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.save();
    painter.setClipPath(outline(glass, isRound), Qt::IntersectClip);
    if (context.backdrop && !context.backdrop->isNull()) {
        const double ratio = context.backdrop->devicePixelRatio() > 0 ? context.backdrop->devicePixelRatio() : 1.0;
        const QRectF from = box.translated(-context.origin);
        painter.drawImage(glass, *context.backdrop, QRectF(from.topLeft() * ratio, from.size() * ratio));
    } else {
        painter.fillRect(glass, QColor(235, 235, 235));
    }
    painter.restore();

    QColor ink = colorFromText(color);
    ink.setAlpha(static_cast<int>(std::lround(std::clamp(ink.alpha() * opacity, 0.0, 255.0))));
    const double width = std::max(1.0, thickness);
    QPen pen(ink, width, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const QPointF way = glass.center() - box.center();
    if (std::hypot(way.x(), way.y()) >= (box.width() + glass.width()) / 4)
        painter.drawLine(rimPoint(box, isRound, glass.center()), rimPoint(glass, isRound, box.center()));
    painter.drawPath(outline(glass, isRound));
    const double step = std::max(dash, 2 * width) / width;
    pen.setDashPattern({step, step});
    painter.setPen(pen);
    painter.drawPath(outline(box, isRound));
    painter.restore();
}

void MagnifierShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, source(), context.handleScale);
    paintRoundHandle(painter, lens(context.canvasBounds).center(), context.handleScale);
}

bool MagnifierShape::contains(const QRectF &box, double grown, const QPointF &place) const
{
    const QRectF reach = box.adjusted(-grown, -grown, grown, grown);
    const QPointF way = place - reach.center();
    const double a = reach.width() / 2;
    const double b = reach.height() / 2;
    if (a <= 0 || b <= 0)
        return false;
    if (isRound)
        return std::hypot(way.x() / a, way.y() / b) <= 1;
    return std::abs(way.x()) <= a && std::abs(way.y()) <= b;
}

bool MagnifierShape::hitTest(double x, double y) const
{
    return contains(lens(m_canvas.value_or(QRectF())), kReach, {x, y}) || contains(source(), kReach, {x, y});
}

void MagnifierShape::updateDrag(double startX, double startY, double x, double y)
{
    m_a = {startX, startY};
    m_b = {x, y};
    m_lensGrabbed = false;
}

void MagnifierShape::pressAt(double x, double y)
{
    m_lensGrabbed = contains(lens(m_canvas.value_or(QRectF())), kReach, {x, y}) && !contains(source(), 0, {x, y});
}

void MagnifierShape::translate(double dx, double dy)
{
    if (!m_lensGrabbed) {
        m_a += QPointF(dx, dy);
        m_b += QPointF(dx, dy);
        return;
    }
    if (!hasOffset)
        offset = lens(m_canvas.value_or(QRectF())).center() - source().center();
    hasOffset = true;
    offset += QPointF(dx, dy);
}

QList<QPointF> MagnifierShape::handles() const
{
    const QRectF box = source();
    return {box.topLeft(), box.topRight(), box.bottomRight(), box.bottomLeft(),
            lens(m_canvas.value_or(QRectF())).center()};
}

int MagnifierShape::setHandle(int index, double x, double y)
{
    if (index == 4) {
        offset = QPointF(x, y) - source().center();
        hasOffset = true;
        return index;
    }
    if (index < 0 || index > 4)
        return index;
    const QPointF opposite = handles().at((index + 2) % 4);
    m_a = {x, y};
    m_b = opposite;
    const bool isRight = x > opposite.x() || (x == opposite.x() && (index == 1 || index == 2));
    const bool isBottom = y > opposite.y() || (y == opposite.y() && index >= 2);
    if (isBottom)
        return isRight ? 2 : 3;
    return isRight ? 1 : 0;
}

std::optional<QRectF> MagnifierShape::bounds() const
{
    return source().united(lens(m_canvas.value_or(QRectF())));
}

QRectF MagnifierShape::paintedBounds() const
{
    return hasOffset || m_canvas ? BaseShape::paintedBounds() : QRectF();
}

void MagnifierShape::transform(const ImageTransform &transform)
{
    m_a = transform.map(m_a);
    m_b = transform.map(m_b);
    switch (transform.kind) {
    case ImageTransform::Kind::RotateCw:
        offset = {-offset.y(), offset.x()};
        break;
    case ImageTransform::Kind::RotateCcw:
        offset = {offset.y(), -offset.x()};
        break;
    case ImageTransform::Kind::FlipHorizontal:
        offset.setX(-offset.x());
        break;
    }
}

void MagnifierShape::scale(double factor)
{
    BaseShape::scale(factor);
    m_a *= factor;
    m_b *= factor;
    offset *= factor;
}

void MagnifierShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    out.insert(QStringLiteral("ax"), m_a.x());
    out.insert(QStringLiteral("ay"), m_a.y());
    out.insert(QStringLiteral("bx"), m_b.x());
    out.insert(QStringLiteral("by"), m_b.y());
    out.insert(QStringLiteral("isRound"), isRound);
    out.insert(QStringLiteral("zoom"), zoom);
    out.insert(QStringLiteral("offX"), offset.x());
    out.insert(QStringLiteral("offY"), offset.y());
    out.insert(QStringLiteral("hasOffset"), hasOffset);
    out.insert(QStringLiteral("dash"), dash);
}

void MagnifierShape::readJson(const QJsonObject &in)
{
    m_a = {readLength(in, QStringLiteral("ax")), readLength(in, QStringLiteral("ay"))};
    m_b = {readLength(in, QStringLiteral("bx")), readLength(in, QStringLiteral("by"))};
    isRound = readBool(in, QStringLiteral("isRound"), true);
    zoom = readNonZero(in, QStringLiteral("zoom"), 2.0);
    offset = {readLength(in, QStringLiteral("offX")), readLength(in, QStringLiteral("offY"))};
    hasOffset = readBool(in, QStringLiteral("hasOffset"), false);
    dash = readNonZero(in, QStringLiteral("dash"), 7.0);
}

void MagnifierShape::takeAttributes(const ShapeAttributes &attributes)
{
    BaseShape::takeAttributes(attributes);
    isRound = attributes.magnifierRound;
    zoom = attributes.magnifierZoom;
    dash = attributes.magnifierDash;
}

void MagnifierShape::giveAttributes(ShapeAttributes &attributes) const
{
    BaseShape::giveAttributes(attributes);
    attributes.magnifierRound = isRound;
    attributes.magnifierZoom = zoom;
    attributes.magnifierDash = dash;
}

bool MagnifierShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    switch (attribute) {
    case ShapeAttribute::MagnifierRound:
        return std::exchange(isRound, attributes.magnifierRound) != attributes.magnifierRound;
    case ShapeAttribute::MagnifierZoom:
        return std::exchange(zoom, attributes.magnifierZoom) != attributes.magnifierZoom;
    case ShapeAttribute::MagnifierDash:
        return std::exchange(dash, attributes.magnifierDash) != attributes.magnifierDash;
    default:
        return BaseShape::applyAttribute(attribute, attributes);
    }
}

bool MagnifierShape::isTooSmall() const
{
    return source().width() < kSmallest && source().height() < kSmallest;
}

} // namespace tavrel
