#include "ui/glyph_shapes.h"

#include "ui/glyph_pen.h"

namespace tavrel::ui::shapes {
namespace {

void tray(GlyphPen &pen)
{
    pen.stroke(Trace(3.8, 15).corner(3.8, 20.2, 2.2).corner(20.2, 20.2, 2.2).to(20.2, 15));
}

void speakerBody(GlyphPen &pen)
{
    pen.stroke(Trace(3, 12)
                   .corner(3, 9, 1.2)
                   .to(6.8, 9)
                   .corner(11.8, 4.6, 0.6)
                   .corner(11.8, 19.4, 0.6)
                   .to(6.8, 15)
                   .corner(3, 15, 1.2)
                   .close());
}

} // namespace

void arrowDownIntoTray(GlyphPen &pen)
{
    tray(pen);
    pen.line(12, 3.4, 12, 14.8).lines({7.4, 10.4, 12, 15, 16.6, 10.4});
}

void arrowUpFromTray(GlyphPen &pen)
{
    tray(pen);
    pen.line(12, 3.6, 12, 14.8).lines({7.4, 8, 12, 3.4, 16.6, 8});
}

void background(GlyphPen &pen)
{
    pen.opacity(0.32).fillRect(3.2, 3.2, 20.8, 20.8, 3).gap(10, 12, 14, 12, 6.4);
    pen.opacity(1).rect(3.2, 3.2, 20.8, 20.8, 3).rect(7.4, 8.2, 16.6, 15.8, 1.4);
}

void camera(GlyphPen &pen)
{
    pen.rect(2.6, 6.4, 15, 17.6, 2.6);
    pen.stroke(Trace(15, 10.6).corner(21.4, 7, 0.8).corner(21.4, 17, 0.8).to(15, 13.4));
}

void check(GlyphPen &pen)
{
    pen.lines({4.2, 12.6, 9.4, 17.8, 19.8, 6.8});
}

void chevronDown(GlyphPen &pen)
{
    pen.lines({5.4, 8.8, 12, 15.4, 18.6, 8.8});
}

void clipboard(GlyphPen &pen)
{
    pen.rect(8.6, 2.8, 15.4, 6.8, 1.4);
    pen.stroke(Trace(8.6, 4.6)
                   .corner(4.8, 4.6, 2.2)
                   .corner(4.8, 21.2, 2.2)
                   .corner(19.2, 21.2, 2.2)
                   .corner(19.2, 4.6, 2.2)
                   .to(15.4, 4.6));
    pen.line(8.8, 11.6, 15.2, 11.6).line(8.8, 16, 13, 16);
}

void close(GlyphPen &pen)
{
    pen.line(5.6, 5.6, 18.4, 18.4).line(18.4, 5.6, 5.6, 18.4);
}

void cloudUp(GlyphPen &pen)
{
    pen.stroke(Trace(8.4, 18.2)
                   .to(7, 18.2)
                   .arc(7, 13.8, 4.4, 90, 254)
                   .arc(11.8, 9.6, 6, 180, 350)
                   .arc(17.2, 13.8, 4.4, 275, 450)
                   .to(15.6, 18.2));
    pen.line(12, 12.4, 12, 21).lines({8.8, 15.2, 12, 12, 15.2, 15.2});
}

void copy(GlyphPen &pen)
{
    pen.rect(8.4, 8.4, 20.8, 20.8, 2.6);
    pen.stroke(Trace(4.8, 15.6).corner(3.2, 15.6, 1.6).corner(3.2, 3.2, 2.6).corner(15.6, 3.2, 1.6).to(15.6, 4.8));
}

void crop(GlyphPen &pen)
{
    pen.lines({6.5, 3.5, 6.5, 17.5, 20.5, 17.5}).lines({3.5, 6.5, 17.5, 6.5, 17.5, 20.5});
}

void eraser(GlyphPen &pen)
{
    pen.stroke(Trace(11.2, 6.8)
                   .corner(14.2, 3.8, 1.6)
                   .corner(20.4, 10, 1.6)
                   .to(11, 19.4)
                   .corner(9.6, 20.4, 0.4)
                   .corner(7.6, 19.4, 1.0)
                   .corner(3.2, 14.8, 1.6)
                   .close());
    pen.line(8, 10, 14.2, 16.2).line(10.4, 20.4, 20.6, 20.4);
}

void fit(GlyphPen &pen)
{
    pen.stroke(Trace(3.2, 8).corner(3.2, 3.8, 2.2).to(7.6, 3.8));
    pen.stroke(Trace(16.4, 3.8).corner(20.8, 3.8, 2.2).to(20.8, 8));
    pen.stroke(Trace(20.8, 16).corner(20.8, 20.2, 2.2).to(16.4, 20.2));
    pen.stroke(Trace(7.6, 20.2).corner(3.2, 20.2, 2.2).to(3.2, 16));
    pen.rect(7.6, 8.6, 16.4, 15.4, 1.4);
}

void flip(GlyphPen &pen)
{
    pen.polygon({8.8, 6, 8.8, 18, 2.8, 18}).polygon({15.2, 6, 15.2, 18, 21.2, 18});
    pen.line(12, 3, 12, 5.2).line(12, 9, 12, 10.6).line(12, 13.6, 12, 15.2).line(12, 18.8, 12, 21);
}

void folder(GlyphPen &pen)
{
    pen.stroke(Trace(3, 12)
                   .corner(3, 4.6, 2.2)
                   .corner(9, 4.6, 1)
                   .corner(11.6, 7.4, 1)
                   .corner(21, 7.4, 2.2)
                   .corner(21, 19.4, 2.2)
                   .corner(3, 19.4, 2.2)
                   .close());
}

void gif(GlyphPen &pen)
{
    pen.rect(2.6, 5, 21.4, 19, 2.8).thick(1.6);
    pen.stroke(Trace(9.6, 10.2).arc(8.2, 12, 2.4, -54, -270).corner(9.9, 14.4, 0.8).to(9.9, 12.3).to(8.6, 12.3));
    pen.line(12.8, 9.6, 12.8, 14.4).lines({18.4, 9.6, 15.7, 9.6, 15.7, 14.4}).line(15.7, 12.1, 17.8, 12.1);
}

void imageWithPlus(GlyphPen &pen)
{
    pen.stroke(Trace(12.4, 4).corner(3, 4, 2.6).corner(3, 20.6, 2.6).corner(20, 20.6, 2.6).to(20, 11.8));
    pen.line(18.4, 2.8, 18.4, 8.8).line(15.4, 5.8, 21.4, 5.8);
    pen.stroke(Trace(3.2, 17.2).corner(8.4, 12, 0.8).to(16.6, 20.2))
        .stroke(Trace(13, 16.6).corner(15.6, 14, 0.8).to(19.8, 18.2));
    pen.dot(8.2, 8.8, 1.5);
}

void info(GlyphPen &pen)
{
    pen.circle(12, 12, 9).line(12, 11.2, 12, 16.6).dot(12, 7.6, 1.25);
}

void keyboard(GlyphPen &pen)
{
    pen.rect(2.4, 5.6, 21.6, 18.4, 2.6);
    pen.dot(6.4, 9.8, 1.15).dot(10.1, 9.8, 1.15).dot(13.9, 9.8, 1.15).dot(17.6, 9.8, 1.15);
    pen.dot(6.4, 14.2, 1.15).line(9.8, 14.2, 14.2, 14.2).dot(17.6, 14.2, 1.15);
}

void letterT(GlyphPen &pen)
{
    pen.lines({4.6, 7.4, 4.6, 4.4, 19.4, 4.4, 19.4, 7.4}).line(12, 4.4, 12, 19.6).line(9, 19.6, 15, 19.6);
}

void magnifier(GlyphPen &pen)
{
    pen.circle(10.4, 10.4, 7).line(15.6, 15.6, 20.8, 20.8);
}

void magnifierPlus(GlyphPen &pen)
{
    magnifier(pen);
    pen.line(7.4, 10.4, 13.4, 10.4).line(10.4, 7.4, 10.4, 13.4);
}

void microphoneStand(GlyphPen &pen)
{
    pen.arc(12, 11.2, 6.8, 175, 5).line(12, 18, 12, 21.2).line(8.6, 21.2, 15.4, 21.2);
}

void microphone(GlyphPen &pen)
{
    pen.rect(8.8, 2.8, 15.2, 14.4, 3.2);
    microphoneStand(pen);
}

void minus(GlyphPen &pen)
{
    pen.line(4.6, 12, 19.4, 12);
}

void mosaic(GlyphPen &pen)
{
    pen.rect(3.4, 3.4, 20.6, 20.6, 2.6);
    pen.fillRect(3.6, 3.6, 9.2, 9.2, 1.6).fillRect(14.8, 3.6, 20.4, 9.2, 1.6).fillRect(9.2, 9.2, 14.8, 14.8);
    pen.fillRect(3.6, 14.8, 9.2, 20.4, 1.6).fillRect(14.8, 14.8, 20.4, 20.4, 1.6);
}

void move(GlyphPen &pen)
{
    pen.line(12, 3, 12, 21).line(3, 12, 21, 12);
    pen.lines({9.2, 5.6, 12, 2.8, 14.8, 5.6}).lines({9.2, 18.4, 12, 21.2, 14.8, 18.4});
    pen.lines({5.6, 9.2, 2.8, 12, 5.6, 14.8}).lines({18.4, 9.2, 21.2, 12, 18.4, 14.8});
}

void pageScrollingDown(GlyphPen &pen)
{
    pen.stroke(Trace(4.4, 10.4).corner(4.4, 3.2, 2.4).corner(19.6, 3.2, 2.4).to(19.6, 10.4));
    pen.line(4.4, 14, 4.4, 16.2).line(19.6, 14, 19.6, 16.2);
    pen.line(12, 7.8, 12, 20.6).lines({8, 16.8, 12, 20.8, 16, 16.8});
}

void pause(GlyphPen &pen)
{
    pen.rect(5.6, 4.2, 9.8, 19.8, 1.2).rect(14.2, 4.2, 18.4, 19.8, 1.2);
}

void pencil(GlyphPen &pen)
{
    pen.polygon({14.6, 5.4, 18.6, 9.4, 9.2, 18.8, 4.6, 19.4, 5.2, 14.8}).line(12.4, 7.6, 16.4, 11.6);
}

void pin(GlyphPen &pen)
{
    pen.line(7.6, 3, 16.4, 3).line(12, 15, 12, 21.4);
    pen.stroke(Trace(9.2, 3).to(9.2, 9.4).quad(6, 11, 6, 15).to(18, 15).quad(18, 11, 14.8, 9.4).to(14.8, 3));
}

void play(GlyphPen &pen)
{
    pen.stroke(Trace(6.6, 12).corner(6.6, 3.6, 1.2).corner(20, 12, 1.2).corner(6.6, 20.4, 1.2).close());
}

void plus(GlyphPen &pen)
{
    pen.line(4.6, 12, 19.4, 12).line(12, 4.6, 12, 19.4);
}

void record(GlyphPen &pen)
{
    pen.circle(12, 12, 9).dot(12, 12, 4.4);
}

void redo(GlyphPen &pen)
{
    pen.lines({15.8, 4, 20.6, 8.8, 15.8, 13.6});
    pen.stroke(Trace(20.2, 8.8).to(9.2, 8.8).arc(9.2, 14.4, 5.6, -90, -270).to(14.6, 20));
}

void undo(GlyphPen &pen)
{
    pen.lines({8.2, 4, 3.4, 8.8, 8.2, 13.6});
    pen.stroke(Trace(3.8, 8.8).to(14.8, 8.8).arc(14.8, 14.4, 5.6, -90, 90).to(9.4, 20));
}

void reset(GlyphPen &pen)
{
    pen.lines({3.6, 3.6, 3.6, 8.8, 8.8, 8.8}).arc(12, 12, 8.8, 202, 510);
}

void rotate(GlyphPen &pen)
{
    pen.rect(9.6, 10.2, 20.8, 20.8, 2.4);
    pen.arc(13.2, 13, 9.2, 182, 268).lines({2, 9.8, 4.2, 12.8, 7.2, 10.6});
}

void scanCorners(GlyphPen &pen)
{
    pen.stroke(Trace(3.4, 7.8).corner(3.4, 3.4, 2.4).to(7.8, 3.4));
    pen.stroke(Trace(16.2, 3.4).corner(20.6, 3.4, 2.4).to(20.6, 7.8));
    pen.stroke(Trace(20.6, 16.2).corner(20.6, 20.6, 2.4).to(16.2, 20.6));
    pen.stroke(Trace(7.8, 20.6).corner(3.4, 20.6, 2.4).to(3.4, 16.2));
}

void sparkle(GlyphPen &pen, double cx, double cy, double radius)
{
    const double waist = radius * 0.16;
    pen.stroke(Trace(cx, cy - radius)
                   .quad(cx + waist, cy - waist, cx + radius, cy)
                   .quad(cx + waist, cy + waist, cx, cy + radius)
                   .quad(cx - waist, cy + waist, cx - radius, cy)
                   .quad(cx - waist, cy - waist, cx, cy - radius)
                   .close());
}

void speaker(GlyphPen &pen)
{
    speakerBody(pen);
    pen.arc(11.4, 12, 5, -42, 42).arc(11.4, 12, 9.4, -46, 46);
}

void speakerOff(GlyphPen &pen)
{
    speakerBody(pen);
    pen.line(15.8, 9.4, 21, 14.6).line(21, 9.4, 15.8, 14.6);
}

void split(GlyphPen &pen)
{
    pen.circle(6.6, 18, 2.9).circle(17.4, 18, 2.9);
    pen.line(8.2, 15.6, 16.8, 3).line(15.8, 15.6, 7.2, 3);
}

void stitch(GlyphPen &pen)
{
    pen.stroke(Trace(7, 3.2)
                   .corner(12.2, 3.2, 2)
                   .to(12.2, 7.4)
                   .corner(21.2, 7.4, 2)
                   .corner(21.2, 20.8, 2)
                   .corner(11.8, 20.8, 2)
                   .to(11.8, 16.6)
                   .corner(2.8, 16.6, 2)
                   .corner(2.8, 3.2, 2)
                   .close());
    pen.line(12, 10.8, 12, 13.2);
}

void textScan(GlyphPen &pen)
{
    scanCorners(pen);
    pen.lines({8, 9.4, 8, 7.8, 16, 7.8, 16, 9.4}).line(12, 7.8, 12, 16.6);
}

void trash(GlyphPen &pen)
{
    pen.line(3.6, 6.4, 20.4, 6.4).stroke(Trace(8.6, 6.4).corner(8.6, 3, 1.4).corner(15.4, 3, 1.4).to(15.4, 6.4));
    pen.stroke(Trace(5.6, 6.4).corner(6.4, 21, 2.2).corner(17.6, 21, 2.2).to(18.4, 6.4));
    pen.line(10, 10.8, 10, 16.6).line(14, 10.8, 14, 16.6);
}

void video(GlyphPen &pen)
{
    pen.rect(2.8, 4.6, 21.2, 19.4, 3);
    pen.stroke(Trace(9.8, 12).corner(9.8, 8.4, 0.6).corner(15.6, 12, 0.6).corner(9.8, 15.6, 0.6).close());
}

} // namespace tavrel::ui::shapes
