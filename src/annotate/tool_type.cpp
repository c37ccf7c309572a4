#include "annotate/tool_type.h"

#include <array>

namespace tavrel {
namespace {

constexpr std::array<const char *, 27> kNames{
    "none",      "rect",     "circle", "line",       "arrow",           "pen",       "marker",
    "eraser",    "sequence", "mosaic", "mosaic_pen", "smart_erase",     "spotlight", "watermark",
    "magnifier", "text",     "ocr",    "ai_vision",  "record",          "undo",      "redo",
    "cancel",    "save",     "copy",   "pin",        "long_screenshot", "cloud"};

} // namespace

QString toolTypeName(ToolType tool)
{
    const auto index = static_cast<std::size_t>(tool);
    return index < kNames.size() ? QString::fromLatin1(kNames[index]) : QString();
}

ToolType toolTypeFromName(const QString &name, ToolType fallback)
{
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (name == QLatin1String(kNames[i]))
            return static_cast<ToolType>(i);
    }
    return fallback;
}

ToolType toolFamilyHead(ToolType tool)
{
    switch (tool) {
    case ToolType::Circle:
        return ToolType::Rect;
    case ToolType::Line:
        return ToolType::Arrow;
    case ToolType::MosaicPen:
        return ToolType::Mosaic;
    default:
        return tool;
    }
}

} // namespace tavrel
