#pragma once

#include "annotate/segment_shape.h"

#include <QFont>

namespace tavrel {

/// A numbered badge that counts itself, with an optional tail to what it is about and an optional label.
/// The ends of the segment are the middle of the badge and the tip of the tail.
class SequenceShape final : public SegmentShape
{
public:
    SequenceShape() : SegmentShape(ToolType::Sequence) {}

    void paint(QPainter &painter, const ShapeRenderContext &context) const override;
    void paintSelection(QPainter &painter, const ShapeRenderContext &context) const override;
    /// The badge alone.
    [[nodiscard]] bool hitTest(double x, double y) const override;
    /// Middle, tip, and the label's when there is one. While no tail shows, dragging the middle moves the tip along.
    [[nodiscard]] QList<QPointF> handles() const override;
    int setHandle(int index, double x, double y) override;
    [[nodiscard]] std::optional<QRectF> bounds() const override;
    [[nodiscard]] QRectF inkBounds() const override;
    [[nodiscard]] QRectF paintedBounds() const override;
    void transform(const ImageTransform &transform) override;
    void scale(double factor) override;
    void toJson(QJsonObject &out) const override;
    void readJson(const QJsonObject &in) override;
    void takeAttributes(const ShapeAttributes &attributes) override;
    void giveAttributes(ShapeAttributes &attributes) const override { attributes.color = color; }
    bool applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes) override;
    [[nodiscard]] bool isTooSmall() const override { return false; }
    [[nodiscard]] bool isBeingEdited() const override { return m_isEditing; }
    [[nodiscard]] std::optional<Numbering> numbering() const override { return Numbering{m_numberType, m_number}; }
    void setNumber(int number) override { m_number = number; }

    [[nodiscard]] const QString &label() const { return m_label; }
    /// Line feeds are dropped.
    void setLabel(const QString &label);
    /// While it is being edited an editor stands where the label is.
    void setEditing(bool editing) { m_isEditing = editing; }
    [[nodiscard]] double fontSize() const { return m_fontSize; }
    /// Start of the label's base line.
    [[nodiscard]] QPointF labelOrigin() const;
    /// The number, and the label behind it.
    [[nodiscard]] QString displayText() const;

private:
    [[nodiscard]] double radius() const;
    [[nodiscard]] bool showsTail() const;
    [[nodiscard]] double tailScale() const;
    [[nodiscard]] double headLength() const;
    [[nodiscard]] double headWidth() const;
    [[nodiscard]] QFont labelFont() const;
    void paintNumber(QPainter &painter) const;
    void paintTail(QPainter &painter) const;

    NumberType m_numberType = NumberType::Arabic;
    int m_number = 1;
    double m_fontSize = 28.0;
    bool m_hasTail = false;
    QString m_label;
    QPointF m_labelOffset;
    bool m_isEditing = false;
};

} // namespace tavrel
