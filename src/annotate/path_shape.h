#pragma once

#include "annotate/base_shape.h"
#include "annotate/stroke_layer.h"
#include "annotate/stroke_points.h"

namespace tavrel {

/// A freehand stroke: the pen, or the highlighter drawn by hand.
class PathShape : public BaseShape
{
public:
    /// type  Pen, Marker or a kind derived from this class
    explicit PathShape(ToolType type) : BaseShape(type) {}

    [[nodiscard]] const StrokePoints &points() const { return m_points; }

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void updateDrag(double startX, double startY, double x, double y) override;
    void translate(double dx, double dy) override;
    [[nodiscard]] std::optional<QRectF> bounds() const override;
    [[nodiscard]] qsizetype growth() const override { return m_points.size(); }
    [[nodiscard]] QRectF grownSince(qsizetype growth) const override;
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    [[nodiscard]] QByteArray toJsonText() const override;
    void readJson(const QJsonObject &in) override;
    void takePoints(QList<QPointF> points) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    [[nodiscard]] bool isTooSmall() const override;
    bool straighten(const QPointF &from, const QPointF &to) override;
    [[nodiscard]] QList<std::shared_ptr<BaseShape>> snappedTo(const QList<QRectF> &lines,
                                                              const ShapeAttributes &attributes) const override;

protected:
    /// The stroke filled with a brush in shape coordinates, from the kept mask.
    void paintStroke(QPainter &painter, double width, const QBrush &brush, const ShapeRenderContext &context) const;

private:
    /// Whether the stroke runs through a box, looked at every two units.
    [[nodiscard]] bool touches(const QRectF &box) const;

    StrokePoints m_points;
    mutable StrokeLayer m_layer;
};

} // namespace tavrel
