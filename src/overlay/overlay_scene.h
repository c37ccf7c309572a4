#pragma once

#include "overlay/magnifier.h"
#include "overlay/overlay_hints.h"
#include "overlay/overlay_picture.h"
#include "overlay/painted_regions.h"

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QRegion>
#include <QSize>
#include <QString>

#include <functional>

class QPainter;

namespace tavrel::ui {

class Toast;

/// All that an overlay shows at one moment, but for its panels, which are widgets. Overlay coordinates; a null
/// rectangle stands for what is not shown. It points at what the overlay owns and lives for one call.
struct OverlayScene
{
    const OverlayPicture &picture;
    const HintCard &hints;
    const Toast &toast;
    const QImage &page; ///< a stitched page, which stands in for what is drawn; null for none
    QSize size;         ///< of the overlay
    double ratio = 1;   ///< device pixels per unit
    QRectF selection{};
    bool isSelectionChanging = false;
    QString sizeText{};
    QRectF sizeLabel{};
    QRectF hover{};
    QRectF hintBox{};
    int hintKey = 0;
    MagnifierLook magnifier{};
    QRectF magnifierBox{};
    QPointF pointer{};
};

/// Where the parts of a scene are, for finding out what has to be painted anew.
[[nodiscard]] PaintedRegions regionsOf(const OverlayScene &scene);

/// Paints what is exposed of a scene.
///
/// magnifier  keeps its pictures from paint to paint
/// drawing    paints the annotations over the clear picture; not called without a selection
void paintScene(QPainter &painter, const OverlayScene &scene, const QRegion &exposed, MagnifierPainter &magnifier,
                const std::function<void()> &drawing);

} // namespace tavrel::ui
