#pragma once

#include "annotate/tool_type.h"

namespace tavrel {
class ShapeDocument;
}

namespace tavrel::ui {

struct StepRange
{
    double least = 0;
    double most = 0;
};

/// How far the wheel may take the attributes of a tool; a host of larger pictures allows more.
struct ToolStepLimits
{
    StepRange thickness{1, 30};
    StepRange sequenceFont{8, 96};
    StepRange textFont{12, 96};
};

/// Turns wheel steps into a change of what the current tool is about: thickness, size, strength, opacity or zoom.
/// Returns false for a tool that has nothing to change, with the document left alone.
bool stepTool(ShapeDocument &document, int steps, const ToolStepLimits &limits);

/// The same with Shift: the size of the watermark's text and the thickness of the magnifier's frame.
bool stepToolSize(ShapeDocument &document, int steps);
/// Whether stepToolSize() has something to change for a tool.
[[nodiscard]] bool hasSizeStep(ToolType tool);

} // namespace tavrel::ui
