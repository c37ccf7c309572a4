#include "annotate/box_shape.h"

#include <algorithm>
#include <cmath>

namespace tavrel {

void BoxShape::updateDrag(double startX, double startY, double x, double y)
{
    m_box = QRectF(std::min(startX, x), std::min(startY, y), std::abs(x - startX), std::abs(y - startY));
}

void BoxShape::translate(double dx, double dy)
{
    m_box.translate(dx, dy);
}

QList<QPointF> BoxShape::handles() const
{
    return {m_box.topLeft(), m_box.topRight(), m_box.bottomRight(), m_box.bottomLeft()};
}

Qt::CursorShape BoxShape::handleCursor(int index) const
{
    return index % 2 == 0 ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
}

int BoxShape::setHandle(int index, double x, double y)
{
    if (index < 0 || index > 3)
        return index;
    const QPointF opposite = handles().at((index + 2) % 4);
    updateDrag(x, y, opposite.x(), opposite.y());
    const bool isRight = x > opposite.x() || (x == opposite.x() && (index == 1 || index == 2));
    const bool isBottom = y > opposite.y() || (y == opposite.y() && index >= 2);
    if (isBottom)
        return isRight ? 2 : 3;
    return isRight ? 1 : 0;
}

void BoxShape::transform(const ImageTransform &transform)
{
    m_box = transform.mapBox(m_box);
}

void BoxShape::scale(double factor)
{
    BaseShape::scale(factor);
    m_box = QRectF(m_box.topLeft() * factor, m_box.size() * factor);
}

void BoxShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    out.insert(QStringLiteral("x"), m_box.x());
    out.insert(QStringLiteral("y"), m_box.y());
    out.insert(QStringLiteral("w"), m_box.width());
    out.insert(QStringLiteral("h"), m_box.height());
}

void BoxShape::readJson(const QJsonObject &in)
{
    const QRectF stored(readLength(in, QStringLiteral("x")), readLength(in, QStringLiteral("y")),
                        readLength(in, QStringLiteral("w")), readLength(in, QStringLiteral("h")));
    m_box = stored.normalized();
}

} // namespace tavrel
