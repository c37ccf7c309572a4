#include "overlay/selection_geometry.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kHandleReach = 16;

std::array<QPointF, 8> handlePoints(const QRectF &r)
{
    const QPointF middle = r.center();
    return {r.topLeft(),
            QPointF(middle.x(), r.top()),
            r.topRight(),
            QPointF(r.left(), middle.y()),
            QPointF(r.right(), middle.y()),
            r.bottomLeft(),
            QPointF(middle.x(), r.bottom()),
            r.bottomRight()};
}

bool movesLeft(int handle)
{
    return handle == 0 || handle == 3 || handle == 5;
}
bool movesRight(int handle)
{
    return handle == 2 || handle == 4 || handle == 7;
}
bool movesTop(int handle)
{
    return handle == 0 || handle == 1 || handle == 2;
}
bool movesBottom(int handle)
{
    return handle == 5 || handle == 6 || handle == 7;
}

QPointF clamped(const QPointF &point, const QRectF &area)
{
    return {std::clamp(point.x(), area.left(), area.right()), std::clamp(point.y(), area.top(), area.bottom())};
}

} // namespace

int hitBroad(const QRectF &selection, const QPointF &point)
{
    if (!(selection.width() > 0))
        return kNoHit;
    const auto points = handlePoints(selection);
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (std::abs(point.x() - points[i].x()) < kHandleReach && std::abs(point.y() - points[i].y()) < kHandleReach)
            return static_cast<int>(i);
    }
    const bool inside = point.x() > selection.left() && point.x() < selection.right() && point.y() > selection.top() &&
                        point.y() < selection.bottom();
    return inside ? kInsideHit : kNoHit;
}

int hitNarrow(const QRectF &selection, const QPointF &point)
{
    const double width = selection.width();
    const double height = selection.height();
    if (!(width > 0 && height > 0))
        return kNoHit;
    const double corner = std::min(20.0, std::max(6.0, 0.25 * std::min(width, height)));
    const auto points = handlePoints(selection);
    for (const int handle : {0, 2, 5, 7}) {
        const QPointF &at = points[static_cast<std::size_t>(handle)];
        if (std::abs(point.x() - at.x()) <= corner && std::abs(point.y() - at.y()) <= corner)
            return handle;
    }
    if (!selection.adjusted(-corner, -corner, corner, corner).contains(point))
        return kNoHit;
    const double edgeX = std::min(12.0, 0.4 * width);
    const double edgeY = std::min(12.0, 0.4 * height);
    if (point.y() - selection.top() <= edgeY)
        return 1;
    if (selection.bottom() - point.y() <= edgeY)
        return 6;
    if (point.x() - selection.left() <= edgeX)
        return 3;
    if (selection.right() - point.x() <= edgeX)
        return 4;
    return kNoHit;
}

Qt::CursorShape cursorOfHit(int hit)
{
    switch (hit) {
    case 0:
    case 7:
        return Qt::SizeFDiagCursor;
    case 2:
    case 5:
        return Qt::SizeBDiagCursor;
    case 1:
    case 6:
        return Qt::SizeVerCursor;
    case 3:
    case 4:
        return Qt::SizeHorCursor;
    case kInsideHit:
        return Qt::OpenHandCursor;
    default:
        return Qt::CrossCursor;
    }
}

QRectF resizedSelection(const QRectF &pressed, int handle, const QPointF &delta, const QRectF &area)
{
    QRectF result = pressed;
    if (movesLeft(handle))
        result.setLeft(result.left() + delta.x());
    if (movesRight(handle))
        result.setRight(result.right() + delta.x());
    if (movesTop(handle))
        result.setTop(result.top() + delta.y());
    if (movesBottom(handle))
        result.setBottom(result.bottom() + delta.y());
    return result.normalized().intersected(area);
}

QRectF movedSelection(const QRectF &pressed, const QPointF &delta, const QRectF &area)
{
    QRectF moved = pressed.translated(delta);
    moved.moveLeft(std::clamp(moved.left(), area.left(), std::max(area.left(), area.right() - moved.width())));
    moved.moveTop(std::clamp(moved.top(), area.top(), std::max(area.top(), area.bottom() - moved.height())));
    return moved;
}

QRectF bandSelection(const QPointF &from, const QPointF &to, const QRectF &area)
{
    return QRectF(clamped(from, area), clamped(to, area)).normalized();
}

QRect coveredPixels(const QRectF &selection, double ratio, const QSize &pixels)
{
    const QRect covered(QPoint(static_cast<int>(std::floor(selection.left() * ratio)),
                               static_cast<int>(std::floor(selection.top() * ratio))),
                        QPoint(static_cast<int>(std::ceil(selection.right() * ratio)) - 1,
                               static_cast<int>(std::ceil(selection.bottom() * ratio)) - 1));
    return covered.intersected(QRect(QPoint(0, 0), pixels));
}

QPointF centredOrigin(const QSizeF &picture, const QSizeF &overlay, double ratio)
{
    const auto centred = [ratio](double outer, double inner) {
        return std::round((outer - inner) / 2 * ratio) / ratio;
    };
    return {centred(overlay.width(), picture.width()), centred(overlay.height(), picture.height())};
}

} // namespace tavrel::ui
