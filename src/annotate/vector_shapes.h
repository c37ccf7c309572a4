#pragma once

#include "annotate/box_shape.h"
#include "annotate/segment_shape.h"

#include <QPen>

namespace tavrel {

/// A stroke of a shape's colour and thickness with round ends; `opacity` multiplies the alpha of the colour.
[[nodiscard]] QPen strokePen(const BaseShape &shape, double opacity);

/// Calls `draw(opacityFactor)` as often as the shape's composite operation asks. A highlighter lies over the picture
/// twice: faintly as it is, so that it shows on black, then multiplied, so that text below it stays readable.
template <typename Draw>
void paintHighlighter(QPainter &painter, const BaseShape &shape, Draw draw)
{
    if (shape.compositeOperation != QStringLiteral("multiply")) {
        draw(1.0);
        return;
    }
    draw(0.15);
    const QPainter::CompositionMode before = painter.compositionMode();
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    draw(1.0);
    painter.setCompositionMode(before);
}

/// Only its stroke can be hit.
class RectShape final : public BoxShape
{
public:
    RectShape() : BoxShape(ToolType::Rect) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    [[nodiscard]] QList<QRectF> paintedParts() const override;
};

/// The highlighter drawn as a filled box.
class MarkerRectShape final : public BoxShape
{
public:
    MarkerRectShape() : BoxShape(ToolType::Marker) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void toJson(QJsonObject &out) const override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
};

/// The ellipse in the box between two points.
class CircleShape final : public SegmentShape
{
public:
    CircleShape() : SegmentShape(ToolType::Circle) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    [[nodiscard]] Qt::CursorShape handleCursor(int index) const override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;

private:
    [[nodiscard]] QRectF box() const { return QRectF(start(), end()).normalized(); }
};

class LineShape final : public SegmentShape
{
public:
    LineShape() : SegmentShape(ToolType::Line) {}

    [[nodiscard]] QList<QRectF> paintedParts() const override { return partsAlong(thickness / 2 + 24); }
    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
};

} // namespace tavrel
