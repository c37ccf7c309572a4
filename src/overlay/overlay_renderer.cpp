#include "overlay/overlay_renderer.h"

#include "annotate/shape_document.h"
#include "overlay/selection_geometry.h"

#include <QPainter>

namespace tavrel {

QImage renderSelection(const QImage &image, const QRectF &selection, const QString &shapesJson,
                       const ShapeFactory &factory)
{
    const double ratio = image.isNull() ? 1.0 : image.devicePixelRatio();
    const QRect crop = ui::cropRect(selection, ratio, image.size());
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
    context.canvasBounds = selection;
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(-QPointF(crop.topLeft()) / ratio);
    document.paintShapes(painter, context);
    return result;
}

} // namespace tavrel
