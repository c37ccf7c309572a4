#pragma once

#include "annotate/base_shape.h"

namespace tavrel {

/// A box of the picture and a lens beside it that shows the box enlarged.
///
/// The lens finds a free place on the canvas by itself until it is moved. The canvas is the one of the last paint.
class MagnifierShape final : public BaseShape
{
public:
    MagnifierShape() : BaseShape(ToolType::Magnifier) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void updateDrag(double startX, double startY, double x, double y) override;
    void translate(double dx, double dy) override;
    /// The corners of the source clockwise from the top left one, then the centre of the lens.
    [[nodiscard]] QList<QPointF> handles() const override;
    int setHandle(int index, double x, double y) override;
    [[nodiscard]] std::optional<QRectF> bounds() const override;
    /// Everywhere while the lens has no place yet.
    [[nodiscard]] QRectF paintedBounds() const override;
    void pressAt(double x, double y) override;
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;
    [[nodiscard]] bool isTooSmall() const override;

    [[nodiscard]] QRectF source() const { return QRectF(m_a, m_b).normalized(); }
    /// canvas  where the lens shall lie when it finds its place itself; empty for anywhere
    [[nodiscard]] QRectF lens(const QRectF &canvas) const;

    bool isRound = true;
    double zoom = 2.0;
    QPointF offset; ///< from the centre of the source to that of the lens, with hasOffset
    bool hasOffset = false;
    double dash = 7.0;

private:
    [[nodiscard]] QPointF automaticCenter(const QSizeF &size, const QRectF &canvas) const;
    [[nodiscard]] bool contains(const QRectF &box, double grown, const QPointF &place) const;

    QPointF m_a;
    QPointF m_b;
    bool m_lensGrabbed = false;
    mutable std::optional<QRectF> m_canvas; ///< of the last paint
};

} // namespace tavrel
