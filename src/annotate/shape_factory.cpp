#include "annotate/shape_factory.h"

#include "annotate/arrow_shape.h"
#include "annotate/base_shape.h"
#include "annotate/effect_shapes.h"
#include "annotate/magnifier_shape.h"
#include "annotate/path_shape.h"
#include "annotate/sequence_shape.h"
#include "annotate/smart_erase_shape.h"
#include "annotate/stroke_points.h"
#include "annotate/text_shape.h"
#include "annotate/vector_shapes.h"
#include "annotate/watermark_shape.h"
#include "base/json_read.h"

#include <QJsonDocument>

namespace tavrel {

void ShapeFactory::add(ToolType type, ForTool forTool, ForStored forStored)
{
    m_makers.insert(type, {std::move(forTool), std::move(forStored)});
}

std::shared_ptr<BaseShape> ShapeFactory::create(ToolType tool, const ShapeAttributes &attributes) const
{
    const auto maker = m_makers.constFind(tool);
    if (maker == m_makers.cend() || !maker->forTool)
        return {};
    std::shared_ptr<BaseShape> shape = maker->forTool(attributes);
    if (shape)
        shape->takeAttributes(attributes);
    return shape;
}

std::shared_ptr<BaseShape> ShapeFactory::read(const QJsonObject &object) const
{
    const auto maker = m_makers.constFind(toolTypeFromName(readString(object, QStringLiteral("type"))));
    if (maker == m_makers.cend() || !maker->forStored)
        return {};
    std::shared_ptr<BaseShape> shape = maker->forStored(object);
    if (shape) {
        shape->readJson(object);
        shape->readBase(object);
    }
    return shape;
}

std::shared_ptr<BaseShape> ShapeFactory::read(const QByteArray &json) const
{
    std::optional<PartedStroke> stroke = partStroke(json);
    std::shared_ptr<BaseShape> shape = read(QJsonDocument::fromJson(stroke ? stroke->rest : json).object());
    if (shape && stroke)
        shape->takePoints(std::move(stroke->points));
    return shape;
}

const ShapeFactory &ShapeFactory::standard()
{
    static const ShapeFactory factory = [] {
        ShapeFactory made;
        made.add<RectShape>(ToolType::Rect);
        made.add<CircleShape>(ToolType::Circle);
        made.add<LineShape>(ToolType::Line);
        made.add<ArrowShape>(ToolType::Arrow);
        made.add<SequenceShape>(ToolType::Sequence);
        made.add<TextShape>(ToolType::Text);
        made.add<MosaicShape>(ToolType::Mosaic);
        made.add<MosaicPathShape>(ToolType::MosaicPen);
        made.add<SpotlightShape>(ToolType::Spotlight);
        made.add<MagnifierShape>(ToolType::Magnifier);
        made.add<WatermarkShape>(ToolType::Watermark);
        made.add<SmartEraseShape>(ToolType::SmartErase);
        const auto makeStroke = [](ToolType type) { return std::make_shared<PathShape>(type); };
        made.add(
            ToolType::Pen, [makeStroke](const ShapeAttributes &) { return makeStroke(ToolType::Pen); },
            [makeStroke](const QJsonObject &) { return makeStroke(ToolType::Pen); });
        const auto makeMarker = [makeStroke](bool isBox) -> std::shared_ptr<BaseShape> {
            if (isBox)
                return std::make_shared<MarkerRectShape>();
            return makeStroke(ToolType::Marker);
        };
        made.add(
            ToolType::Marker,
            [makeMarker](const ShapeAttributes &attributes) { return makeMarker(attributes.markerRectMode); },
            [makeMarker](const QJsonObject &stored) {
                return makeMarker(readBool(stored, QStringLiteral("markerRect"), false));
            });
        return made;
    }();
    return factory;
}

} // namespace tavrel
