#include "annotate/segment_shape.h"

namespace tavrel {
namespace {

constexpr int kParts = 8;

} // namespace

void SegmentShape::setEnds(const QPointF &start, const QPointF &end)
{
    m_start = start;
    m_end = end;
}

void SegmentShape::updateDrag(double startX, double startY, double x, double y)
{
    setEnds({startX, startY}, {x, y});
}

void SegmentShape::translate(double dx, double dy)
{
    m_start += QPointF(dx, dy);
    m_end += QPointF(dx, dy);
}

int SegmentShape::setHandle(int index, double x, double y)
{
    if (index == 0)
        m_start = {x, y};
    else if (index == 1)
        m_end = {x, y};
    return index;
}

QList<QRectF> SegmentShape::partsAlong(double reach) const
{
    const QPointF step = (m_end - m_start) / kParts;
    QList<QRectF> parts;
    for (int i = 0; i < kParts; ++i) {
        const QPointF from = m_start + step * i;
        parts.append(QRectF(from, from + step).normalized().adjusted(-reach, -reach, reach, reach));
    }
    return parts;
}

void SegmentShape::scale(double factor)
{
    BaseShape::scale(factor);
    m_start *= factor;
    m_end *= factor;
}

SegmentShape::Keys SegmentShape::plainKeys()
{
    return {QStringLiteral("startX"), QStringLiteral("startY"), QStringLiteral("endX"), QStringLiteral("endY")};
}

void SegmentShape::writeEnds(QJsonObject &out, const Keys &keys) const
{
    out.insert(keys.startX, m_start.x());
    out.insert(keys.startY, m_start.y());
    out.insert(keys.endX, m_end.x());
    out.insert(keys.endY, m_end.y());
}

void SegmentShape::readEnds(const QJsonObject &in, const Keys &keys)
{
    m_start = {readLength(in, keys.startX), readLength(in, keys.startY)};
    m_end = {readLength(in, keys.endX), readLength(in, keys.endY)};
}

} // namespace tavrel
