#include "ui/tool_tile.h"

#include "ui/glyphs.h"

#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr int kGlyph = 22;
constexpr int kGlyphTop = 11;
constexpr int kLabelTop = 37;
constexpr int kLabelHeight = 17;
constexpr int kMargin = 4;
constexpr qreal kRadius = 10;

} // namespace

ToolTile::ToolTile(ToolType tool, const QString &name, const Theme &theme, QWidget *parent)
    : StudioButton(theme, parent),
      m_tool(tool)
{
    setText(name);
    setToolTip(name);
    setCheckable(true);
    setProperty("tavrelTool", static_cast<int>(tool));
    setFixedSize(kSide, kSide);
}

QSize ToolTile::sizeHint() const
{
    return {kSide, kSide};
}

void ToolTile::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintFace(painter, QRectF(rect()), kRadius,
              isChecked()           ? theme().selectedFill()
              : isDown() || isLit() ? theme().controlHover()
                                    : theme().controlSurface());
    const QColor ink = !isEnabled()  ? theme().studioDisabledText()
                       : isChecked() ? theme().accent()
                                     : theme().studioText();
    paintToolGlyph(painter, m_tool, QRectF((width() - kGlyph) / 2.0, kGlyphTop, kGlyph, kGlyph), ink);
    paintFitted(painter, QRect(kMargin, kLabelTop, width() - 2 * kMargin, kLabelHeight), 11, 9, ink);
}

} // namespace tavrel::ui
