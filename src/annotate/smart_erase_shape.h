#pragma once

#include "annotate/box_shape.h"

namespace tavrel {

/// A box whose content is replaced by what was behind it. It shows the result of the SmartEraseEngine in the context;
/// until that is in, a tinted box with a light that sweeps over it.
class SmartEraseShape final : public BoxShape
{
public:
    SmartEraseShape() : BoxShape(ToolType::SmartErase) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;
    [[nodiscard]] std::optional<EraseBox> eraseBox() const override;

    /// Whether the light sweeps, so that the host has to repaint the box now and then.
    [[nodiscard]] bool isPending(const ShapeRenderContext &context) const;

    EraseSolver eraseSolver = EraseSolver::Auto;
    bool pending = false; ///< runtime only: the host will hand the box to an engine soon
};

/// The look of a box without a result.
///
/// sweep  how far the light has come, 0 to 1; nothing for no light
void paintErasePlaceholder(QPainter &painter, const QRectF &box, std::optional<double> sweep);

} // namespace tavrel
