#pragma once

#include <QString>

namespace tavrel {

enum class ArrowStyle : qint32 { Standard = 0, Wedge = 1, WedgeOutline = 2, Line = 3, Double = 4 };
enum class NumberType : qint32 {
    Arabic = 0,
    UpperLetter = 1,
    LowerLetter = 2,
    Chinese = 3,
    RomanUpper = 4,
    RomanLower = 5,
};
inline constexpr int kNumberTypeCount = 6;
enum class TextStyle : qint32 { Standard = 0, Border = 1, Background = 2, RoundBackground = 3 };
enum class MosaicMode : qint32 { Mosaic = 0, Blur = 1 };
enum class EraseSolver : qint32 { Auto = 0, Smooth = 1, Texture = 2, WholeBox = 3 };

/// The stored word of a value, empty for a value outside its enum.
[[nodiscard]] QString enumName(ArrowStyle value);
[[nodiscard]] QString enumName(NumberType value);
[[nodiscard]] QString enumName(TextStyle value);
[[nodiscard]] QString enumName(MosaicMode value);
[[nodiscard]] QString enumName(EraseSolver value);

/// The value of a stored word, `fallback` for an unknown one.
[[nodiscard]] ArrowStyle arrowStyleFromName(const QString &name, ArrowStyle fallback = ArrowStyle::Standard);
[[nodiscard]] NumberType numberTypeFromName(const QString &name, NumberType fallback = NumberType::Arabic);
[[nodiscard]] TextStyle textStyleFromName(const QString &name, TextStyle fallback = TextStyle::Standard);
[[nodiscard]] MosaicMode mosaicModeFromName(const QString &name, MosaicMode fallback = MosaicMode::Mosaic);
[[nodiscard]] EraseSolver eraseSolverFromName(const QString &name, EraseSolver fallback = EraseSolver::Auto);

} // namespace tavrel
