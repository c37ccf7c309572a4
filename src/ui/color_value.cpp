#include "ui/color_value.h"

#include "base/color_text.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::ui {

Hsv hsvOf(const QColor &color, double greyHue)
{
    const std::array<double, 3> parts{color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0};
    const auto [low, high] = std::minmax_element(parts.begin(), parts.end());
    const double range = *high - *low;
    Hsv hsv{greyHue, 0, *high};
    if (range <= 0)
        return hsv;
    hsv.saturation = range / *high;
    const auto [red, green, blue] = parts;
    if (high == &parts[0])
        hsv.hue = (green - blue) / range;
    else if (high == &parts[1])
        hsv.hue = 2 + (blue - red) / range;
    else
        hsv.hue = 4 + (red - green) / range;
    hsv.hue /= 6;
    if (hsv.hue < 0)
        hsv.hue += 1;
    return hsv;
}

QColor colorOf(const Hsv &hsv)
{
    const double turn = (hsv.hue - std::floor(hsv.hue)) * 6;
    const auto channel = [&](double offset) {
        // Each channel is full over two sixths of the circle and falls off over one on either side.
        const double place = std::fmod(turn + offset, 6);
        const double share = std::clamp(std::min(place, 4 - place), 0.0, 1.0);
        return static_cast<int>(std::lround(255 * hsv.value * (1 - hsv.saturation * share)));
    };
    return {channel(5), channel(3), channel(1)};
}

QString hexOf(const QColor &color)
{
    return hexOf(color, color.alphaF());
}

QString hexOf(const QColor &color, double alpha)
{
    constexpr double kOpaque = 0.995;
    const QString rgb = color.name(QColor::HexRgb).mid(1).toUpper();
    if (alpha >= kOpaque)
        return u'#' + rgb;
    const auto byte = std::clamp(static_cast<int>(std::lround(alpha * 255)), 0, 255);
    return QStringLiteral("#%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper() + rgb;
}

std::optional<ColorText> readColorText(const QString &text)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral("#([0-9A-Fa-f]{2})([0-9A-Fa-f]{6})|#?([0-9A-Fa-f]{6}|[0-9A-Fa-f]{3})")));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return {};
    if (match.capturedLength(1) > 0)
        return ColorText{colorFromText(match.captured(2)), match.captured(1).toInt(nullptr, 16) / 255.0};
    return ColorText{colorFromText(match.captured(3)), {}};
}

} // namespace tavrel::ui
