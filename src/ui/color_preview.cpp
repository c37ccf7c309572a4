#include "ui/color_preview.h"

#include "ui/color_paint.h"

#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr qreal kCell = 6;
constexpr qreal kRadius = 12;

} // namespace

ColorPreview::ColorPreview(QWidget *parent) : QWidget(parent), m_theme(lightTheme())
{
    setObjectName(QStringLiteral("colorPreview"));
}

void ColorPreview::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void ColorPreview::applyTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ColorPreview::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_color.alpha() < 255)
        paintChessboard(painter, rect(), kCell, m_theme.dark);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(chipBorder(m_color), 1));
    painter.setBrush(m_color);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

} // namespace tavrel::ui
