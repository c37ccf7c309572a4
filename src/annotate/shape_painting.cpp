#include "annotate/shape_painting.h"

#include "annotate/base_shape.h"

#include <algorithm>

namespace tavrel {

void paintShapes(QPainter &painter, const QList<std::shared_ptr<BaseShape>> &shapes, const ShapeRenderContext &context)
{
    const auto isExposed = [&context](const BaseShape &shape) {
        const QList<QRectF> parts = shape.paintedParts();
        return std::any_of(parts.begin(), parts.end(),
                           [&context](const QRectF &part) { return part.isNull() || context.isExposed(part); });
    };
    QList<const BaseShape *> spotlights;
    for (const auto &shape : shapes) {
        if (shape->isEffect() && isExposed(*shape))
            shape->paint(painter, context);
        else if (shape->type() == ToolType::Spotlight)
            spotlights.append(shape.get());
    }
    ShapeRenderContext withSpotlights = context;
    withSpotlights.spotlights = &spotlights;
    for (const auto &shape : shapes) {
        if (!shape->isEffect() && isExposed(*shape))
            shape->paint(painter, withSpotlights);
    }
}

QList<EraseSpec> eraseRegions(const QList<std::shared_ptr<BaseShape>> &shapes, double imageScale, const QPointF &origin)
{
    QList<EraseSpec> regions;
    for (const auto &shape : shapes) {
        if (const auto box = shape->eraseBox())
            regions.append({box->pixelRect(imageScale, origin), box->solver});
    }
    return regions;
}

} // namespace tavrel
