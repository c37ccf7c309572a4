#include "ui/color_paint.h"

#include "ui/theme.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

class Kept final
{
public:
    explicit Kept(QPainter &painter) : m_painter(painter)
    {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
    }
    ~Kept() { m_painter.restore(); }
    Kept(const Kept &) = delete;
    Kept &operator=(const Kept &) = delete;

private:
    QPainter &m_painter;
};

QRectF inset(const QRectF &rect, qreal by)
{
    return rect.adjusted(by, by, -by, -by);
}

} // namespace

void paintChessboard(QPainter &painter, const QRectF &rect, qreal cell, bool dark)
{
    const QColor even = dark ? QColor(70, 70, 74) : QColor(255, 255, 255);
    const QColor odd = dark ? QColor(100, 100, 106) : QColor(214, 214, 218);
    const qreal radius = std::min(12.0, rect.height() / 2);
    QPainterPath outline;
    outline.addRoundedRect(rect, radius, radius);
    QPainterPath cells;
    const int rows = static_cast<int>(std::ceil(rect.height() / cell));
    const int columns = static_cast<int>(std::ceil(rect.width() / cell));
    for (int row = 0; row < rows; ++row) {
        for (int column = (row + 1) % 2; column < columns; column += 2)
            cells.addRect(QRectF(rect.left() + column * cell, rect.top() + row * cell, cell, cell));
    }
    const Kept kept(painter);
    painter.setPen(Qt::NoPen);
    painter.fillPath(outline, even);
    painter.fillPath(cells.intersected(outline), odd);
}

QColor chipBorder(const QColor &color)
{
    const double luminance = 0.299 * color.red() + 0.587 * color.green() + 0.114 * color.blue();
    if (luminance > 200)
        return {0, 0, 0, 70};
    if (luminance < 50)
        return {255, 255, 255, 90};
    return {0, 0, 0, 40};
}

void paintChip(QPainter &painter, const QRectF &circle, const QColor &color)
{
    const Kept kept(painter);
    painter.setPen(QPen(chipBorder(color), 1));
    painter.setBrush(color);
    painter.drawEllipse(inset(circle, 0.5));
}

void paintSelectionRing(QPainter &painter, const QRectF &rect)
{
    const Kept kept(painter);
    painter.setPen(QPen(selectionBlue, 1.8));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(inset(rect, 2));
}

void paintHandle(QPainter &painter, const QPointF &centre, qreal radius, const QColor &color)
{
    const Kept kept(painter);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 55));
    painter.drawEllipse(centre + QPointF(0, 0.5), radius, radius);
    painter.setBrush(Qt::white);
    painter.drawEllipse(centre, radius - 0.75, radius - 0.75);
    painter.setPen(QPen(QColor(0, 0, 0, 28), 0.75));
    painter.setBrush(color);
    painter.drawEllipse(centre, radius - 3.25, radius - 3.25);
}

void paintFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const Theme &theme)
{
    const Kept kept(painter);
    painter.setPen(QPen(theme.accent(), 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(inset(rect, 0.75), radius, radius);
}

} // namespace tavrel::ui
