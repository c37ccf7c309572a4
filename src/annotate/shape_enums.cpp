#include "annotate/shape_enums.h"

#include <array>

namespace tavrel {
namespace {

constexpr std::array kArrowStyles{"standard", "wedge", "wedge_outline", "line", "double"};
constexpr std::array kNumberTypes{"arabic", "upper_letter", "lower_letter", "chinese", "roman_upper", "roman_lower"};
constexpr std::array kTextStyles{"standard", "border", "background", "round_bg"};
constexpr std::array kMosaicModes{"mosaic", "blur"};
constexpr std::array kEraseSolvers{"auto", "smooth", "texture", "wholeBox"};

template <typename Enum, std::size_t Size>
QString nameIn(const std::array<const char *, Size> &names, Enum value)
{
    const auto index = static_cast<std::size_t>(value);
    return index < Size ? QString::fromLatin1(names[index]) : QString();
}

template <typename Enum, std::size_t Size>
Enum valueIn(const std::array<const char *, Size> &names, const QString &name, Enum fallback)
{
    for (std::size_t i = 0; i < Size; ++i) {
        if (name == QLatin1String(names[i]))
            return static_cast<Enum>(i);
    }
    return fallback;
}

} // namespace

QString enumName(ArrowStyle value)
{
    return nameIn(kArrowStyles, value);
}
QString enumName(NumberType value)
{
    return nameIn(kNumberTypes, value);
}
QString enumName(TextStyle value)
{
    return nameIn(kTextStyles, value);
}
QString enumName(MosaicMode value)
{
    return nameIn(kMosaicModes, value);
}
QString enumName(EraseSolver value)
{
    return nameIn(kEraseSolvers, value);
}

ArrowStyle arrowStyleFromName(const QString &name, ArrowStyle fallback)
{
    return valueIn(kArrowStyles, name, fallback);
}
NumberType numberTypeFromName(const QString &name, NumberType fallback)
{
    return valueIn(kNumberTypes, name, fallback);
}
TextStyle textStyleFromName(const QString &name, TextStyle fallback)
{
    return valueIn(kTextStyles, name, fallback);
}
MosaicMode mosaicModeFromName(const QString &name, MosaicMode fallback)
{
    return valueIn(kMosaicModes, name, fallback);
}
EraseSolver eraseSolverFromName(const QString &name, EraseSolver fallback)
{
    return valueIn(kEraseSolvers, name, fallback);
}

} // namespace tavrel
