#include "ui/glyph_pen.h"
#include "ui/glyph_shapes.h"

namespace tavrel::ui {
namespace {

using namespace shapes;

/// A darkened picture with a bright spot; the darker, the stronger the fill.
void dimmed(GlyphPen &pen, qreal strength)
{
    pen.opacity(strength).fillRect(3.4, 3.4, 20.6, 20.6, 2.6).hole(12, 12, 4.6);
    pen.opacity(1).rect(3.4, 3.4, 20.6, 20.6, 2.6).circle(12, 12, 4.6);
}

void watermarkFrame(GlyphPen &pen)
{
    pen.rect(2.8, 4, 21.2, 20, 2.6);
}

/// Column and row from 0 to 2.
template <int Column, int Row>
void watermarkAt(GlyphPen &pen)
{
    watermarkFrame(pen);
    const qreal x = 5.6 + 3.9 * Column;
    const qreal y = 6.6 + 3.7 * Row;
    pen.fillRect(x, y, x + 5, y + 3.4, 1);
}

const Glyph table[] = {
    {QLatin1StringView("rect"), [](GlyphPen &pen) { pen.rect(3.2, 5, 20.8, 19, 2.2); }},
    {QLatin1StringView("circle"), [](GlyphPen &pen) { pen.circle(12, 12, 8.8); }},
    {QLatin1StringView("freehand"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(3.2, 15.4)
                        .cubic(5.4, 8.2, 9.6, 3.4, 11, 5.8)
                        .cubic(12.4, 8.4, 6.6, 16.6, 9, 18)
                        .cubic(11.4, 19.2, 13.6, 10.8, 16, 11.8)
                        .cubic(18, 12.8, 14.8, 17.6, 17, 18.2)
                        .cubic(18.6, 18.6, 20, 17.2, 20.8, 15.8));
     }},
    {QLatin1StringView("markerRect"),
     [](GlyphPen &pen) {
         pen.opacity(0.32).fillRect(3.2, 5.4, 20.8, 18.6, 2.2);
         pen.opacity(1).rect(3.2, 5.4, 20.8, 18.6, 2.2).line(7.4, 10, 16.6, 10).line(7.4, 14, 13, 14);
     }},
    {QLatin1StringView("snapLine"),
     [](GlyphPen &pen) {
         pen.opacity(0.32).fillRect(2.4, 8, 21.6, 16, 2.4);
         pen.opacity(1).line(4.6, 4.4, 19.4, 4.4).line(5.6, 12, 18.4, 12).line(4.6, 19.6, 13, 19.6);
     }},
    {QLatin1StringView("mosaicBlocks"), mosaic},
    {QLatin1StringView("blockSize"),
     [](GlyphPen &pen) {
         pen.fillRect(2, 13, 5.4, 16.4, 0.6).fillRect(6.8, 11, 12.2, 16.4, 0.8).fillRect(13.6, 8, 22, 16.4, 1);
     }},
    {QLatin1StringView("blurDrop"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(12, 2.8)
                        .cubic(15.6, 7, 18.8, 10.6, 18.8, 14.4)
                        .arc(12, 14.4, 6.8, 0, 180)
                        .cubic(5.2, 10.6, 8.4, 7, 12, 2.8)
                        .close());
         pen.arc(12, 14.4, 3.2, 90, 175);
     }},
    {QLatin1StringView("strength"),
     [](GlyphPen &pen) {
         pen.thick(2.6).line(4.6, 15.8, 4.6, 19.6).line(9.5, 12, 9.5, 19.6).line(14.5, 8.2, 14.5, 19.6);
         pen.line(19.4, 4.4, 19.4, 19.6);
     }},
    {QLatin1StringView("dim1"), [](GlyphPen &pen) { dimmed(pen, 0.2); }},
    {QLatin1StringView("dim2"), [](GlyphPen &pen) { dimmed(pen, 0.5); }},
    {QLatin1StringView("dim3"), [](GlyphPen &pen) { dimmed(pen, 0.86); }},
    {QLatin1StringView("text"), letterT},
    {QLatin1StringView("textBg"),
     [](GlyphPen &pen) {
         pen.fillRect(2.6, 2.6, 21.4, 21.4, 1.2);
         pen.gap(7.2, 8, 16.8, 8, 2).gap(12, 8, 12, 17, 2);
     }},
    {QLatin1StringView("textRound"),
     [](GlyphPen &pen) {
         pen.fillRect(2.6, 2.6, 21.4, 21.4, 6.4);
         pen.gap(7.4, 8, 16.6, 8, 2).gap(12, 8, 12, 17, 2);
     }},
    {QLatin1StringView("textBorder"),
     [](GlyphPen &pen) {
         pen.polygon({3.6, 3.6, 20.4, 3.6, 20.4, 8.8, 14.6, 8.8, 14.6, 20.4, 9.4, 20.4, 9.4, 8.8, 3.6, 8.8});
     }},
    {QLatin1StringView("thickness"),
     [](GlyphPen &pen) {
         pen.thick(1.4).line(3.6, 4.8, 20.4, 4.8).thick(2.8).line(4, 11, 20, 11);
         pen.thick(4.6).line(5, 18.6, 19, 18.6);
     }},
    {QLatin1StringView("fontSize"),
     [](GlyphPen &pen) {
         pen.lines({2.8, 19.4, 8.6, 4.6, 14.4, 19.4}).line(4.8, 14.4, 12.4, 14.4);
         pen.lines({15.4, 19.4, 18.4, 11.6, 21.4, 19.4}).line(16.4, 17, 20.4, 17);
     }},
    {QLatin1StringView("opacity"),
     [](GlyphPen &pen) {
         pen.circle(12, 12, 8.8);
         pen.fill(Trace(12, 3.2).arc(12, 12, 8.8, 270, 90).close());
     }},
    {QLatin1StringView("zoom"), magnifierPlus},
    {QLatin1StringView("clock"),
     [](GlyphPen &pen) {
         pen.circle(12, 12, 9).lines({12, 6.6, 12, 12.4, 15.8, 14.6});
     }},
    {QLatin1StringView("eraserHint"), eraser},
    {QLatin1StringView("smartEraseHint"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(9.6, 10.2)
                        .corner(11.8, 8, 1.4)
                        .corner(17, 13.2, 1.4)
                        .to(9.6, 20.6)
                        .to(7.6, 20.6)
                        .corner(3.2, 16.2, 1.4)
                        .close());
         pen.line(7, 12.6, 12.4, 18).line(9.6, 20.6, 19, 20.6);
         sparkle(pen, 17.8, 5.8, 3.4);
     }},
    {QLatin1StringView("eraseSubject"),
     [](GlyphPen &pen) {
         scanCorners(pen);
         pen.circle(12, 9.4, 2.8)
             .stroke(Trace(6.8, 17.4).cubic(7.2, 14.6, 9.2, 14.2, 12, 14.2).cubic(14.8, 14.2, 16.8, 14.6, 17.2, 17.4));
     }},
    {QLatin1StringView("eraseBox"),
     [](GlyphPen &pen) {
         scanCorners(pen);
         pen.opacity(0.32).fillRect(6.6, 6.6, 17.4, 17.4, 1.6).opacity(1).line(9, 15, 15, 9);
     }},
    {QLatin1StringView("wm"),
     [](GlyphPen &pen) {
         watermarkFrame(pen);
         pen.lines({6.6, 9.2, 9.2, 15, 12, 9.2, 14.8, 15, 17.4, 9.2});
     }},
    {QLatin1StringView("wmTile"),
     [](GlyphPen &pen) {
         watermarkFrame(pen);
         for (const qreal y : {7.6, 14.2})
             for (const qreal x : {6.0, 10.7, 15.4})
                 pen.line(x, y + 2.2, x + 2.6, y);
     }},
    {QLatin1StringView("wmCenter"), watermarkAt<1, 1>},
    {QLatin1StringView("wmTL"), watermarkAt<0, 0>},
    {QLatin1StringView("wmTC"), watermarkAt<1, 0>},
    {QLatin1StringView("wmTR"), watermarkAt<2, 0>},
    {QLatin1StringView("wmBL"), watermarkAt<0, 2>},
    {QLatin1StringView("wmBC"), watermarkAt<1, 2>},
    {QLatin1StringView("wmBR"), watermarkAt<2, 2>},
    {QLatin1StringView("arrowStandard"),
     [](GlyphPen &pen) {
         pen.line(4, 20, 14, 10).fillPolygon({20.8, 3.2, 17.8, 14.2, 9.8, 6.2});
     }},
    {QLatin1StringView("arrowWedge"),
     [](GlyphPen &pen) {
         pen.fillPolygon({3, 21, 11.2, 9.6, 8.6, 7, 21, 3, 17, 15.4, 14.4, 12.8});
     }},
    {QLatin1StringView("arrowOutline"),
     [](GlyphPen &pen) {
         pen.polygon({3.6, 20.4, 11, 9.8, 8.8, 7.6, 20.4, 3.6, 16.4, 15.2, 14.2, 13});
     }},
    {QLatin1StringView("arrowLine"), [](GlyphPen &pen) { pen.line(4, 20, 20, 4); }},
    {QLatin1StringView("arrowDouble"),
     [](GlyphPen &pen) {
         pen.line(4.4, 19.6, 19.6, 4.4).lines({11.6, 4, 20, 4, 20, 12.4}).lines({12.4, 20, 4, 20, 4, 11.6});
     }},
};

} // namespace

std::span<const Glyph> attributeGlyphs()
{
    return table;
}

} // namespace tavrel::ui
