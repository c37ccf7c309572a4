#include "annotate/image_transform.h"

namespace tavrel {

QPointF ImageTransform::map(const QPointF &point) const
{
    switch (kind) {
    case Kind::RotateCw:
        return {extent - point.y(), point.x()};
    case Kind::RotateCcw:
        return {point.y(), extent - point.x()};
    case Kind::FlipHorizontal:
        return {extent - point.x(), point.y()};
    }
    return point;
}

QRectF ImageTransform::mapBox(const QRectF &box) const
{
    return QRectF(map(box.topLeft()), map(box.bottomRight())).normalized();
}

} // namespace tavrel
