#pragma once

#include "annotate/base_shape.h"

namespace tavrel {

/// A shape between the point where its drag began and the one where it ended, with a handle at each.
class SegmentShape : public BaseShape
{
public:
    using BaseShape::BaseShape;

    [[nodiscard]] const QPointF &start() const { return m_start; }
    [[nodiscard]] const QPointF &end() const { return m_end; }
    void setEnds(const QPointF &start, const QPointF &end);

    void updateDrag(double startX, double startY, double x, double y) override;
    void translate(double dx, double dy) override;
    [[nodiscard]] QList<QPointF> handles() const override { return {m_start, m_end}; }
    int setHandle(int index, double x, double y) override;
    void scale(double factor) override;

protected:
    /// Boxes along the way between the ends, for shapes that reach no further to its sides.
    [[nodiscard]] QList<QRectF> partsAlong(double reach) const;
    struct Keys
    {
        QString startX;
        QString startY;
        QString endX;
        QString endY;
    };
    void writeEnds(QJsonObject &out, const Keys &keys) const;
    void readEnds(const QJsonObject &in, const Keys &keys);
    /// The keys of a class that has none of its own.
    [[nodiscard]] static Keys plainKeys();

private:
    QPointF m_start;
    QPointF m_end;
};

} // namespace tavrel
