#pragma once

#include "annotate/shape_enums.h"

#include <QString>

namespace tavrel {

/// What the next shape will look like. Lengths are image logical units, already multiplied by the display scale where
/// a base value stands beside them.
struct ShapeAttributes
{
    QString color = QStringLiteral("#F93442");
    double thickness = 3.0;
    double fontSize = 28.0;
    double displayScale = 1.0; ///< image pixels to logical pixels of the host
    double baseThickness = 3.0;
    double baseFontSize = 28.0;
    QString fontFamily;
    ArrowStyle arrowStyle = ArrowStyle::Standard;
    bool markerRectMode = false;
    TextStyle textStyle = TextStyle::Standard;
    MosaicMode mosaicMode = MosaicMode::Mosaic;
    double mosaicStrength = 15.0;
    double blurStrength = 3.0;
    bool spotlightRound = false;
    double spotlightDim = 0.6;
    bool magnifierRound = true;
    double magnifierZoom = 2.0;
    double magnifierDash = 7.0;
    bool eraseWholeBox = false;
    QString watermarkText;
    QString watermarkMode = QStringLiteral("tile");
    double watermarkOpacity = 0.3;   ///< 0.05 to 1.0
    double watermarkFontSize = 20.0; ///< logical, 8 to 200
    NumberType sequenceType = NumberType::Arabic;
    bool sequenceArrow = true; ///< whether the next badge has a tail

    /// The strength that belongs to the present mosaic mode.
    [[nodiscard]] double activeMosaicStrength() const
    {
        return mosaicMode == MosaicMode::Mosaic ? mosaicStrength : blurStrength;
    }

    friend bool operator==(const ShapeAttributes &, const ShapeAttributes &) = default;
};

/// One attribute, for handing a change to the selected shape.
enum class ShapeAttribute {
    Color,
    Thickness,
    FontSize,
    FontFamily,
    ArrowStyle,
    TextStyle,
    MosaicMode,
    MosaicStrength,
    BlurStrength,
    SpotlightRound,
    SpotlightDim,
    MagnifierRound,
    MagnifierZoom,
    MagnifierDash,
    EraseWholeBox,
    SequenceArrow,
    Watermark, ///< text, mode, opacity, font and colour of the watermark at once
};

} // namespace tavrel
