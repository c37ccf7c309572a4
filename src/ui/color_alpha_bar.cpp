#include "ui/color_alpha_bar.h"

#include "ui/color_paint.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr qreal kCell = 4;

} // namespace

ColorAlphaBar::ColorAlphaBar(QWidget *parent) : ColorBar(parent)
{
    setObjectName(QStringLiteral("colorAlphaBar"));
}

void ColorAlphaBar::setColor(const QColor &color)
{
    if (color == m_color)
        return;
    m_color = color;
    m_color.setAlpha(255);
    update();
}

void ColorAlphaBar::setAlpha(double alpha)
{
    const double limited = std::clamp(alpha, kLeastAlpha, 1.0);
    if (limited == m_alpha)
        return;
    m_alpha = limited;
    update();
    announce();
}

QString ColorAlphaBar::valueText() const
{
    return QStringLiteral("%1%").arg(std::lround(m_alpha * 100));
}

void ColorAlphaBar::paintTrack(QPainter &painter, const QRectF &track) const
{
    paintChessboard(painter, track, kCell, theme().dark);
    const qreal radius = track.height() / 2;
    QColor clear = m_color;
    clear.setAlpha(0);
    QLinearGradient gradient(track.left() + radius, 0, track.right() - radius, 0);
    gradient.setColorAt(0, clear);
    gradient.setColorAt(1, m_color);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(chipBorder(m_color), 0.5));
    painter.setBrush(gradient);
    painter.drawRoundedRect(track, radius, radius);
    painter.restore();
}

} // namespace tavrel::ui
