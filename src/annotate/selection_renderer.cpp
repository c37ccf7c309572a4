#include "annotate/selection_renderer.h"

#include "annotate/flatten.h"

namespace tavrel {

QImage renderSelection(const QImage &image, const QRectF &selection, const QString &shapesJson,
                       const ShapeFactory &factory)
{
    FlattenRequest request;
    request.picture = image;
    request.selection = selection;
    request.shapes = textsFromJsonArray(shapesJson.toUtf8());
    request.factory = &factory;
    return flatten(request);
}

} // namespace tavrel
