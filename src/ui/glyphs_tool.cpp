#include "ui/glyph_pen.h"
#include "ui/glyph_shapes.h"

namespace tavrel::ui {
namespace {

using namespace shapes;

const ToolGlyph table[] = {
    {ToolType::Rect, [](GlyphPen &pen) { pen.rect(2.8, 4.2, 21.2, 19.8, 2.4); }},
    {ToolType::Circle, [](GlyphPen &pen) { pen.circle(12, 12, 9); }},
    {ToolType::Line, [](GlyphPen &pen) { pen.line(4, 20, 20, 4); }},
    {ToolType::Arrow,
     [](GlyphPen &pen) {
         pen.line(4, 20, 19.6, 4.4).lines({9.8, 4, 20, 4, 20, 14.2});
     }},
    {ToolType::Pen, pencil},
    {ToolType::Marker,
     [](GlyphPen &pen) {
         pen.stroke(Trace(11.4, 7.2).corner(15.2, 3, 1).corner(20.6, 8.4, 1).to(12.4, 15).to(8.6, 11.2).close());
         pen.lines({8.6, 11.2, 6.8, 15, 8.6, 16.8, 12.4, 15}).line(6.8, 15.6, 5, 17.2);
         pen.thick(2.2).line(4.2, 21, 19.8, 21);
     }},
    {ToolType::Eraser, eraser},
    {ToolType::Sequence,
     [](GlyphPen &pen) {
         pen.circle(12, 12, 9).lines({9.8, 9.4, 12.4, 7.4, 12.4, 16.6});
     }},
    {ToolType::Mosaic, mosaic},
    {ToolType::MosaicPen,
     [](GlyphPen &pen) {
         mosaic(pen);
         pen.gap(13, 20.4, 21, 12.4, 8).polygon({18.6, 10.2, 21.4, 13, 14.6, 19.8, 11.4, 20.2, 11.8, 17});
     }},
    {ToolType::SmartErase,
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
    {ToolType::Spotlight,
     [](GlyphPen &pen) {
         pen.stroke(Trace(6, 9.5)
                        .to(9.6, 9.5)
                        .corner(13.2, 6.4, 0.6)
                        .corner(16.4, 6.4, 0.8)
                        .corner(16.4, 17.6, 0.8)
                        .corner(13.2, 17.6, 0.6)
                        .to(9.6, 14.5)
                        .corner(0.9, 14.5, 1.5)
                        .corner(0.9, 9.5, 1.5)
                        .close());
         pen.line(13, 6.4, 13, 17.6).line(5.4, 12, 7.2, 12);
         pen.line(19.6, 12, 22, 12).line(19, 7.7, 20.2, 6.4).line(19, 16.3, 20.2, 17.6).turn(-45);
     }},
    {ToolType::Watermark,
     [](GlyphPen &pen) {
         pen.line(4, 20.8, 20, 20.8);
         pen.stroke(Trace(4.6, 17)
                        .corner(4.6, 13.2, 1.8)
                        .corner(10.2, 13.2, 1)
                        .to(9.4, 8.6)
                        .arc(12, 6, 3.2, 145, 395)
                        .corner(13.8, 13.2, 1)
                        .corner(19.4, 13.2, 1.8)
                        .to(19.4, 17)
                        .close());
     }},
    {ToolType::Magnifier, magnifier},
    {ToolType::Text, letterT},
    {ToolType::Ocr, textScan},
    {ToolType::AiVision,
     [](GlyphPen &pen) {
         scanCorners(pen);
         sparkle(pen, 12, 12, 5.4);
     }},
    {ToolType::Record, record},
    {ToolType::Undo, undo},
    {ToolType::Redo, redo},
    {ToolType::Cancel, close},
    {ToolType::Save, arrowDownIntoTray},
    {ToolType::Copy, copy},
    {ToolType::Pin, pin},
    {ToolType::LongScreenshot, pageScrollingDown},
    {ToolType::Cloud, cloudUp},
};

} // namespace

std::span<const ToolGlyph> toolGlyphTable()
{
    return table;
}

} // namespace tavrel::ui
