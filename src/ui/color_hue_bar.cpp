#include "ui/color_hue_bar.h"

#include "ui/color_value.h"

#include <QPainter>

#include <cmath>

namespace tavrel::ui {

ColorHueBar::ColorHueBar(QWidget *parent) : ColorBar(parent)
{
    setObjectName(QStringLiteral("colorHueBar"));
}

void ColorHueBar::setHue(double hue)
{
    if (hue == m_hue)
        return;
    m_hue = hue;
    update();
    announce();
}

QString ColorHueBar::valueText() const
{
    return QStringLiteral("%1°").arg(std::lround(m_hue * 360));
}

void ColorHueBar::paintTrack(QPainter &painter, const QRectF &track) const
{
    constexpr int kSixths = 6;
    const qreal radius = track.height() / 2;
    // The colours stand where the handle's centre comes to.
    QLinearGradient gradient(track.left() + radius, 0, track.right() - radius, 0);
    for (int i = 0; i <= kSixths; ++i)
        gradient.setColorAt(static_cast<double>(i) / kSixths, colorOf({static_cast<double>(i) / kSixths, 1, 1}));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(gradient);
    painter.drawRoundedRect(track, radius, radius);
    painter.restore();
}

QColor ColorHueBar::handleColor() const
{
    return colorOf({m_hue, 1, 1});
}

} // namespace tavrel::ui
