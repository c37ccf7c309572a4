#pragma once

#include <QString>

namespace tavrel {

/// Tools of the toolbars; the values double as the type tag of the shapes they make. `toolTypeName` gives the word
/// that shape JSON and toolbar layouts store.
enum class ToolType : qint32 {
    None = 0,
    Rect = 1,
    Circle = 2,
    Line = 3,
    Arrow = 4,
    Pen = 5,
    Marker = 6,
    Eraser = 7,
    Sequence = 8,
    Mosaic = 9,
    MosaicPen = 10,
    SmartErase = 11,
    Spotlight = 12,
    Watermark = 13,
    Magnifier = 14,
    Text = 15,
    Ocr = 16,
    AiVision = 17,
    Record = 18,
    Undo = 19,
    Redo = 20,
    Cancel = 21,
    Save = 22,
    Copy = 23,
    Pin = 24,
    LongScreenshot = 25,
    Cloud = 26,
};

/// The stored word of a tool, empty for a value outside the enum.
[[nodiscard]] QString toolTypeName(ToolType tool);
/// The tool of a stored word, `fallback` for an unknown one.
[[nodiscard]] ToolType toolTypeFromName(const QString &name, ToolType fallback = ToolType::None);

/// The first tool of a family, which stands for all of it: rectangle and circle have one button on the toolbar and
/// share what they were set to, and so have arrow and line, mosaic and its brush. Any other tool stands for itself.
[[nodiscard]] ToolType toolFamilyHead(ToolType tool);

} // namespace tavrel
