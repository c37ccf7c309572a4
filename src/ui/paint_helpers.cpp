#include "ui/paint_helpers.h"

#include "ui/theme.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {

void softShadow(QPainter &painter, const QRectF &rect, qreal radius, qreal spread, qreal offsetY, const QColor &color)
{
    if (spread <= 0 || color.alpha() == 0)
        return;
    constexpr int layers = 12;
    QColor layer = color;
    layer.setAlphaF(std::min(1.0F, color.alphaF() / layers * 1.3F));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(layer);
    for (int i = 0; i < layers; ++i) {
        const qreal growth = spread / 2 * (1.0 - static_cast<qreal>(i) / layers);
        const QRectF grown = rect.translated(0, offsetY).adjusted(-growth, -growth, growth, growth);
        painter.drawRoundedRect(grown, radius + growth, radius + growth);
    }
    painter.restore();
}

void panelSurface(QPainter &painter, const QRectF &rect, const Theme &theme)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme.cardBorder(), 0.5));
    painter.setBrush(theme.cardSurface());
    painter.drawRoundedRect(rect.adjusted(0.25, 0.25, -0.25, -0.25), 12, 12);
    painter.restore();
}

QString swatchEdgeColor(const QColor &color)
{
    const double luma = 0.299 * color.red() + 0.587 * color.green() + 0.114 * color.blue();
    const auto edge = [veryDark = luma < 60](int channel) {
        return static_cast<int>(std::lround(veryDark ? channel + (255 - channel) * 0.28 : channel * 0.7));
    };
    return QColor(edge(color.red()), edge(color.green()), edge(color.blue())).name();
}

} // namespace tavrel::ui
