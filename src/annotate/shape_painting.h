#pragma once

#include "annotate/erase_region.h"
#include "annotate/shape_render_context.h"

#include <QList>
#include <QPainter>
#include <QPointF>

#include <memory>

namespace tavrel {

/// Effects, then spotlights and strokes in order; what lies outside the context's exposed parts may be left out.
///
/// shapes  the last one on top
void paintShapes(QPainter &painter, const QList<std::shared_ptr<BaseShape>> &shapes, const ShapeRenderContext &context);

/// Pixel boxes of all erased places with their solvers.
///
/// imageScale  device pixels per unit
/// origin      of the picture in shape coordinates
[[nodiscard]] QList<EraseSpec> eraseRegions(const QList<std::shared_ptr<BaseShape>> &shapes, double imageScale,
                                            const QPointF &origin = {});

} // namespace tavrel
