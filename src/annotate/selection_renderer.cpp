#include "annotate/selection_renderer.h"

#include "annotate/crop_rect.h"
#include "annotate/effect_image_cache.h"
#include "annotate/shape_document.h"
#include "annotate/smart_erase_engine.h"

#include <QPainter>

#include <memory>

namespace tavrel {

QImage renderSelection(const QImage &image, const QRectF &selection, const QString &shapesJson,
                       const ShapeFactory &factory, const EffectImageCache *effects, const SmartEraseEngine *erased)
{
    const double ratio = image.isNull() ? 1.0 : image.devicePixelRatio();
    const QRect crop = cropRect(selection, ratio, image.size());
    if (image.isNull() || crop.isEmpty())
        return {};
    QImage result = image.copy(crop).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(ratio);
    if (shapesJson.isEmpty())
        return result;

    ShapeDocument document(factory);
    document.loadState(shapesJson, {}, {}, 0);
    if (document.shapes().isEmpty())
        return result;
    ShapeRenderContext context;
    context.backdrop = &image;
    const EffectImageCache ownEffects(effects ? QImage() : image);
    context.effectSource = effects ? effects : &ownEffects;
    std::unique_ptr<SmartEraseEngine> own;
    if (const auto boxes = document.eraseRegions(ratio); !erased && !boxes.isEmpty()) {
        own = std::make_unique<SmartEraseEngine>(image);
        own->solve(boxes);
        erased = own.get();
    }
    context.eraseEngine = erased;
    context.canvasBounds = selection;
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(-QPointF(crop.topLeft()) / ratio);
    document.paintShapes(painter, context);
    return result;
}

} // namespace tavrel
