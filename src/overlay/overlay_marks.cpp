#include "overlay/overlay_marks.h"

#include "annotate/selection_marks.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>

namespace tavrel::ui {
namespace {

QFont labelFont()
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(12);
    return font;
}

} // namespace

void paintSelectionMarks(QPainter &painter, const QRectF &selection, double handleScale)
{
    const double side = std::min(selection.width(), selection.height());
    paintCornerBrackets(painter, selection, std::max(std::min(0.4 * side, 12.0 * handleScale), 5.0), 5.0, handleScale);
    paintEdgeTicks(painter, selection, std::max(std::min(0.6 * side, 21.0), 6.0), 4.0, handleScale);
}

QString sizeLabelText(const QSize &pixels)
{
    return QStringLiteral("%1 × %2").arg(pixels.width()).arg(pixels.height());
}

QRectF sizeLabelBox(const QRectF &selection, const QString &text, double overlayWidth)
{
    const QFontMetricsF metrics(labelFont());
    const QSizeF size(metrics.horizontalAdvance(text) + 10, metrics.height() + 6);
    double top = selection.top() - size.height() - 5;
    if (top < 0)
        top = selection.top() + 5;
    return {QPointF(std::max(std::min(selection.left(), overlayWidth - size.width()), 0.0), top), size};
}

void paintSizeLabel(QPainter &painter, const QRectF &box, const QString &text)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 153));
    painter.drawRoundedRect(box, 4, 4);
    painter.setPen(Qt::white);
    painter.setFont(labelFont());
    painter.drawText(box, Qt::AlignCenter, text);
    painter.restore();
}

} // namespace tavrel::ui
