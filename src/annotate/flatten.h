#pragma once

#include "annotate/erase_pixels.h"
#include "annotate/shape_texts.h"
#include "annotate/smart_erase_engine.h"

#include <QImage>
#include <QRectF>

#include <memory>

namespace tavrel {

class EffectImageCache;
class ShapeDocument;
class ShapeFactory;

/// A selection of a picture and the shapes on it, as a value: what a result is made from after its window has gone.
/// Everything in it is shared and never changes, so that it costs no pixels and can go to any thread.
struct FlattenRequest
{
    QImage picture;                    ///< its device pixel ratio stays on the result
    QRectF selection;                  ///< logical units from the picture's top-left; every edge is rounded to a pixel
    ShapeTexts shapes;                 ///< in the same units
    SmartEraseEngine::Progress erased; ///< of this picture; null when nothing is known yet
    std::shared_ptr<const EffectImageCache> effects; ///< mosaics and blurs of this picture; null makes them anew
    const ShapeFactory *factory = nullptr;           ///< that reads the shapes; null for the standard one
};

/// What the present state of a document asks for. Boxes that the engine is solving go on being solved although it goes,
/// and are waited for, not solved again.
///
/// engine  of this picture; may be null, and may not know the latest boxes yet
[[nodiscard]] FlattenRequest flattenRequest(const QImage &picture, const QRectF &selection,
                                            const ShapeDocument &document, const SmartEraseEngine *engine = nullptr,
                                            std::shared_ptr<const EffectImageCache> effects = {});

/// The selection cut out with the shapes painted on it. Any thread, several at once, the same pixels on each.
///
/// cancel   once set it returns within some milliseconds of solving, or when the painting is done
/// returns  Format_ARGB32_Premultiplied; null when nothing of the selection lies in the picture or it was cancelled
/// cost     boxes of smart erase without a result take up to seconds, see eraseRegion(); the rest of a 4K picture some
///          ten milliseconds
[[nodiscard]] QImage flatten(const FlattenRequest &request,
                             const erase::CancelFlag &cancel = erase::CancelFlag::never());

} // namespace tavrel
