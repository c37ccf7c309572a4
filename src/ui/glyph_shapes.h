#pragma once

namespace tavrel::ui {

class GlyphPen;

/// Drawings that stand in more than one glyph set, and parts that several glyphs share, so that the sets stay one
/// family.
namespace shapes {

void arrowDownIntoTray(GlyphPen &pen);
void arrowUpFromTray(GlyphPen &pen);
void background(GlyphPen &pen);
void camera(GlyphPen &pen);
void check(GlyphPen &pen);
void chevronDown(GlyphPen &pen);
void clipboard(GlyphPen &pen);
void close(GlyphPen &pen);
void cloudUp(GlyphPen &pen);
void copy(GlyphPen &pen);
void crop(GlyphPen &pen);
void eraser(GlyphPen &pen);
void fit(GlyphPen &pen);
void flip(GlyphPen &pen);
void folder(GlyphPen &pen);
void gif(GlyphPen &pen);
void imageWithPlus(GlyphPen &pen);
void info(GlyphPen &pen);
void keyboard(GlyphPen &pen);
void letterT(GlyphPen &pen);
void magnifier(GlyphPen &pen);
void magnifierPlus(GlyphPen &pen);
void microphone(GlyphPen &pen);
void microphoneStand(GlyphPen &pen);
void minus(GlyphPen &pen);
void mosaic(GlyphPen &pen);
void move(GlyphPen &pen);
void pageScrollingDown(GlyphPen &pen);
void pause(GlyphPen &pen);
void pencil(GlyphPen &pen);
void pin(GlyphPen &pen);
void play(GlyphPen &pen);
void plus(GlyphPen &pen);
void record(GlyphPen &pen);
void redo(GlyphPen &pen);
void reset(GlyphPen &pen);
void rotate(GlyphPen &pen);
void scanCorners(GlyphPen &pen);
void speaker(GlyphPen &pen);
void speakerOff(GlyphPen &pen);
void split(GlyphPen &pen);
void stitch(GlyphPen &pen);
void textScan(GlyphPen &pen);
void trash(GlyphPen &pen);
void undo(GlyphPen &pen);
void video(GlyphPen &pen);

/// A pointed star with four rays and curved flanks.
void sparkle(GlyphPen &pen, double cx, double cy, double radius);

} // namespace shapes
} // namespace tavrel::ui
