#include "annotate/tool_memory.h"

#include "annotate/shape_document.h"

namespace tavrel {
void ToolMemory::remember(const ShapeDocument &document)
{
    const ShapeAttributes &now = document.attributes();
    m_last = now;
    if (document.tool() != ToolType::None)
        m_looks.insert(toolFamilyHead(document.tool()),
                       {now.color, now.baseThickness, now.baseFontSize, now.fontFamily});
}

void ToolMemory::recall(ShapeDocument &document) const
{
    const auto look = m_looks.find(toolFamilyHead(document.tool()));
    if (look == m_looks.end())
        return;
    ShapeAttributes next = document.attributes();
    next.color = look->color;
    next.baseThickness = look->thickness;
    next.baseFontSize = look->fontSize;
    next.fontFamily = look->fontFamily;
    document.setAttributes(next);
}

void ToolMemory::begin(ShapeDocument &document) const
{
    if (!m_last)
        return;
    ShapeAttributes first = *m_last;
    first.watermarkText.clear();
    document.setAttributes(first);
}

} // namespace tavrel
