#pragma once

#include <QString>

#include <span>

namespace tavrel::ui {

/// Where a watermark stands.
struct WatermarkMode
{
    const char *word;  ///< as the shape stores it
    const char *label; ///< source text in the context "WatermarkShape"
    const char *glyph; ///< of the attribute set
};

/// A piece of the time that can be put into a watermark.
struct WatermarkToken
{
    const char *label; ///< source text in the context "WatermarkShape"
    const char *pattern;
};

/// In the order of the menus; a tiled one comes first.
[[nodiscard]] std::span<const WatermarkMode> watermarkModes();
/// The mode of a stored word; an unknown one is centred, as it is painted.
[[nodiscard]] const WatermarkMode &watermarkModeOf(const QString &word);
[[nodiscard]] std::span<const WatermarkToken> watermarkTokens();

} // namespace tavrel::ui
