#pragma once

#include "annotate/shape_attributes.h"
#include "annotate/tool_type.h"

#include <QCursor>
#include <QString>

namespace tavrel::ui {

/// The pointer of a tool that draws strokes: a disc as wide and of the colour of what it draws, in a ring that shows on
/// any ground. Keeps the last one, because it is asked for at every move.
class BrushCursor final
{
public:
    /// Whether a tool is drawn with such a pointer.
    [[nodiscard]] static bool isFor(ToolType tool, const ShapeAttributes &attributes);

    /// viewScale  logical units of the view per unit of the picture
    /// ratio      device pixels per logical unit of the view
    [[nodiscard]] const QCursor &cursor(ToolType tool, const ShapeAttributes &attributes, double viewScale,
                                        double ratio);

private:
    QString m_key;
    QCursor m_cursor;
};

} // namespace tavrel::ui
