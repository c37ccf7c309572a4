#include "annotate/selection_marks.h"

#include <QPainterPath>

#include <algorithm>
#include <array>

namespace tavrel {
namespace {

/// Black rings under white marks, so that they show on every picture: extra size and alpha.
struct Ring
{
    double extra;
    int alpha;
};
constexpr std::array kRings{Ring{4.4, 44}, Ring{2.4, 88}, Ring{1.0, 140}};
constexpr std::array kGlowLines{Ring{10.0, 24}, Ring{6.0, 44}, Ring{2.8, 86}, Ring{1.6, 205}};

/// Each path by itself: the painter hands a long list of spans to other threads, and for marks as small as these that
/// takes longer than to paint them.
void strokeMarks(QPainter &painter, const std::array<QPainterPath, 4> &paths, double width, double handleScale)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const auto stroke = [&](const QColor &color, double penWidth) {
        painter.setPen(QPen(color, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (const QPainterPath &path : paths)
            painter.drawPath(path);
    };
    for (const Ring &ring : kRings)
        stroke(QColor(0, 0, 0, ring.alpha), width + ring.extra * handleScale);
    stroke(Qt::white, width);
    painter.restore();
}

void strokeGlow(QPainter &painter, const QPainterPath &path, double handleScale)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    for (const Ring &line : kGlowLines) {
        QColor color = QColor::fromRgb(kGlowColor);
        color.setAlpha(line.alpha);
        painter.setPen(QPen(color, line.extra * handleScale));
        painter.drawPath(path);
    }
    painter.restore();
}

} // namespace

void paintRoundHandle(QPainter &painter, const QPointF &center, double handleScale)
{
    const double radius = 6.0 * handleScale;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const Ring &ring : kRings) {
        const double grown = radius + ring.extra * handleScale * 0.5;
        painter.setBrush(QColor(0, 0, 0, ring.alpha));
        painter.drawEllipse(center, grown, grown);
    }
    painter.setBrush(Qt::white);
    painter.drawEllipse(center, radius, radius);
    painter.restore();
}

void paintCornerBrackets(QPainter &painter, const QRectF &box, double armLength, double width, double handleScale)
{
    const auto corner = [armLength](const QPointF &at, double towardsX, double towardsY) {
        QPainterPath path(QPointF(at.x() + towardsX * armLength, at.y()));
        path.lineTo(at);
        path.lineTo(at.x(), at.y() + towardsY * armLength);
        return path;
    };
    strokeMarks(painter,
                {corner(box.topLeft(), 1, 1), corner(box.topRight(), -1, 1), corner(box.bottomLeft(), 1, -1),
                 corner(box.bottomRight(), -1, -1)},
                width, handleScale);
}

void paintCornerBrackets(QPainter &painter, const QRectF &box, double handleScale)
{
    const double arm = std::min(12.0 * handleScale, 0.4 * std::min(box.width(), box.height()));
    paintCornerBrackets(painter, box, arm, 5.0 * handleScale, handleScale);
}

void paintEdgeTicks(QPainter &painter, const QRectF &box, double length, double width, double handleScale)
{
    const auto tick = [](const QPointF &middle, const QPointF &half) {
        QPainterPath path(middle - half);
        path.lineTo(middle + half);
        return path;
    };
    const QPointF middle = box.center();
    const QPointF across(length / 2, 0);
    const QPointF down(0, length / 2);
    strokeMarks(painter,
                {tick({middle.x(), box.top()}, across), tick({middle.x(), box.bottom()}, across),
                 tick({box.left(), middle.y()}, down), tick({box.right(), middle.y()}, down)},
                width, handleScale);
}

void paintRoundedGlow(QPainter &painter, const QRectF &box, double handleScale)
{
    QPainterPath path;
    path.addRoundedRect(box, 6.0 * handleScale, 6.0 * handleScale);
    strokeGlow(painter, path, handleScale);
}

void paintEllipseGlow(QPainter &painter, const QRectF &box, double handleScale)
{
    QPainterPath path;
    path.addEllipse(box);
    strokeGlow(painter, path, handleScale);
}

void paintRectOutline(QPainter &painter, const QRectF &box, double handleScale)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 140), 2.6 * handleScale));
    painter.drawRect(box);
    painter.setPen(QPen(QColor::fromRgb(kOutlineColor), 1.6 * handleScale));
    painter.drawRect(box);
    painter.restore();
}

} // namespace tavrel
