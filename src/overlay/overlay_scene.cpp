#include "overlay/overlay_scene.h"

#include "annotate/selection_marks.h"
#include "overlay/overlay_marks.h"
#include "ui/toast.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

QRectF grown(const QRectF &rect, double by)
{
    return rect.isNull() ? QRectF() : rect.adjusted(-by, -by, by, by);
}

void paintPicture(QPainter &painter, const OverlayScene &scene, const QRegion &exposed)
{
    const QRectF clear = scene.selection.isEmpty() ? scene.hover : scene.selection;
    // Under a clip of one rectangle a picture is copied row by row; under that of the whole region it is blended span
    // by span, which takes five times as long.
    for (const QRect &part : exposed) {
        painter.setClipRect(part);
        if (!scene.picture.area().contains(QRectF(part)))
            painter.fillRect(part, Qt::black);
        scene.picture.paintDimmed(painter, scene.ratio);
        if (!clear.isEmpty())
            scene.picture.paintClear(painter, clear, scene.ratio);
    }
    painter.setClipping(false);
}

void paintPage(QPainter &painter, const QImage &page, const QRectF &selection)
{
    painter.save();
    painter.setClipRect(selection, Qt::IntersectClip);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double scale = selection.width() / std::max(1, page.width());
    // Only what shows: the page may be a hundred times as high.
    const int rows = std::min(page.height(), static_cast<int>(std::ceil(selection.height() / scale)));
    painter.drawImage(QRectF(selection.topLeft(), QSizeF(selection.width(), rows * scale)), page,
                      QRectF(0, 0, page.width(), rows));
    painter.restore();
}

} // namespace

PaintedRegions regionsOf(const OverlayScene &scene)
{
    PaintedRegions regions;
    regions.everything = false;
    if (!scene.selection.isEmpty()) {
        regions.selectionBox = grown(scene.selection, 16);
        if (scene.isSelectionChanging)
            regions.selectionRect = scene.selection;
        regions.sizeLabel = grown(scene.sizeLabel, 4);
    }
    regions.hover = grown(scene.hover, 4);
    regions.hint = grown(scene.hintBox, 4);
    regions.hintKey = scene.hintKey;
    regions.magnifier = grown(scene.magnifierBox, 3);
    regions.toast = grown(scene.toast.box(QSizeF(scene.size)), 4);
    return regions;
}

void paintScene(QPainter &painter, const OverlayScene &scene, const QRegion &exposed, MagnifierPainter &magnifier,
                const std::function<void()> &drawing)
{
    paintPicture(painter, scene, exposed);
    const PaintedRegions regions = regionsOf(scene);
    const auto isTouched = [&exposed](const QRectF &part) {
        return !part.isNull() && exposed.intersects(part.toAlignedRect());
    };
    if (!scene.selection.isEmpty()) {
        if (scene.page.isNull())
            drawing();
        else
            paintPage(painter, scene.page, scene.selection);
        paintSelectionMarks(painter, scene.selection, 1.0);
        paintSizeLabel(painter, scene.sizeLabel, scene.sizeText);
    } else if (isTouched(regions.hover)) {
        paintRectOutline(painter, scene.hover, 1.0);
    }
    if (isTouched(regions.hint))
        scene.hints.paint(painter, scene.hintBox.topLeft());
    if (isTouched(regions.magnifier))
        magnifier.paint(painter, scene.magnifierBox, scene.ratio, scene.picture, scene.pointer, scene.magnifier);
    if (isTouched(regions.toast))
        scene.toast.paint(painter, QSizeF(scene.size));
}

} // namespace tavrel::ui
