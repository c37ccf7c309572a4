#pragma once

#include <QImage>
#include <QList>
#include <QPointF>
#include <QRectF>

#include <algorithm>

namespace tavrel {

class BaseShape;
class EffectImageCache;
class SmartEraseEngine;

/// What every shape gets for painting. All pointers may be null and must outlive the paint.
struct ShapeRenderContext
{
    const EffectImageCache *effectSource = nullptr;
    const SmartEraseEngine *eraseEngine = nullptr;
    const QImage *backdrop = nullptr; ///< the picture without annotations
    QPointF origin;                   ///< where the backdrop's top-left lies in shape coordinates
    const QList<const BaseShape *> *spotlights = nullptr;
    /// 1 divided by the zoom of the view, so that handles and outlines keep their size on the screen.
    double handleScale = 1.0;
    /// Area that spotlight, watermark and magnifier may fill; see canvasOrEverything().
    QRectF canvasBounds;
    /// What has to be painted, so that shapes and parts of them elsewhere can be left out; empty for everything. The
    /// painter is clipped by whoever paints less than everything.
    QList<QRectF> exposed;
    /// Where shapes may show; null for everywhere. Handles and glows are painted outside it too.
    QRectF contentClip;

    /// Whether something in a box has to be painted.
    [[nodiscard]] bool isExposed(const QRectF &box) const
    {
        return exposed.isEmpty() ||
               std::any_of(exposed.begin(), exposed.end(), [&box](const QRectF &part) { return part.intersects(box); });
    }

    /// The canvas, or 200,000 units square around the origin when none is set.
    [[nodiscard]] QRectF canvasOrEverything() const
    {
        return canvasBounds.isEmpty() ? QRectF(-100000, -100000, 200000, 200000) : canvasBounds;
    }
};

} // namespace tavrel
