#include "ui/glyph_pen.h"
#include "ui/glyph_shapes.h"

#include <cmath>
#include <numbers>

namespace tavrel::ui {
namespace {

using namespace shapes;

void gear(GlyphPen &pen)
{
    constexpr int teeth = 8;
    constexpr double root = 6.9;
    constexpr double tip = 9.4;
    constexpr double step = std::numbers::pi / 180;
    const auto point = [](double radius, double degrees) {
        return QPointF(12 + radius * std::cos(degrees * step), 12 + radius * std::sin(degrees * step));
    };
    const QPointF first = point(root, -14);
    Trace outline(first.x(), first.y());
    for (int i = 0; i < teeth; ++i) {
        const double middle = 360.0 / teeth * i;
        for (const auto &[radius, offset] : {std::pair{tip, -9.5}, std::pair{tip, 9.5}, std::pair{root, 14.0}}) {
            const QPointF p = point(radius, middle + offset);
            outline.to(p.x(), p.y());
        }
        const QPointF next = point(root, middle + 360.0 / teeth - 14);
        outline.to(next.x(), next.y());
    }
    pen.stroke(outline.close()).circle(12, 12, 3);
}

const Glyph table[] = {
    {QLatin1StringView("crop"), crop},
    {QLatin1StringView("background"), background},
    {QLatin1StringView("stitch"), stitch},
    {QLatin1StringView("addImage"), imageWithPlus},
    {QLatin1StringView("rotate"), rotate},
    {QLatin1StringView("flip"), flip},
    {QLatin1StringView("capture"),
     [](GlyphPen &pen) {
         scanCorners(pen);
         pen.circle(12, 12, 4.4);
     }},
    {QLatin1StringView("trash"), trash},
    {QLatin1StringView("hand"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(7.4, 14.4)
                        .to(7.4, 6.4)
                        .arc(8.95, 6.4, 1.55, 180, 360)
                        .to(10.5, 11.4)
                        .move(10.5, 6.4)
                        .to(10.5, 4.6)
                        .arc(12.05, 4.6, 1.55, 180, 360)
                        .to(13.6, 11.4)
                        .move(13.6, 6.4)
                        .arc(15.15, 6.2, 1.55, 180, 360)
                        .to(16.7, 11.8)
                        .move(16.7, 9.2)
                        .arc(18.25, 9, 1.55, 180, 360)
                        .to(19.8, 14.2)
                        .cubic(19.8, 18.6, 17, 21.2, 13.6, 21.2)
                        .cubic(10.4, 21.2, 9, 20, 7.6, 17.8)
                        .to(4.4, 13.2)
                        .cubic(3.2, 11.2, 5.8, 9.6, 7.4, 11.8));
     }},
    {QLatin1StringView("move"), move},
    {QLatin1StringView("record"), record},
    {QLatin1StringView("mic"), microphone},
    {QLatin1StringView("micFill"),
     [](GlyphPen &pen) {
         pen.fillRect(7.9, 1.9, 16.1, 15.3, 4.1);
         microphoneStand(pen);
     }},
    {QLatin1StringView("speaker"), speaker},
    {QLatin1StringView("camera"), camera},
    {QLatin1StringView("click"),
     [](GlyphPen &pen) {
         pen.polygon({9.6, 9.6, 21, 13.6, 15.8, 15.8, 13.6, 21});
         pen.line(9.4, 3, 9.4, 5.2).line(3, 9.4, 5.2, 9.4).line(4.8, 4.8, 6.4, 6.4);
         pen.line(14, 4.8, 12.6, 6.2).line(4.8, 14, 6.2, 12.6);
     }},
    {QLatin1StringView("keyboard"), keyboard},
    {QLatin1StringView("fullscreen"),
     [](GlyphPen &pen) {
         pen.lines({14, 3.6, 20.4, 3.6, 20.4, 10}).line(20, 4, 13.8, 10.2);
         pen.lines({10, 20.4, 3.6, 20.4, 3.6, 14}).line(4, 20, 10.2, 13.8);
     }},
    {QLatin1StringView("restore"),
     [](GlyphPen &pen) {
         pen.lines({13.8, 3.8, 13.8, 10.2, 20.2, 10.2}).line(14.2, 9.8, 20.6, 3.4);
         pen.lines({10.2, 20.2, 10.2, 13.8, 3.8, 13.8}).line(9.8, 14.2, 3.4, 20.6);
     }},
    {QLatin1StringView("close"), close},
    {QLatin1StringView("play"), play},
    {QLatin1StringView("pause"), pause},
    {QLatin1StringView("split"), split},
    {QLatin1StringView("speakerOff"), speakerOff},
    {QLatin1StringView("restart"),
     [](GlyphPen &pen) {
         pen.lines({20.4, 3.6, 20.4, 8.8, 15.2, 8.8}).arc(12, 12, 8.8, -22, -330);
     }},
    {QLatin1StringView("minimize"), [](GlyphPen &pen) { pen.line(5, 18.6, 19, 18.6); }},
    {QLatin1StringView("video"), video},
    {QLatin1StringView("gif"), gif},
    {QLatin1StringView("info"), info},
    {QLatin1StringView("plus"), plus},
    {QLatin1StringView("minus"), minus},
    {QLatin1StringView("chevronDown"), chevronDown},
    {QLatin1StringView("clipboard"), clipboard},
    {QLatin1StringView("folder"), folder},
    {QLatin1StringView("export"), arrowUpFromTray},
    {QLatin1StringView("fit"), fit},
    {QLatin1StringView("check"), check},
    {QLatin1StringView("reset"), reset},
    {QLatin1StringView("long"), pageScrollingDown},
    {QLatin1StringView("ocr"), textScan},
    {QLatin1StringView("gear"), gear},
};

} // namespace

std::span<const Glyph> lineGlyphs()
{
    return table;
}

} // namespace tavrel::ui
