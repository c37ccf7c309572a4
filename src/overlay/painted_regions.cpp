#include "overlay/painted_regions.h"

namespace tavrel::ui {
namespace {

constexpr int kGrow = 2;
constexpr int kFrame = 18;      ///< how far the marks of a selection reach to either side of its edge
constexpr int kHoverFrame = 10; ///< how far inside the region of a hovered rectangle its outline can stand

QRect grown(const QRectF &rect, int by)
{
    return rect.isNull() ? QRect() : rect.toAlignedRect().adjusted(-by, -by, by, by);
}

QRegion frameOf(const QRectF &rect)
{
    const QRect outer = grown(rect, kFrame);
    const QRect inner = rect.toAlignedRect().adjusted(kFrame, kFrame, -kFrame, -kFrame);
    return inner.isValid() ? QRegion(outer).subtracted(inner) : QRegion(outer);
}

} // namespace

QRegion dirtyRegion(const PaintedRegions &before, const PaintedRegions &now, const QRect &overlay)
{
    if (before.everything || now.everything)
        return overlay;
    QRegion dirty;
    const auto add = [&dirty](const QRectF &rect) {
        const QRect area = grown(rect, kGrow);
        if (!area.isEmpty())
            dirty += area;
    };
    const auto addBoth = [&](QRectF PaintedRegions::*part) {
        add(before.*part);
        add(now.*part);
    };
    const auto addChanged = [&](QRectF PaintedRegions::*part) {
        if (before.*part != now.*part)
            addBoth(part);
    };
    if (before.selectionRect.isNull() || now.selectionRect.isNull()) {
        addChanged(&PaintedRegions::selectionBox);
    } else {
        dirty += frameOf(before.selectionRect);
        dirty += frameOf(now.selectionRect);
        dirty += QRegion(grown(before.selectionRect, 1)).xored(grown(now.selectionRect, 1));
    }
    addBoth(&PaintedRegions::sizeLabel);
    if (before.hover.isNull() || now.hover.isNull()) {
        addChanged(&PaintedRegions::hover);
    } else if (before.hover != now.hover) {
        // A gliding frame: inside both rectangles the picture stays as it is.
        const QRect from = grown(before.hover, kGrow);
        const QRect to = grown(now.hover, kGrow);
        const auto inside = [](const QRect &rect) {
            return QRegion(rect.adjusted(kHoverFrame, kHoverFrame, -kHoverFrame, -kHoverFrame));
        };
        dirty += QRegion(from).united(to).subtracted(inside(from).intersected(inside(to)));
    }
    addBoth(&PaintedRegions::magnifier);
    addBoth(&PaintedRegions::toast);
    if (before.hint != now.hint || before.hintKey != now.hintKey)
        addBoth(&PaintedRegions::hint);
    return dirty.intersected(overlay);
}

} // namespace tavrel::ui
