#pragma once

#include "annotate/base_shape.h"
#include "annotate/shape_factory.h"
#include "annotate/stroke_points.h"
#include "base/color_text.h"
#include "base/json_read.h"

#include <QJsonArray>

namespace tavrel::test {

/// A filled box that can stand for every kind of shape with a box: it counts when it is a sequence, waits for its text
/// when it is a text, erases when it is a smart erase, and has no handles as a watermark.
class BoxShape final : public BaseShape
{
public:
    explicit BoxShape(ToolType type) : BaseShape(type) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override
    {
        seenSpotlights = context.spotlights ? static_cast<int>(context.spotlights->size()) : -1;
        painter.fillRect(box, colorFromText(color));
    }
    bool hitTest(double x, double y) const override
    {
        return type() != ToolType::Watermark && box.contains(QPointF(x, y));
    }
    void updateDrag(double startX, double startY, double x, double y) override
    {
        box = QRectF(QPointF(startX, startY), QPointF(x, y)).normalized();
    }
    void translate(double dx, double dy) override { box.translate(dx, dy); }
    QList<QPointF> handles() const override
    {
        if (type() == ToolType::Watermark)
            return {};
        return {box.topLeft(), box.topRight(), box.bottomRight(), box.bottomLeft()};
    }
    int setHandle(int index, double x, double y) override
    {
        const QPointF opposite = handles().at((index + 2) % 4);
        updateDrag(x, y, opposite.x(), opposite.y());
        return index;
    }
    void pressAt(double x, double y) override { pressed = {x, y}; }
    void transform(const ImageTransform &transform) override { box = transform.mapBox(box); }
    void toJson(QJsonObject &out) const override
    {
        writeBase(out);
        out.insert(QStringLiteral("x"), box.x());
        out.insert(QStringLiteral("y"), box.y());
        out.insert(QStringLiteral("w"), box.width());
        out.insert(QStringLiteral("h"), box.height());
        out.insert(QStringLiteral("number"), number);
        out.insert(QStringLiteral("text"), text);
    }
    void readJson(const QJsonObject &in) override
    {
        box = QRectF(readLength(in, QStringLiteral("x")), readLength(in, QStringLiteral("y")),
                     readLength(in, QStringLiteral("w")), readLength(in, QStringLiteral("h")));
        number = readInt(in, QStringLiteral("number"), 1);
        text = readString(in, QStringLiteral("text"));
    }
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override
    {
        if (attribute != ShapeAttribute::Watermark)
            return BaseShape::applyAttribute(attribute, attributes);
        return std::exchange(text, attributes.watermarkText) != attributes.watermarkText;
    }
    void giveAttributes(ShapeAttributes &attributes) const override
    {
        BaseShape::giveAttributes(attributes);
        if (type() == ToolType::Watermark)
            attributes.watermarkText = text;
    }
    bool isTooSmall() const override
    {
        return type() != ToolType::Text && type() != ToolType::Sequence && BaseShape::isTooSmall();
    }
    bool waitsForEditor() const override { return type() == ToolType::Text && text.isEmpty(); }
    bool isBeingEdited() const override { return editing; }
    bool commitsOnDeselect() const override { return editing && !text.trimmed().isEmpty(); }
    std::optional<Numbering> numbering() const override
    {
        if (type() != ToolType::Sequence)
            return {};
        return Numbering{NumberType::Arabic, number};
    }
    void setNumber(int value) override { number = value; }
    std::optional<EraseBox> eraseBox() const override
    {
        if (type() != ToolType::SmartErase)
            return {};
        return EraseBox{box, EraseSolver::WholeBox};
    }

    QRectF box;
    int number = 1;
    QString text;
    bool editing = false;
    QPointF pressed;
    mutable int seenSpotlights = -2;
};

/// A freehand line.
class StrokeShape final : public BaseShape
{
public:
    explicit StrokeShape(ToolType type) : BaseShape(type) {}

    void paint(QPainter &painter, const ShapeRenderContext &) const override
    {
        painter.setPen(QPen(colorFromText(color), thickness));
        painter.drawPolyline(points.list().constData(), static_cast<int>(points.size()));
    }
    bool hitTest(double x, double y) const override
    {
        return points.passesNear({x, y}, std::max(thickness / 2 + 4, 6.0));
    }
    void updateDrag(double startX, double startY, double x, double y) override
    {
        if (points.isEmpty())
            points.append({startX, startY});
        points.append({x, y});
    }
    void translate(double dx, double dy) override { points.translate(dx, dy); }
    std::optional<QRectF> bounds() const override { return points.box(); }
    void transform(const ImageTransform &transform) override { points.transform(transform); }
    void toJson(QJsonObject &out) const override
    {
        writeBase(out);
        out.insert(QStringLiteral("points"), points.toJson());
    }
    QByteArray toJsonText() const override
    {
        ++written;
        QJsonObject object;
        writeBase(object);
        return jsonTextWithPoints(object, points);
    }
    void readJson(const QJsonObject &in) override { points.readJson(in.value(QStringLiteral("points")).toArray()); }
    void takePoints(QList<QPointF> list) override { points.assign(std::move(list)); }
    bool isTooSmall() const override { return points.staysWithin(1.5); }
    bool straighten(const QPointF &from, const QPointF &to) override
    {
        points.assign({from, to});
        return true;
    }

    StrokePoints points;
    mutable int written = 0; ///< how often it was turned into JSON
};

/// The classes above under the types of the program.
inline const ShapeFactory &shapeFactory()
{
    static const ShapeFactory factory = [] {
        ShapeFactory made;
        for (const ToolType type : {ToolType::Rect, ToolType::Circle, ToolType::Mosaic, ToolType::SmartErase,
                                    ToolType::Spotlight, ToolType::Sequence, ToolType::Text, ToolType::Watermark}) {
            made.add(
                type, [type](const ShapeAttributes &) { return std::make_shared<BoxShape>(type); },
                [type](const QJsonObject &) { return std::make_shared<BoxShape>(type); });
        }
        for (const ToolType type : {ToolType::Pen, ToolType::Marker}) {
            made.add(
                type,
                [type](const ShapeAttributes &attributes) -> std::shared_ptr<BaseShape> {
                    if (type == ToolType::Marker && attributes.markerRectMode)
                        return std::make_shared<BoxShape>(type);
                    return std::make_shared<StrokeShape>(type);
                },
                [type](const QJsonObject &in) -> std::shared_ptr<BaseShape> {
                    if (type == ToolType::Marker && readBool(in, QStringLiteral("markerRect"), false))
                        return std::make_shared<BoxShape>(type);
                    return std::make_shared<StrokeShape>(type);
                });
        }
        return made;
    }();
    return factory;
}

inline BoxShape *box(BaseShape *shape)
{
    return dynamic_cast<BoxShape *>(shape);
}

inline StrokeShape *stroke(BaseShape *shape)
{
    return dynamic_cast<StrokeShape *>(shape);
}

} // namespace tavrel::test
