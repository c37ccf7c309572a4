#pragma once

#include "annotate/box_shape.h"
#include "annotate/path_shape.h"
#include "annotate/shape_factory.h"
#include "base/color_text.h"
#include "base/json_read.h"

namespace tavrel::test {

/// A filled box that can stand for every kind of shape with a box: it counts when it is a sequence, waits for its text
/// when it is a text, erases when it is a smart erase, and has no handles as a watermark.
class BoxShape final : public tavrel::BoxShape
{
public:
    using tavrel::BoxShape::BoxShape;
    BoxShape(ToolType type, const QRectF &place) : tavrel::BoxShape(type) { setBox(place); }

    void paint(QPainter &painter, const ShapeRenderContext &context) const override
    {
        seenSpotlights = context.spotlights ? static_cast<int>(context.spotlights->size()) : -1;
        painter.fillRect(box(), colorFromText(color));
    }
    bool hitTest(double x, double y) const override { return !isWatermark() && box().contains(QPointF(x, y)); }
    QList<QPointF> handles() const override { return isWatermark() ? QList<QPointF>() : tavrel::BoxShape::handles(); }
    std::optional<QRectF> bounds() const override { return BaseShape::bounds(); }
    void pressAt(double x, double y) override { pressed = {x, y}; }
    void toJson(QJsonObject &out) const override
    {
        tavrel::BoxShape::toJson(out);
        out.insert(QStringLiteral("number"), number);
        out.insert(QStringLiteral("text"), text);
    }
    void readJson(const QJsonObject &in) override
    {
        tavrel::BoxShape::readJson(in);
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
        if (isWatermark())
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
        return type() == ToolType::Sequence ? std::optional(Numbering{NumberType::Arabic, number}) : std::nullopt;
    }
    void setNumber(int value) override { number = value; }
    std::optional<EraseBox> eraseBox() const override
    {
        return type() == ToolType::SmartErase ? std::optional(EraseBox{box(), EraseSolver::WholeBox}) : std::nullopt;
    }

    int number = 1;
    QString text;
    bool editing = false;
    QPointF pressed;
    mutable int seenSpotlights = -2;

private:
    bool isWatermark() const { return type() == ToolType::Watermark; }
};

/// Boxes and strokes under the types of the program.
inline const ShapeFactory &shapeFactory()
{
    static const ShapeFactory factory = [] {
        ShapeFactory made;
        const auto make = [](ToolType type, bool isBox) -> std::shared_ptr<BaseShape> {
            if (isBox)
                return std::make_shared<BoxShape>(type);
            return std::make_shared<PathShape>(type);
        };
        for (const ToolType type :
             {ToolType::Rect, ToolType::Circle, ToolType::Mosaic, ToolType::SmartErase, ToolType::Spotlight,
              ToolType::Sequence, ToolType::Text, ToolType::Watermark, ToolType::Pen, ToolType::Marker}) {
            const bool isBox = type != ToolType::Pen && type != ToolType::Marker;
            made.add(
                type,
                [=](const ShapeAttributes &attributes) {
                    return make(type, isBox || (type == ToolType::Marker && attributes.markerRectMode));
                },
                [=](const QJsonObject &in) {
                    return make(type, isBox || readBool(in, QStringLiteral("markerRect"), false));
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

inline PathShape *stroke(BaseShape *shape)
{
    return dynamic_cast<PathShape *>(shape);
}

} // namespace tavrel::test
