#pragma once

#include <QColor>
#include <QString>

#include <optional>

namespace tavrel::ui {

/// A colour as a chooser keeps it: each part 0 to 1, fine enough to come back to the same 8-bit colour, and with a hue
/// and a saturation that outlive grey and black.
struct Hsv
{
    double hue = 0;
    double saturation = 0;
    double value = 0;

    friend bool operator==(const Hsv &, const Hsv &) = default;
};

/// The hue of a grey is `greyHue`.
[[nodiscard]] Hsv hsvOf(const QColor &color, double greyHue);
/// Opaque, in whole 8-bit steps.
[[nodiscard]] QColor colorOf(const Hsv &hsv);

/// The form of shapes and settings: "#RRGGBB", below an alpha of 0.995 "#AARRGGBB", in upper case.
[[nodiscard]] QString hexOf(const QColor &color);
/// The same with an alpha (0 to 1) beside the colour, whose own one does not count.
[[nodiscard]] QString hexOf(const QColor &color, double alpha);

/// What stands in for a text that is no colour.
inline constexpr QColor fallbackColor{0xF9, 0x34, 0x42};

/// A text that names a colour, taken apart.
struct ColorText
{
    QColor color;                ///< opaque
    std::optional<double> alpha; ///< 0 to 1; only of a text that says it
};
/// Reads "#AARRGGBB" and "RRGGBB" or "RGB" with or without "#", in any case and with blanks around.
[[nodiscard]] std::optional<ColorText> readColorText(const QString &text);

} // namespace tavrel::ui
