#include "ui/color_sv_area.h"

#include "ui/color_paint.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tavrel::ui {
namespace {

constexpr qreal kRadius = 10;
constexpr qreal kHandleRadius = 8;

} // namespace

ColorSvArea::ColorSvArea(QWidget *parent) : ColorSlider(parent)
{
    setObjectName(QStringLiteral("colorSvArea"));
    setCursor(Qt::CrossCursor);
}

void ColorSvArea::setHsv(const Hsv &hsv)
{
    if (hsv != m_hsv)
        take(hsv);
}

void ColorSvArea::take(const Hsv &hsv)
{
    const bool sameHue = hsv.hue == m_hsv.hue;
    updateHandle();
    m_hsv = hsv;
    if (sameHue)
        updateHandle();
    else
        update();
    announce();
}

QString ColorSvArea::valueText() const
{
    return tr("饱和度 %1%，明度 %2%").arg(std::lround(m_hsv.saturation * 100)).arg(std::lround(m_hsv.value * 100));
}

void ColorSvArea::moveTo(const QPointF &point)
{
    take({m_hsv.hue, std::clamp(point.x() / std::max(1, width() - 1), 0.0, 1.0),
          1 - std::clamp(point.y() / std::max(1, height() - 1), 0.0, 1.0)});
}

void ColorSvArea::stepBy(const QPointF &fractions)
{
    take({m_hsv.hue, std::clamp(m_hsv.saturation + fractions.x(), 0.0, 1.0),
          std::clamp(m_hsv.value + fractions.y(), 0.0, 1.0)});
}

QPointF ColorSvArea::handle() const
{
    // Whole inside of the widget, so that nothing of it is cut off.
    const QPointF place(m_hsv.saturation * (width() - 1), (1 - m_hsv.value) * (height() - 1));
    return {std::clamp(place.x(), kHandleRadius + 1, width() - kHandleRadius - 1),
            std::clamp(place.y(), kHandleRadius + 1, height() - kHandleRadius - 1)};
}

void ColorSvArea::updateHandle()
{
    constexpr int kRoom = static_cast<int>(kHandleRadius) + 2;
    update(QRect(handle().toPoint(), QSize(1, 1)).adjusted(-kRoom, -kRoom, kRoom, kRoom));
}

void ColorSvArea::makeGradient()
{
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(size()) * ratio).toSize();
    if (m_gradientHue == m_hsv.hue && m_gradient.size() == pixels && m_gradient.devicePixelRatio() == ratio)
        return;
    ++m_gradientsMade;
    m_gradientHue = m_hsv.hue;
    const QColor pure = colorOf({m_hsv.hue, 1, 1});
    QImage square(pixels, QImage::Format_RGB32);
    const int right = std::max(1, pixels.width() - 1);
    const int bottom = std::max(1, pixels.height() - 1);
    // The top row goes from white to the pure hue; every other one is that row, darker.
    constexpr int kBits = 16;
    constexpr int kWhole = 1 << kBits;
    std::vector<std::array<uint, 3>> top(static_cast<size_t>(pixels.width()));
    for (int x = 0; x < pixels.width(); ++x) {
        const auto mixed = [&](int channel) { return static_cast<uint>(255 + (channel - 255) * x / right); };
        top[static_cast<size_t>(x)] = {mixed(pure.red()), mixed(pure.green()), mixed(pure.blue())};
    }
    for (int y = 0; y < pixels.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(square.scanLine(y));
        const auto light = static_cast<uint>((bottom - std::min(y, bottom)) * kWhole / bottom);
        for (const auto &[red, green, blue] : top)
            *line++ =
                0xff000000U | (red * light >> kBits) << 16 | (green * light >> kBits) << 8 | blue * light >> kBits;
    }
    m_gradient = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    m_gradient.fill(Qt::transparent);
    QPainter painter(&m_gradient);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(square);
    painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(pixels)), kRadius * ratio, kRadius * ratio);
    painter.end();
    m_gradient.setDevicePixelRatio(ratio);
}

void ColorSvArea::paintEvent(QPaintEvent *event)
{
    makeGradient();
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawImage(0, 0, m_gradient);
    paintHandle(painter, handle(), kHandleRadius, colorOf(m_hsv));
    if (showsFocus())
        paintFocusRing(painter, rect(), kRadius, theme());
}

} // namespace tavrel::ui
