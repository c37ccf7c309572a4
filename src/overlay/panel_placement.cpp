#include "overlay/panel_placement.h"

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr int kGap = 6;        ///< between toolbar and attribute bar
constexpr int kDistance = 15;  ///< from the selection and from the overlay's lower edge
constexpr int kRightEdge = 20; ///< from the right one, when the toolbar had to move
constexpr int kDraggedEdge = 4;

QPoint beside(const QRectF &selection, const QSize &overlay, const QSize &toolbar, int totalHeight)
{
    int x = static_cast<int>(std::lround(selection.right())) - toolbar.width();
    if (x < kPanelEdge) {
        x = std::max(static_cast<int>(std::lround(selection.left())), kPanelEdge);
        if (x + toolbar.width() > overlay.width() - kRightEdge)
            x = overlay.width() - toolbar.width() - kRightEdge;
    }
    x = std::max(x, kPanelEdge);

    int y = static_cast<int>(std::lround(selection.bottom())) + kDistance;
    if (y + totalHeight > overlay.height() - kDistance) {
        y = static_cast<int>(std::lround(selection.top())) - totalHeight - kDistance;
        if (y <= kDistance)
            y = std::max(overlay.height() - totalHeight - kDistance, kPanelEdge);
    }
    return {x, y};
}

int clampedTo(int value, int size, int extent)
{
    return std::clamp(value, kDraggedEdge, std::max(kDraggedEdge, extent - size - kDraggedEdge));
}

} // namespace

PanelPlacement placePanels(const QRectF &selection, const QSize &overlay, const QSize &toolbar, const QSize &bar,
                           const std::optional<QPoint> &draggedTo)
{
    const int barHeight = bar.isEmpty() ? 0 : bar.height() + kGap;
    PanelPlacement placement;
    placement.toolbar = draggedTo ? QPoint(clampedTo(draggedTo->x(), toolbar.width(), overlay.width()),
                                           clampedTo(draggedTo->y(), toolbar.height(), overlay.height()))
                                  : beside(selection, overlay, toolbar, toolbar.height() + barHeight);
    placement.attributeBar = {std::min(placement.toolbar.x(), overlay.width() - bar.width() - kDraggedEdge),
                              placement.toolbar.y() + toolbar.height() + kGap};
    if (draggedTo && placement.attributeBar.y() + bar.height() > overlay.height() - kDraggedEdge)
        placement.attributeBar.setY(std::max(placement.toolbar.y() - kGap - bar.height(), kDraggedEdge));
    return placement;
}

} // namespace tavrel::ui
