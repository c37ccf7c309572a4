#pragma once

#include "platform/element_detector.h"

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

namespace tavrel {

/// The state of a capture that can be stored and taken up again.
struct OverlaySnapshot
{
    QImage image;
    QRectF selection; ///< logical units from the image's top-left
    QString shapesJson;
    QString countersJson;
    QStringList undoStack;
    int undoIndex = 0;
    QList<platform::WindowInfo> windows;
};

} // namespace tavrel
