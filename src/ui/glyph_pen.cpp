#include "ui/glyph_pen.h"

#include <QLineF>
#include <QPainter>
#include <QPainterPathStroker>
#include <QTransform>

#include <cmath>
#include <numbers>

namespace tavrel::ui {
namespace {

QRectF around(qreal cx, qreal cy, qreal rx, qreal ry)
{
    return {cx - rx, cy - ry, 2 * rx, 2 * ry};
}

QPainterPath polyline(std::initializer_list<qreal> points)
{
    QPainterPath path;
    const qreal *xy = points.begin();
    path.moveTo(xy[0], xy[1]);
    for (size_t i = 2; i + 1 < points.size(); i += 2)
        path.lineTo(xy[i], xy[i + 1]);
    return path;
}

QPainterPath closedPolyline(std::initializer_list<qreal> points)
{
    QPainterPath path = polyline(points);
    path.closeSubpath();
    return path;
}

} // namespace

Trace &Trace::move(qreal x, qreal y)
{
    m_path.moveTo(x, y);
    return *this;
}

Trace &Trace::to(qreal x, qreal y)
{
    turnInto({x, y});
    m_path.lineTo(x, y);
    return *this;
}

Trace &Trace::corner(qreal x, qreal y, qreal radius)
{
    turnInto({x, y});
    m_corner = {x, y};
    m_radius = radius;
    return *this;
}

Trace &Trace::quad(qreal cx, qreal cy, qreal x, qreal y)
{
    turnInto({cx, cy});
    m_path.quadTo(cx, cy, x, y);
    return *this;
}

Trace &Trace::cubic(qreal c1x, qreal c1y, qreal c2x, qreal c2y, qreal x, qreal y)
{
    turnInto({c1x, c1y});
    m_path.cubicTo(c1x, c1y, c2x, c2y, x, y);
    return *this;
}

Trace &Trace::arc(qreal cx, qreal cy, qreal radius, qreal fromDegrees, qreal toDegrees)
{
    const qreal angle = fromDegrees * std::numbers::pi / 180;
    turnInto({cx + radius * std::cos(angle), cy + radius * std::sin(angle)});
    m_path.arcTo(around(cx, cy, radius, radius), -fromDegrees, fromDegrees - toDegrees);
    return *this;
}

Trace &Trace::close()
{
    turnInto(m_path.elementAt(0));
    m_path.closeSubpath();
    return *this;
}

void Trace::turnInto(QPointF next)
{
    if (m_radius <= 0)
        return;
    const QLineF in(m_corner, m_path.currentPosition());
    const QLineF out(m_corner, next);
    qreal between = std::abs(in.angleTo(out));
    if (between > 180)
        between = 360 - between;
    const qreal opening = between * std::numbers::pi / 180;
    const qreal reach = m_radius / std::tan(opening / 2);
    const qreal handle = 4.0 / 3.0 * std::tan((std::numbers::pi - opening) / 4) * m_radius;
    const QPointF start = in.pointAt(reach / in.length());
    const QPointF end = out.pointAt(reach / out.length());
    m_path.lineTo(start);
    m_path.cubicTo(in.pointAt((reach - handle) / in.length()), out.pointAt((reach - handle) / out.length()), end);
    m_radius = 0;
}

GlyphPen &GlyphPen::line(qreal x1, qreal y1, qreal x2, qreal y2)
{
    return lines({x1, y1, x2, y2});
}

GlyphPen &GlyphPen::lines(std::initializer_list<qreal> points)
{
    strokes().addPath(polyline(points));
    return *this;
}

GlyphPen &GlyphPen::polygon(std::initializer_list<qreal> points)
{
    strokes().addPath(closedPolyline(points));
    return *this;
}

GlyphPen &GlyphPen::rect(qreal left, qreal top, qreal right, qreal bottom, qreal radius)
{
    strokes().addRoundedRect(QRectF(QPointF(left, top), QPointF(right, bottom)), radius, radius);
    return *this;
}

GlyphPen &GlyphPen::circle(qreal cx, qreal cy, qreal radius)
{
    return ellipse(cx, cy, radius, radius);
}

GlyphPen &GlyphPen::ellipse(qreal cx, qreal cy, qreal rx, qreal ry)
{
    strokes().addEllipse(around(cx, cy, rx, ry));
    return *this;
}

GlyphPen &GlyphPen::arc(qreal cx, qreal cy, qreal radius, qreal fromDegrees, qreal toDegrees)
{
    const QRectF circle = around(cx, cy, radius, radius);
    strokes().arcMoveTo(circle, -fromDegrees);
    strokes().arcTo(circle, -fromDegrees, fromDegrees - toDegrees);
    return *this;
}

GlyphPen &GlyphPen::stroke(const Trace &trace)
{
    strokes().addPath(trace.path());
    return *this;
}

GlyphPen &GlyphPen::dot(qreal cx, qreal cy, qreal radius)
{
    fills().addEllipse(around(cx, cy, radius, radius));
    return *this;
}

GlyphPen &GlyphPen::fillRect(qreal left, qreal top, qreal right, qreal bottom, qreal radius)
{
    fills().addRoundedRect(QRectF(QPointF(left, top), QPointF(right, bottom)), radius, radius);
    return *this;
}

GlyphPen &GlyphPen::fillPolygon(std::initializer_list<qreal> points)
{
    fills().addPath(closedPolyline(points));
    return *this;
}

GlyphPen &GlyphPen::fill(const Trace &trace)
{
    fills().addPath(trace.path());
    return *this;
}

GlyphPen &GlyphPen::opacity(qreal share)
{
    Layer next;
    next.opacity = share;
    next.penWidth = m_layers.back().penWidth;
    m_layers.push_back(next);
    return *this;
}

GlyphPen &GlyphPen::thick(qreal penWidth)
{
    Layer next;
    next.opacity = m_layers.back().opacity;
    next.penWidth = penWidth;
    m_layers.push_back(next);
    return *this;
}

GlyphPen &GlyphPen::gap(qreal x1, qreal y1, qreal x2, qreal y2, qreal bandWidth)
{
    QPainterPathStroker band;
    band.setWidth(bandWidth);
    band.setCapStyle(Qt::RoundCap);
    cut(band.createStroke(polyline({x1, y1, x2, y2})));
    return *this;
}

GlyphPen &GlyphPen::hole(qreal cx, qreal cy, qreal radius)
{
    QPainterPath disc;
    disc.addEllipse(around(cx, cy, radius, radius));
    cut(disc);
    return *this;
}

GlyphPen &GlyphPen::turn(qreal degrees)
{
    const QTransform turned = QTransform::fromTranslate(box / 2, box / 2).rotate(degrees).translate(-box / 2, -box / 2);
    for (Layer &layer : m_layers) {
        layer.strokes = turned.map(layer.strokes);
        layer.fills = turned.map(layer.fills);
        layer.cut = turned.map(layer.cut);
    }
    return *this;
}

void GlyphPen::cut(const QPainterPath &path)
{
    for (Layer &layer : m_layers)
        layer.cut = layer.cut.united(path);
    Layer next;
    next.opacity = m_layers.back().opacity;
    next.penWidth = m_layers.back().penWidth;
    m_layers.push_back(next);
}

void GlyphPen::finish()
{
    for (const Layer &layer : m_layers) {
        m_painter.save();
        if (!layer.cut.isEmpty()) {
            QPainterPath keep;
            keep.addRect(-box, -box, 3 * box, 3 * box);
            m_painter.setClipPath(keep.subtracted(layer.cut), Qt::IntersectClip);
        }
        m_painter.setOpacity(m_painter.opacity() * layer.opacity);
        if (!layer.fills.isEmpty())
            m_painter.fillPath(layer.fills, m_color);
        if (!layer.strokes.isEmpty())
            m_painter.strokePath(layer.strokes,
                                 QPen(m_color, layer.penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.restore();
    }
}

} // namespace tavrel::ui
