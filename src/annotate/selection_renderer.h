#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

namespace tavrel {

class ShapeFactory;

/// flatten() of stored shapes, or of none, with everything made here and now.
///
/// image       the whole picture; its device pixel ratio stays on the result
/// selection   logical units from the picture's top-left; every edge is rounded to a pixel
/// shapesJson  what to paint, in the same units; empty for none
/// returns     Format_ARGB32_Premultiplied; null when nothing of the selection lies in the picture
[[nodiscard]] QImage renderSelection(const QImage &image, const QRectF &selection, const QString &shapesJson,
                                     const ShapeFactory &factory);

} // namespace tavrel
