#pragma once

#include "annotate/tool_type.h"

#include <QColor>
#include <QIcon>
#include <QRectF>
#include <QStringList>

class QPainter;

namespace tavrel::ui {

/// All icons are drawn by code in a box of 24 units with a pen of 1.8. There are four sets: the editor set ("ed_..."),
/// the line set (plain names, tray and recorder), the attribute set (attribute bar) and one glyph per tool.
///
/// Icons hold one pixmap of `size` logical pixels for each of the ratios 1.0 and 2.0, with the colour baked in: build
/// them anew when the theme changes. An unknown name or `ToolType::None` gives an empty picture. GUI thread only.

/// A glyph of the editor set or, for a name without "ed_", of the line set.
[[nodiscard]] QIcon glyphIcon(const QString &name, const QColor &color, int size);
[[nodiscard]] QIcon toolIcon(ToolType tool, const QColor &color, int size);
[[nodiscard]] QIcon attributeIcon(const QString &name, const QColor &color, int size);

/// The same glyphs straight into `rect`, centred and as large as fits. The painter is left as it was.
void paintGlyph(QPainter &painter, const QString &name, const QRectF &rect, const QColor &color);
void paintToolGlyph(QPainter &painter, ToolType tool, const QRectF &rect, const QColor &color);
void paintAttributeGlyph(QPainter &painter, const QString &name, const QRectF &rect, const QColor &color);

/// The names of each set, in the order of the sheets.
[[nodiscard]] QStringList glyphNames();
[[nodiscard]] QStringList lineGlyphNames();
/// Beside those of the plain attributes: arrowStandard, arrowWedge, arrowOutline, arrowLine and arrowDouble.
[[nodiscard]] QStringList attributeGlyphNames();
/// The tools that have an icon: all but `None`.
[[nodiscard]] QList<ToolType> toolGlyphs();

/// The program's icon from ":/brand/app_icon.png"; empty when the file is missing.
[[nodiscard]] QIcon appIcon();

} // namespace tavrel::ui
