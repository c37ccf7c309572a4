#include "ui/glyph_pen.h"
#include "ui/glyph_shapes.h"

#include <cmath>
#include <numbers>

namespace tavrel::ui {
namespace {

using namespace shapes;

Trace eyeOutline()
{
    return Trace(2.4, 12)
        .cubic(4.8, 7.6, 8.2, 5.2, 12, 5.2)
        .cubic(15.8, 5.2, 19.2, 7.6, 21.6, 12)
        .cubic(19.2, 16.4, 15.8, 18.8, 12, 18.8)
        .cubic(8.2, 18.8, 4.8, 16.4, 2.4, 12)
        .close();
}

Trace starOutline()
{
    constexpr double outer = 9.6;
    constexpr double inner = 4.3;
    const auto x = [](double radius, int i) { return 12 + radius * std::sin(i * std::numbers::pi / 5); };
    const auto y = [](double radius, int i) { return 12.8 - radius * std::cos(i * std::numbers::pi / 5); };
    Trace trace(x(outer, 0), y(outer, 0));
    for (int i = 1; i < 10; ++i)
        trace.to(x(i % 2 == 0 ? outer : inner, i), y(i % 2 == 0 ? outer : inner, i));
    return trace.close();
}

Trace cloudOutline()
{
    return Trace(7, 19).arc(7, 14.6, 4.4, 90, 254).arc(11.8, 10.4, 6, 180, 350).arc(17.2, 14.6, 4.4, 275, 450).close();
}

/// The stroke through a thing that is off, with air on both sides.
void slash(GlyphPen &pen)
{
    pen.gap(4, 3.4, 20.6, 20, 5.2).line(3.8, 3.8, 20.2, 20.2);
}

void panelFrame(GlyphPen &pen)
{
    pen.rect(2.8, 4.4, 21.2, 19.6, 3).line(9, 4.4, 9, 19.6);
}

const Glyph table[] = {
    {QLatin1StringView("ed_edit"), pencil},
    {QLatin1StringView("ed_crop"), crop},
    {QLatin1StringView("ed_background"), background},
    {QLatin1StringView("ed_stitch"), stitch},
    {QLatin1StringView("ed_cursor"),
     [](GlyphPen &pen) {
         pen.polygon({5.6, 3.2, 5.6, 18.4, 9.6, 14.8, 12.4, 20.8, 15.4, 19.4, 12.6, 13.6, 18, 13.2});
     }},
    {QLatin1StringView("ed_camera"), camera},
    {QLatin1StringView("ed_keyboard"), keyboard},
    {QLatin1StringView("ed_zoom"), magnifierPlus},
    {QLatin1StringView("ed_split"), split},
    {QLatin1StringView("ed_trash"), trash},
    {QLatin1StringView("ed_loop"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(3.4, 11.6).corner(3.4, 6.4, 3).to(20.2, 6.4)).lines({17, 2.8, 20.6, 6.4, 17, 10});
         pen.stroke(Trace(20.6, 12.4).corner(20.6, 17.6, 3).to(3.8, 17.6)).lines({7, 14, 3.4, 17.6, 7, 21.2});
     }},
    {QLatin1StringView("ed_speaker"), speaker},
    {QLatin1StringView("ed_speakerOff"), speakerOff},
    {QLatin1StringView("ed_mic"), microphone},
    {QLatin1StringView("ed_micOff"),
     [](GlyphPen &pen) {
         microphone(pen);
         slash(pen);
     }},
    {QLatin1StringView("ed_play"), play},
    {QLatin1StringView("ed_pause"), pause},
    {QLatin1StringView("ed_move"), move},
    {QLatin1StringView("ed_fit"), fit},
    {QLatin1StringView("ed_plus"), plus},
    {QLatin1StringView("ed_minus"), minus},
    {QLatin1StringView("ed_export"), arrowUpFromTray},
    {QLatin1StringView("ed_rotate"), rotate},
    {QLatin1StringView("ed_reset"), reset},
    {QLatin1StringView("ed_flip"), flip},
    {QLatin1StringView("ed_pick"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(3.2, 7.6).corner(3.2, 3.2, 2.4).to(7.6, 3.2)).line(11, 3.2, 13, 3.2);
         pen.stroke(Trace(16.4, 3.2).corner(20.8, 3.2, 2.4).to(20.8, 7.6)).line(3.2, 11, 3.2, 13);
         pen.stroke(Trace(7.6, 20.8).corner(3.2, 20.8, 2.4).to(3.2, 16.4));
         pen.polygon({10, 10, 21.2, 14, 16.2, 16.2, 14, 21.2});
     }},
    {QLatin1StringView("ed_addImage"), imageWithPlus},
    {QLatin1StringView("ed_folder"), folder},
    {QLatin1StringView("ed_clipboard"), clipboard},
    {QLatin1StringView("ed_check"), check},
    {QLatin1StringView("ed_auto"),
     [](GlyphPen &pen) {
         sparkle(pen, 10, 13.4, 7.4);
         pen.line(18.4, 3, 18.4, 8.2).line(15.8, 5.6, 21, 5.6);
     }},
    {QLatin1StringView("ed_undo"), undo},
    {QLatin1StringView("ed_redo"), redo},
    {QLatin1StringView("ed_pin"), pin},
    {QLatin1StringView("ed_save"), arrowDownIntoTray},
    {QLatin1StringView("ed_copy"), copy},
    {QLatin1StringView("ed_close"), close},
    {QLatin1StringView("ed_chevronDown"), chevronDown},
    {QLatin1StringView("ed_chevronUp"),
     [](GlyphPen &pen) {
         pen.lines({5.4, 15.2, 12, 8.6, 18.6, 15.2});
     }},
    {QLatin1StringView("ed_sidebar"),
     [](GlyphPen &pen) {
         panelFrame(pen);
         pen.lines({16.4, 9.2, 13.6, 12, 16.4, 14.8});
     }},
    {QLatin1StringView("ed_sidebarOff"),
     [](GlyphPen &pen) {
         panelFrame(pen);
         pen.lines({13.8, 9.2, 16.6, 12, 13.8, 14.8});
     }},
    {QLatin1StringView("ed_cloud"), cloudUp},
    {QLatin1StringView("ed_search"), magnifier},
    {QLatin1StringView("ed_star"), [](GlyphPen &pen) { pen.stroke(starOutline()); }},
    {QLatin1StringView("ed_starFill"), [](GlyphPen &pen) { pen.fill(starOutline()).stroke(starOutline()); }},
    {QLatin1StringView("ed_tag"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(16, 3.2)
                        .corner(20.8, 3.2, 2.4)
                        .corner(20.8, 12, 1)
                        .corner(12, 20.8, 2)
                        .corner(3.2, 12, 2)
                        .corner(12, 3.2, 1)
                        .close());
         pen.dot(16.2, 7.8, 1.6);
     }},
    {QLatin1StringView("ed_link"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(10, 7.4).to(7.4, 7.4).arc(7.4, 12, 4.6, -90, -270).to(10, 16.6));
         pen.stroke(Trace(14, 7.4).to(16.6, 7.4).arc(16.6, 12, 4.6, -90, 90).to(14, 16.6)).line(8.4, 12, 15.6, 12);
     }},
    {QLatin1StringView("ed_reveal"),
     [](GlyphPen &pen) {
         folder(pen);
         pen.hole(15, 15.2, 6.2).circle(15, 15.2, 3.6).line(17.8, 18, 21, 21.2);
     }},
    {QLatin1StringView("ed_chevronLeft"),
     [](GlyphPen &pen) {
         pen.lines({15.2, 5.4, 8.6, 12, 15.2, 18.6});
     }},
    {QLatin1StringView("ed_chevronRight"),
     [](GlyphPen &pen) {
         pen.lines({8.8, 5.4, 15.4, 12, 8.8, 18.6});
     }},
    {QLatin1StringView("ed_layoutGrid"),
     [](GlyphPen &pen) {
         pen.rect(3.4, 3.4, 10.2, 10.2, 1.6).rect(13.8, 3.4, 20.6, 10.2, 1.6);
         pen.rect(3.4, 13.8, 10.2, 20.6, 1.6).rect(13.8, 13.8, 20.6, 20.6, 1.6);
     }},
    {QLatin1StringView("ed_layoutJustified"),
     [](GlyphPen &pen) {
         pen.rect(2.8, 4, 12.6, 10.2, 1.6).rect(16.2, 4, 21.2, 10.2, 1.6);
         pen.rect(2.8, 13.8, 7.8, 20, 1.6).rect(11.4, 13.8, 21.2, 20, 1.6);
     }},
    {QLatin1StringView("ed_layoutList"),
     [](GlyphPen &pen) {
         pen.rect(3, 4, 9, 10, 1.6).line(12.8, 5.2, 21, 5.2).line(12.8, 8.8, 17.6, 8.8);
         pen.rect(3, 14, 9, 20, 1.6).line(12.8, 15.2, 21, 15.2).line(12.8, 18.8, 17.6, 18.8);
     }},
    {QLatin1StringView("ed_share"),
     [](GlyphPen &pen) {
         pen.circle(17.8, 5.6, 2.8).circle(6, 12, 2.8).circle(17.8, 18.4, 2.8);
         pen.line(8.5, 10.6, 15.3, 7).line(8.5, 13.4, 15.3, 17);
     }},
    {QLatin1StringView("ed_eye"), [](GlyphPen &pen) { pen.stroke(eyeOutline()).circle(12, 12, 3); }},
    {QLatin1StringView("ed_eyeOff"),
     [](GlyphPen &pen) {
         pen.stroke(eyeOutline()).circle(12, 12, 3);
         slash(pen);
     }},
    {QLatin1StringView("ed_grip"),
     [](GlyphPen &pen) {
         for (const qreal y : {5.4, 12.0, 18.6})
             pen.dot(8.6, y, 1.6).dot(15.4, y, 1.6);
     }},
    {QLatin1StringView("ed_steps"),
     [](GlyphPen &pen) {
         pen.circle(6, 6.4, 2.9).circle(6, 17.6, 2.9).line(6, 9.3, 6, 14.7);
         pen.line(12.4, 4.8, 21, 4.8).line(12.4, 8.4, 17.6, 8.4).line(12.4, 16, 21, 16).line(12.4, 19.6, 17.6, 19.6);
     }},
    {QLatin1StringView("ed_image"),
     [](GlyphPen &pen) {
         pen.rect(3, 4, 21, 20, 2.8).dot(8.4, 9, 1.6);
         pen.stroke(Trace(3.2, 17).corner(8.8, 12.6, 0.8).to(15, 19.8));
         pen.stroke(Trace(12, 16.4).corner(16.2, 12.2, 0.8).to(20.8, 16.6));
     }},
    {QLatin1StringView("ed_video"), video},
    {QLatin1StringView("ed_gif"), gif},
    {QLatin1StringView("ed_calendar"),
     [](GlyphPen &pen) {
         pen.rect(3.2, 4.8, 20.8, 20.8, 2.8).line(3.2, 10, 20.8, 10).line(8, 2.6, 8, 6.4).line(16, 2.6, 16, 6.4);
         pen.dot(8, 13.8, 1.2).dot(12, 13.8, 1.2).dot(16, 13.8, 1.2).dot(8, 17.2, 1.2).dot(12, 17.2, 1.2);
     }},
    {QLatin1StringView("ed_cloudOff"),
     [](GlyphPen &pen) {
         pen.stroke(cloudOutline());
         slash(pen);
     }},
    {QLatin1StringView("ed_history"),
     [](GlyphPen &pen) {
         reset(pen);
         pen.lines({12, 7, 12, 12.4, 15.6, 14.4});
     }},
    {QLatin1StringView("ed_text"), letterT},
    {QLatin1StringView("ed_tip"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(9.2, 17)
                        .cubic(9.2, 15, 8.4, 14.2, 7.4, 13.1)
                        .arc(12, 9.2, 6.2, 138, 402)
                        .cubic(15.6, 14.2, 14.8, 15, 14.8, 17));
         pen.line(9.2, 17.2, 14.8, 17.2).line(10.4, 21, 13.6, 21);
     }},
    {QLatin1StringView("ed_warning"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(12, 20.2).corner(1.6, 20.2, 2.2).corner(12, 2.2, 2.2).corner(22.4, 20.2, 2.2).close());
         pen.line(12, 9.2, 12, 13.4).dot(12, 16.8, 1.25);
     }},
    {QLatin1StringView("ed_info"), info},
    {QLatin1StringView("ed_bold"),
     [](GlyphPen &pen) {
         pen.thick(2.4);
         pen.stroke(Trace(6.6, 4.4).to(12.6, 4.4).arc(12.6, 8.2, 3.8, -90, 90).to(6.6, 12).close());
         pen.stroke(Trace(6.6, 12).to(13.4, 12).arc(13.4, 15.8, 3.8, -90, 90).to(6.6, 19.6).close());
     }},
    {QLatin1StringView("ed_italic"),
     [](GlyphPen &pen) { pen.line(10, 4.4, 18.6, 4.4).line(5.4, 19.6, 14, 19.6).line(14.6, 4.4, 9.4, 19.6); }},
    {QLatin1StringView("ed_strike"),
     [](GlyphPen &pen) {
         pen.stroke(Trace(17, 7.4)
                        .cubic(16.2, 5.2, 14.4, 4, 12, 4)
                        .cubic(9.2, 4, 7, 5.6, 7, 8)
                        .cubic(7, 9.4, 7.6, 10.4, 8.6, 11.2));
         pen.stroke(Trace(15.8, 13.4)
                        .cubic(16.6, 14.1, 17.2, 15, 17.2, 16.2)
                        .cubic(17.2, 18.4, 15, 20, 12, 20)
                        .cubic(9.4, 20, 7.4, 18.8, 6.6, 16.6));
         pen.line(3.4, 12, 20.6, 12);
     }},
    {QLatin1StringView("ed_listBullet"),
     [](GlyphPen &pen) {
         for (const qreal y : {5.6, 12.0, 18.4})
             pen.dot(4.8, y, 1.7).line(9.8, y, 20.8, y);
     }},
    {QLatin1StringView("ed_listNumbered"),
     [](GlyphPen &pen) {
         pen.line(11, 6.6, 21, 6.6).line(11, 17.4, 21, 17.4).thick(1.6);
         pen.lines({3.6, 4.8, 5.4, 3.4, 5.4, 9.8});
         pen.stroke(Trace(3.4, 15.6)
                        .cubic(3.6, 13.4, 7.2, 13.4, 7.2, 15.8)
                        .cubic(7.2, 17.4, 4.6, 18.6, 3.4, 20.6)
                        .to(7.4, 20.6));
     }},
    {QLatin1StringView("ed_clearFormat"),
     [](GlyphPen &pen) {
         pen.lines({4, 7, 4, 4, 18, 4, 18, 7}).line(11, 4, 9.4, 19.6).line(6.8, 19.6, 11.4, 19.6);
         pen.line(15.4, 14.8, 20.6, 20).line(20.6, 14.8, 15.4, 20);
     }},
};

} // namespace

std::span<const Glyph> editorGlyphs()
{
    return table;
}

} // namespace tavrel::ui
