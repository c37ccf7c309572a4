#include "overlay/magnifier.h"

#include "overlay/overlay_picture.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr double kSide = 150;
constexpr double kPanelHeight = 64;
constexpr double kDistance = 20;
constexpr int kCells = 15; ///< pixels shown in each direction, the pointer's in the middle
constexpr double kCell = kSide / kCells;
constexpr double kPanelGap = 4;

QImage lensImage(const OverlayPicture &picture, const QPoint &centre)
{
    // copy() fills what lies outside the picture with transparent pixels.
    QImage cells = picture.image().copy(centre.x() - kCells / 2, centre.y() - kCells / 2, kCells, kCells);
    cells.setDevicePixelRatio(1.0);
    return cells;
}

void paintLens(QPainter &painter, const QRectF &box, const QImage &cells)
{
    const QRectF circle = box.adjusted(3, 3, -3, -3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 55));
    painter.drawEllipse(circle.translated(0, 2).adjusted(-1, -1, 1, 1));

    painter.save();
    QPainterPath clip;
    clip.addEllipse(circle);
    painter.setClipPath(clip, Qt::IntersectClip);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(box, cells);
    painter.setPen(QPen(QColor(0, 0, 0, 28), 1.0));
    for (int i = 1; i < kCells; ++i) {
        const double at = i * kCell;
        painter.drawLine(QPointF(box.left() + at, box.top()), QPointF(box.left() + at, box.bottom()));
        painter.drawLine(QPointF(box.left(), box.top() + at), QPointF(box.right(), box.top() + at));
    }
    painter.restore();

    const QRectF middle(box.left() + 70, box.top() + 70, kCell, kCell);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 200), 2.0));
    painter.drawRect(middle.adjusted(-1, -1, 1, 1));
    painter.setPen(QPen(Qt::white, 1.2));
    painter.drawRect(middle);

    painter.setPen(QPen(QColor(255, 255, 255, 235), 3.0));
    painter.drawEllipse(circle);
    painter.setPen(QPen(QColor(0, 0, 0, 90), 1.0));
    painter.drawEllipse(circle.adjusted(-2, -2, 2, 2));
}

void paintColors(QPainter &painter, const QRectF &panel, const QColor &color, const QString &format)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(28, 28, 30, 230));
    painter.drawRoundedRect(panel, 14, 14);

    const QRectF swatch(panel.left() + 14, panel.top() + 10, 16, 16);
    painter.setPen(QPen(QColor(255, 255, 255, 140), 1.0));
    painter.setBrush(color);
    painter.drawEllipse(swatch);

    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(16);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QPointF(swatch.right() + 10, swatch.bottom() - 2), colorText(color, format));

    painter.setPen(QPen(QColor(255, 255, 255, 51), 1.0));
    painter.drawLine(QPointF(panel.left() + 14, panel.top() + 36), QPointF(panel.left() + 136, panel.top() + 36));

    font.setBold(false);
    font.setPixelSize(12);
    painter.setFont(font);
    painter.setPen(QColor(204, 204, 204));
    const QString keys = QCoreApplication::translate("CaptureOverlay", "Shift 切换 · C 复制");
    painter.drawText(QPointF(panel.left() + 14, panel.top() + 54),
                     QFontMetricsF(font).elidedText(keys, Qt::ElideRight, 122));
}

} // namespace

QRectF magnifierBox(const QPointF &pointer, const MagnifierLook &look, const QSizeF &overlay)
{
    const double height = (look.lens ? kSide : 0) + (look.colors ? kPanelHeight : 0);
    double left = pointer.x() + kDistance;
    if (left + kSide > overlay.width())
        left = pointer.x() - kSide - kDistance;
    double top = pointer.y() + kDistance;
    if (top + height > overlay.height())
        top = pointer.y() - height - kDistance;
    return {std::max(left, 0.0), std::max(top, 0.0), kSide, height};
}

QString colorText(const QColor &color, const QString &format)
{
    if (format == u"rgb")
        return QStringLiteral("%1, %2, %3").arg(color.red()).arg(color.green()).arg(color.blue());
    return color.name(QColor::HexRgb).toUpper();
}

void paintMagnifier(QPainter &painter, const QRectF &box, const OverlayPicture &picture, const QPointF &pointer,
                    const MagnifierLook &look)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (look.lens)
        paintLens(painter, QRectF(box.topLeft(), QSizeF(kSide, kSide)), lensImage(picture, picture.pixelAt(pointer)));
    if (look.colors) {
        const double gap = look.lens ? kPanelGap : 0;
        const QRectF panel(box.left(), box.top() + (look.lens ? kSide : 0) + gap, kSide, kPanelHeight - gap);
        paintColors(painter, panel, picture.colorAt(pointer), look.colorFormat);
    }
    painter.restore();
}

} // namespace tavrel::ui
