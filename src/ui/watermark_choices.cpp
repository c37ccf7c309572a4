#include "ui/watermark_choices.h"

#include <QtGlobal>

#include <algorithm>
#include <array>

namespace tavrel::ui {
namespace {

constexpr std::array<WatermarkMode, 8> kModes{{
    {"tile", QT_TRANSLATE_NOOP("WatermarkShape", "平铺"), "wmTile"},
    {"br", QT_TRANSLATE_NOOP("WatermarkShape", "右下角"), "wmBR"},
    {"bl", QT_TRANSLATE_NOOP("WatermarkShape", "左下角"), "wmBL"},
    {"tr", QT_TRANSLATE_NOOP("WatermarkShape", "右上角"), "wmTR"},
    {"tl", QT_TRANSLATE_NOOP("WatermarkShape", "左上角"), "wmTL"},
    {"tc", QT_TRANSLATE_NOOP("WatermarkShape", "顶部居中"), "wmTC"},
    {"bc", QT_TRANSLATE_NOOP("WatermarkShape", "底部居中"), "wmBC"},
    {"center", QT_TRANSLATE_NOOP("WatermarkShape", "居中"), "wmCenter"},
}};

constexpr std::array<WatermarkToken, 10> kTokens{{
    {QT_TRANSLATE_NOOP("WatermarkShape", "年月日"), "yyyy-MM-dd"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "时分秒"), "HH:mm:ss"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "年"), "yyyy"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "月"), "MM"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "日"), "dd"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "时"), "HH"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "12时"), "hh"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "分"), "mm"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "秒"), "ss"},
    {QT_TRANSLATE_NOOP("WatermarkShape", "上午/下午"), "a"},
}};

} // namespace

std::span<const WatermarkMode> watermarkModes()
{
    return kModes;
}

const WatermarkMode &watermarkModeOf(const QString &word)
{
    const auto *found = std::find_if(kModes.begin(), kModes.end(),
                                     [&word](const WatermarkMode &mode) { return word == QLatin1String(mode.word); });
    return found == kModes.end() ? kModes.back() : *found;
}

std::span<const WatermarkToken> watermarkTokens()
{
    return kTokens;
}

} // namespace tavrel::ui
