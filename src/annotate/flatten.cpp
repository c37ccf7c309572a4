#include "annotate/flatten.h"

#include "annotate/base_shape.h"
#include "annotate/crop_rect.h"
#include "annotate/effect_image_cache.h"
#include "annotate/shape_document.h"
#include "annotate/shape_factory.h"
#include "annotate/shape_painting.h"

#include <QPainter>

#include <algorithm>
#include <optional>
#include <utility>

namespace tavrel {
namespace {

QList<std::shared_ptr<BaseShape>> readShapes(const ShapeTexts &texts, const ShapeFactory &factory)
{
    QList<std::shared_ptr<BaseShape>> shapes;
    for (const QByteArray &text : texts) {
        if (std::shared_ptr<BaseShape> shape = factory.read(text))
            shapes.append(std::move(shape));
    }
    return shapes;
}

} // namespace

FlattenRequest flattenRequest(const QImage &picture, const QRectF &selection, const ShapeDocument &document,
                              const SmartEraseEngine *engine, std::shared_ptr<const EffectImageCache> effects)
{
    return {picture,
            selection,
            document.state().shapes,
            engine ? engine->progress() : nullptr,
            std::move(effects),
            &document.factory()};
}

QImage flatten(const FlattenRequest &request, const erase::CancelFlag &cancel)
{
    if (request.picture.isNull() || cancel.isSet())
        return {};
    const double ratio = request.picture.devicePixelRatio();
    const QRect crop = cropRect(request.selection, ratio, request.picture.size());
    if (crop.isEmpty())
        return {};
    // A stitched page may be half a gigabyte: whole and bare it is its own result.
    QImage result = (crop == request.picture.rect() ? request.picture : request.picture.copy(crop))
                        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(ratio);
    const ShapeFactory &factory = request.factory ? *request.factory : ShapeFactory::standard();
    const QList<std::shared_ptr<BaseShape>> shapes = readShapes(request.shapes, factory);
    if (shapes.isEmpty())
        return result;

    ShapeRenderContext context;
    context.backdrop = &request.picture;
    context.canvasBounds = request.selection;
    const EffectImageCache ownEffects(request.effects ? QImage() : request.picture);
    context.effectSource = request.effects ? request.effects.get() : &ownEffects;
    std::optional<SmartEraseEngine> engine;
    QList<EraseSpec> boxes = eraseRegions(shapes, ratio);
    boxes.removeIf([&crop](const EraseSpec &box) { return !box.first.adjusted(-1, -1, 1, 1).intersects(crop); });
    if (!boxes.isEmpty()) {
        if (request.erased)
            engine.emplace(request.erased);
        else
            engine.emplace(request.picture);
        if (!engine->solve(boxes, cancel))
            return {};
        context.eraseEngine = &*engine;
    }
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(-QPointF(crop.topLeft()) / ratio);
    paintShapes(painter, shapes, context);
    return result;
}

} // namespace tavrel
