#pragma once

#include "annotate/box_shape.h"
#include "annotate/path_shape.h"

namespace tavrel {

/// What a mosaic or a blur does, shared by box and brush.
struct MosaicLook
{
    MosaicMode mode = MosaicMode::Mosaic;
    double intensity = 15.0; ///< side of a block, or twice the radius of the blur, in units

    void write(QJsonObject &out) const;
    void read(const QJsonObject &in);
    void take(const ShapeAttributes &attributes);
    void give(ShapeAttributes &attributes) const;
    [[nodiscard]] bool apply(ShapeAttribute attribute, const ShapeAttributes &attributes);
    /// What fills the pixels around `box`: the picture with the effect, in shape coordinates; a grey veil without one.
    [[nodiscard]] QBrush brush(const QRectF &box, const ShapeRenderContext &context) const;
};

class MosaicShape final : public BoxShape
{
public:
    MosaicShape() : BoxShape(ToolType::Mosaic) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    [[nodiscard]] bool hitTest(double x, double y) const override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;

    MosaicLook look;
};

/// The brush: mosaic or blur along a freehand stroke.
class MosaicPathShape final : public PathShape
{
public:
    MosaicPathShape();

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void toJson(QJsonObject &out) const override;
    [[nodiscard]] QByteArray toJsonText() const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;

    MosaicLook look;
};

/// Darkens the canvas outside its box or ellipse. All spotlights of a document darken together: the first one of the
/// list in the context paints one layer with every hole.
class SpotlightShape final : public BoxShape
{
public:
    SpotlightShape() : BoxShape(ToolType::Spotlight) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    bool paintHoverOutline(QPainter &painter, double handleScale) const override;
    /// Only the outline counts.
    [[nodiscard]] bool hitTest(double x, double y) const override;
    [[nodiscard]] QRectF paintedBounds() const override { return {}; }
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override;
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;

    bool isRound = false;
    double dim = 0.6;
};

} // namespace tavrel
