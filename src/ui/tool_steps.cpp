#include "ui/tool_steps.h"

#include "annotate/shape_document.h"

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr StepRange kMosaicStrength{5, 40};
constexpr StepRange kBlurStrength{1, 20};
constexpr StepRange kWatermarkPercent{5, 100};
constexpr StepRange kWatermarkFont{10, 100};
constexpr StepRange kMagnifierFrame{1, 50};
constexpr StepRange kMagnifierZoom{1.2, 8.0};
constexpr double kZoomStep = 0.2;
constexpr double kFontStep = 2;
constexpr double kPercentStep = 5;

double within(const StepRange &range, double value)
{
    return std::clamp(value, range.least, range.most);
}

} // namespace

bool stepTool(ShapeDocument &document, int steps, const ToolStepLimits &limits)
{
    const ShapeAttributes &now = document.attributes();
    switch (document.tool()) {
    case ToolType::Marker:
        if (now.markerRectMode)
            return false;
        [[fallthrough]];
    case ToolType::Rect:
    case ToolType::Circle:
    case ToolType::Line:
    case ToolType::Arrow:
    case ToolType::Pen:
        document.setThickness(within(limits.thickness, now.baseThickness + steps));
        return true;
    case ToolType::Sequence:
        document.setFontSize(within(limits.sequenceFont, now.baseFontSize + kFontStep * steps));
        return true;
    case ToolType::Text:
        document.setFontSize(within(limits.textFont, now.baseFontSize + kFontStep * steps));
        return true;
    case ToolType::Mosaic:
    case ToolType::MosaicPen:
        if (now.mosaicMode == MosaicMode::Blur)
            document.setBlurStrength(within(kBlurStrength, now.blurStrength + steps));
        else
            document.setMosaicStrength(within(kMosaicStrength, now.mosaicStrength + steps));
        return true;
    case ToolType::Watermark:
        document.setWatermarkOpacity(
            within(kWatermarkPercent, std::round(now.watermarkOpacity * 100) + kPercentStep * steps) / 100);
        document.setWatermark();
        return true;
    case ToolType::Magnifier:
        document.setMagnifierZoom(
            within(kMagnifierZoom, std::round((now.magnifierZoom + kZoomStep * steps) * 10) / 10));
        return true;
    default:
        return false;
    }
}

bool hasSizeStep(ToolType tool)
{
    return tool == ToolType::Watermark || tool == ToolType::Magnifier;
}

bool stepToolSize(ShapeDocument &document, int steps)
{
    const ShapeAttributes &now = document.attributes();
    if (document.tool() == ToolType::Watermark) {
        document.setWatermarkFontSize(within(kWatermarkFont, std::round(now.watermarkFontSize) + kFontStep * steps));
        document.setWatermark();
        return true;
    }
    if (document.tool() == ToolType::Magnifier) {
        document.setThickness(within(kMagnifierFrame, std::round(now.baseThickness) + steps));
        return true;
    }
    return false;
}

} // namespace tavrel::ui
