#pragma once

#include "annotate/base_shape.h"

#include <QRectF>

namespace tavrel {

/// A shape that is an upright box with a handle at each corner, clockwise from the top left one. The box is always
/// normalised: dragging a corner past the opposite one turns it into that corner.
class BoxShape : public BaseShape
{
public:
    using BaseShape::BaseShape;

    [[nodiscard]] const QRectF &box() const { return m_box; }
    /// box  its size must not be negative
    void setBox(const QRectF &box) { m_box = box; }

    void updateDrag(double startX, double startY, double x, double y) override;
    void translate(double dx, double dy) override;
    [[nodiscard]] QList<QPointF> handles() const override;
    [[nodiscard]] Qt::CursorShape handleCursor(int index) const override;
    /// The corner opposite the dragged one stays.
    int setHandle(int index, double x, double y) override;
    [[nodiscard]] std::optional<QRectF> bounds() const override { return m_box; }
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;

private:
    QRectF m_box;
};

} // namespace tavrel
