#pragma once

#include <QImage>
#include <QRectF>
#include <QString>

namespace tavrel {

class EffectImageCache;
class ShapeFactory;
class SmartEraseEngine;

/// The result of a capture: the selection cut out, with the shapes painted on it by a document of their own.
///
/// image       the whole picture; its device pixel ratio stays on the result
/// selection   logical units from the picture's top-left; every edge is rounded to a pixel
/// shapesJson  what to paint, in the same units; empty for none
/// effects     mosaics and blurs of this picture; null makes them here
/// erased      the boxes of smart erase of this picture, all of them solved; null solves them here
/// returns     Format_ARGB32_Premultiplied; null when nothing of the selection lies in the picture
[[nodiscard]] QImage renderSelection(const QImage &image, const QRectF &selection, const QString &shapesJson,
                                     const ShapeFactory &factory, const EffectImageCache *effects = nullptr,
                                     const SmartEraseEngine *erased = nullptr);

} // namespace tavrel
