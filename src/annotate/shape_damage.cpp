#include "annotate/shape_damage.h"

#include "annotate/base_shape.h"

#include <algorithm>

namespace tavrel {

void ShapeDamage::mark(const BaseShape *shape, Change change)
{
    if (!shape)
        return;
    Change &known = m_marks.emplace(shape, change).value();
    known = std::max(known, change);
}

QList<QRectF> ShapeDamage::take(const QList<std::shared_ptr<BaseShape>> &shapes, const BaseShape *hovered)
{
    QList<Seen> now;
    now.reserve(shapes.size());
    for (const auto &shape : shapes)
        now.append({shape.get(), shape->paintedParts(), shape->growth(), shape->selected, shape.get() == hovered});

    QList<QRectF> damage;
    // From the first shape that is another one the order differs, and with it what covers what.
    qsizetype i = 0;
    for (; i < now.size() && i < m_seen.size() && now[i].shape == m_seen[i].shape; ++i) {
        const Seen &before = m_seen[i];
        const Seen &after = now[i];
        const auto mark = m_marks.constFind(after.shape);
        const bool isMarked = mark != m_marks.cend();
        const bool isSameLook = before.isSelected == after.isSelected && before.isHovered == after.isHovered;
        if (isSameLook && isMarked && *mark == Change::Grown && !m_isAll && after.growth > before.growth) {
            damage.append(shapes[i]->grownSince(before.growth));
        } else if (!isSameLook || isMarked || m_isAll || before.parts != after.parts) {
            damage << before.parts << after.parts;
        }
    }
    for (qsizetype k = i; k < m_seen.size(); ++k)
        damage.append(m_seen[k].parts);
    for (qsizetype k = i; k < now.size(); ++k)
        damage.append(now[k].parts);
    m_seen = std::move(now);
    m_marks.clear();
    m_isAll = false;
    return damage;
}

} // namespace tavrel
