#pragma once

#include "annotate/tool_type.h"

#include <QColor>
#include <QLatin1StringView>
#include <QPainterPath>
#include <QPointF>

#include <initializer_list>
#include <span>
#include <vector>

class QPainter;

namespace tavrel::ui {

/// An outline with rounded corners, point by point: `Trace(4, 20).corner(4, 4, 2).to(20, 4)`. Box units.
class Trace final
{
public:
    Trace(qreal x, qreal y) { m_path.moveTo(x, y); }

    Trace &move(qreal x, qreal y);
    Trace &to(qreal x, qreal y);
    /// Towards (x, y), but turning there with an arc of `radius` into whatever comes next by `to` or `corner`.
    Trace &corner(qreal x, qreal y, qreal radius);
    Trace &quad(qreal cx, qreal cy, qreal x, qreal y);
    Trace &cubic(qreal c1x, qreal c1y, qreal c2x, qreal c2y, qreal x, qreal y);
    /// A line to the start of the arc and the arc. Degrees, 0 to the right, growing clockwise as seen.
    Trace &arc(qreal cx, qreal cy, qreal radius, qreal fromDegrees, qreal toDegrees);
    Trace &close();

    [[nodiscard]] const QPainterPath &path() const { return m_path; }

private:
    void turnInto(QPointF next);

    QPainterPath m_path;
    QPointF m_corner;
    qreal m_radius = 0; ///< above 0 while a corner waits for its way out
};

/// Draws one glyph in its box of 24 by 24 units: strokes 1.8 wide with round caps and joins, solid parts without an
/// outline.
///
/// Strokes are collected and painted as one shape, so a translucent colour shows no darker spots where lines cross.
class GlyphPen final
{
public:
    static constexpr qreal box = 24;
    static constexpr qreal width = 1.8;

    /// `painter` already has the box as its coordinates.
    GlyphPen(QPainter &painter, const QColor &color) : m_painter(painter), m_color(color) {}

    GlyphPen(const GlyphPen &) = delete;
    GlyphPen &operator=(const GlyphPen &) = delete;

    GlyphPen &line(qreal x1, qreal y1, qreal x2, qreal y2);
    /// An open polyline through x, y, x, y ...
    GlyphPen &lines(std::initializer_list<qreal> points);
    /// The same, closed.
    GlyphPen &polygon(std::initializer_list<qreal> points);
    /// A rounded rectangle from edge to edge.
    GlyphPen &rect(qreal left, qreal top, qreal right, qreal bottom, qreal radius = 2);
    GlyphPen &circle(qreal cx, qreal cy, qreal radius);
    GlyphPen &ellipse(qreal cx, qreal cy, qreal rx, qreal ry);
    /// Degrees, 0 to the right, growing clockwise as seen.
    GlyphPen &arc(qreal cx, qreal cy, qreal radius, qreal fromDegrees, qreal toDegrees);
    GlyphPen &stroke(const Trace &trace);

    GlyphPen &dot(qreal cx, qreal cy, qreal radius);
    GlyphPen &fillRect(qreal left, qreal top, qreal right, qreal bottom, qreal radius = 0);
    GlyphPen &fillPolygon(std::initializer_list<qreal> points);
    GlyphPen &fill(const Trace &trace);

    /// What comes next is painted at this share of the colour's opacity.
    GlyphPen &opacity(qreal share);
    /// What comes next is drawn with another pen width.
    GlyphPen &thick(qreal penWidth);
    /// Cuts a band of `bandWidth` along a line out of everything drawn so far.
    GlyphPen &gap(qreal x1, qreal y1, qreal x2, qreal y2, qreal bandWidth);
    /// Cuts a disc out of everything drawn so far.
    GlyphPen &hole(qreal cx, qreal cy, qreal radius);
    /// Turns everything drawn so far around the middle of the box, clockwise as seen.
    GlyphPen &turn(qreal degrees);

    /// Paints what was collected.
    void finish();

private:
    /// Parts that share an opacity and a pen width. `cut` is what later calls took away again.
    struct Layer
    {
        QPainterPath strokes;
        QPainterPath fills;
        QPainterPath cut;
        qreal opacity = 1;
        qreal penWidth = width;
    };

    QPainterPath &strokes() { return m_layers.back().strokes; }
    QPainterPath &fills() { return m_layers.back().fills; }
    void cut(const QPainterPath &path);

    QPainter &m_painter;
    QColor m_color;
    std::vector<Layer> m_layers{Layer{}};
};

/// One row of a glyph table.
struct Glyph
{
    QLatin1StringView name;
    void (*draw)(GlyphPen &pen);
};

/// One row of the tool table.
struct ToolGlyph
{
    ToolType tool;
    void (*draw)(GlyphPen &pen);
};

[[nodiscard]] std::span<const Glyph> editorGlyphs();
[[nodiscard]] std::span<const Glyph> lineGlyphs();
[[nodiscard]] std::span<const Glyph> attributeGlyphs();
[[nodiscard]] std::span<const ToolGlyph> toolGlyphTable();

} // namespace tavrel::ui
