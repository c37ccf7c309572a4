#include "annotate/base_shape.h"

#include "annotate/selection_marks.h"
#include "annotate/stored_number.h"
#include "base/json_read.h"

#include <QJsonDocument>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kLargestThickness = 10'000;
constexpr double kSmallestShape = 3.0;
constexpr double kPaintedMargin = 24.0;

QRectF boxOf(const QList<QPointF> &points)
{
    QPointF low = points.first();
    QPointF high = low;
    for (const QPointF &point : points) {
        low = {std::min(low.x(), point.x()), std::min(low.y(), point.y())};
        high = {std::max(high.x(), point.x()), std::max(high.y(), point.y())};
    }
    return {low, high};
}

} // namespace

QString newShapeId()
{
    static constexpr QStringView alphabet = u"0123456789abcdefghijklmnopqrstuvwxyz";
    QString id;
    for (int i = 0; i < 7; ++i)
        id.append(alphabet[QRandomGenerator::global()->bounded(static_cast<int>(alphabet.size()))]);
    return id;
}

double readLength(const QJsonObject &in, const QString &key, double fallback)
{
    return storedLength(readDouble(in, key, fallback));
}

double readNonZero(const QJsonObject &in, const QString &key, double fallback)
{
    const double value = readLength(in, key, 0.0);
    return value == 0.0 ? fallback : value;
}

BaseShape::BaseShape(ToolType type) : id(newShapeId()), m_type(type) {}

void BaseShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    for (const QPointF &handle : handles())
        paintRoundHandle(painter, handle, context.handleScale);
}

int BaseShape::setHandle(int index, double, double)
{
    return index;
}

std::optional<QRectF> BaseShape::bounds() const
{
    const QList<QPointF> points = handles();
    if (points.isEmpty())
        return {};
    return boxOf(points);
}

QRectF BaseShape::paintedBounds() const
{
    const auto box = bounds();
    const double pad = thickness / 2 + kPaintedMargin;
    return box ? box->adjusted(-pad, -pad, pad, pad) : QRectF();
}

QRectF BaseShape::grownSince(qsizetype) const
{
    return paintedBounds();
}

void BaseShape::pressAt(double, double) {}

void BaseShape::transform(const ImageTransform &transform)
{
    const QList<QPointF> points = handles();
    for (int i = 0; i < points.size(); ++i) {
        const QPointF mapped = transform.map(points[i]);
        setHandle(i, mapped.x(), mapped.y());
    }
}

void BaseShape::scale(double factor)
{
    thickness *= factor;
}

QByteArray BaseShape::toJsonText() const
{
    QJsonObject object;
    toJson(object);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// By value, because shapes that have points move them in.
void BaseShape::takePoints(QList<QPointF>) {} // NOLINT(performance-unnecessary-value-param)

void BaseShape::takeAttributes(const ShapeAttributes &attributes)
{
    color = attributes.color;
    thickness = attributes.thickness;
}

void BaseShape::giveAttributes(ShapeAttributes &attributes) const
{
    attributes.color = color;
    if (m_type == ToolType::Arrow)
        attributes.arrowStyle = arrowStyle;
    if (m_type == ToolType::Mosaic || m_type == ToolType::MosaicPen || m_type == ToolType::Spotlight)
        return;
    attributes.thickness = thickness;
    attributes.baseThickness = thickness / attributes.displayScale;
}

bool BaseShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    switch (attribute) {
    case ShapeAttribute::Color:
        return std::exchange(color, attributes.color) != attributes.color;
    case ShapeAttribute::Thickness:
        return std::exchange(thickness, attributes.thickness) != attributes.thickness;
    default:
        return false;
    }
}

bool BaseShape::isTooSmall() const
{
    const QList<QPointF> points = handles();
    if (points.isEmpty())
        return false;
    const QRectF box = boxOf(points);
    return box.width() < kSmallestShape && box.height() < kSmallestShape;
}

bool BaseShape::straighten(const QPointF &, const QPointF &)
{
    return false;
}

QList<std::shared_ptr<BaseShape>> BaseShape::snappedTo(const QList<QRectF> &, const ShapeAttributes &) const
{
    return {};
}

bool BaseShape::paintHoverOutline(QPainter &, double) const
{
    return false;
}

void BaseShape::setNumber(int) {}

QRect BaseShape::EraseBox::pixelRect(double scale, const QPointF &origin) const
{
    const auto pixels = [factor = scale > 0 ? scale : 1.0](double length) {
        return static_cast<int>(std::lround(length * factor));
    };
    return QRect(pixels(rect.x()), pixels(rect.y()), pixels(rect.width()), pixels(rect.height()))
        .translated(-pixels(origin.x()), -pixels(origin.y()));
}

bool BaseShape::isEffect() const
{
    return m_type == ToolType::Mosaic || m_type == ToolType::MosaicPen || m_type == ToolType::SmartErase;
}

void BaseShape::writeBase(QJsonObject &out) const
{
    out.insert(QStringLiteral("type"), toolTypeName(m_type));
    out.insert(QStringLiteral("id"), id);
    out.insert(QStringLiteral("color"), color);
    out.insert(QStringLiteral("thickness"), thickness);
    out.insert(QStringLiteral("opacity"), opacity);
    out.insert(QStringLiteral("compositeOperation"), compositeOperation);
    out.insert(QStringLiteral("arrowStyle"), enumName(arrowStyle));
}

void BaseShape::readBase(const QJsonObject &in)
{
    const auto takeText = [&in](const QString &key, QString &value) {
        const QString read = readString(in, key);
        if (!read.isEmpty())
            value = read;
    };
    takeText(QStringLiteral("id"), id);
    takeText(QStringLiteral("color"), color);
    const double width = readNonZero(in, QStringLiteral("thickness"), 3.0);
    thickness = width > 0 ? std::min(width, kLargestThickness) : 3.0;
    const double stored = readNonZero(in, QStringLiteral("opacity"), 1.0);
    opacity = stored > 0 ? std::min(stored, 1.0) : 1.0;
    compositeOperation = QStringLiteral("source-over");
    takeText(QStringLiteral("compositeOperation"), compositeOperation);
    const QString style = readString(in, QStringLiteral("arrowStyle"));
    if (!style.isEmpty())
        arrowStyle = arrowStyleFromName(style);
}

} // namespace tavrel
