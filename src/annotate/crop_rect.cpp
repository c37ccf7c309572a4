#include "annotate/crop_rect.h"

#include <cmath>

namespace tavrel {

QRect cropRect(const QRectF &selection, double ratio, const QSize &pixels)
{
    const auto edge = [ratio](double at) { return static_cast<int>(std::lround(at * ratio)); };
    const QRect crop(QPoint(edge(selection.left()), edge(selection.top())),
                     QPoint(edge(selection.right()) - 1, edge(selection.bottom()) - 1));
    return crop.intersected(QRect(QPoint(0, 0), pixels));
}

} // namespace tavrel
