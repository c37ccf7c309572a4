#pragma once

#include "annotate/arrow_geometry.h"
#include "annotate/segment_shape.h"

namespace tavrel {

/// An arrow, straight or bent by a handle in its middle.
class ArrowShape final : public SegmentShape
{
public:
    ArrowShape() : SegmentShape(ToolType::Arrow) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    [[nodiscard]] QList<QPointF> handles() const override;
    /// Handle 1 bends the arrow.
    int setHandle(int index, double x, double y) override;
    [[nodiscard]] QRectF inkBounds() const override;
    [[nodiscard]] QRectF paintedBounds() const override;
    [[nodiscard]] QList<QRectF> paintedParts() const override;
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;

private:
    [[nodiscard]] ArrowCourse course() const { return ArrowCourse::make(start(), end(), m_offset); }

    QPointF m_offset; ///< as dragged, see ArrowCourse::make()
};

} // namespace tavrel
