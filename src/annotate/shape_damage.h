#pragma once

#include <QHash>
#include <QList>
#include <QRectF>

#include <memory>

namespace tavrel {

class BaseShape;

/// Finds out which places of a document look different from the last time, so that a host repaints no more.
///
/// Order, selection, hover and extent are compared; a change of look within the same extent has to be marked.
class ShapeDamage final
{
public:
    enum class Change { Grown, Whole }; ///< Grown: only added to, see BaseShape::growth()
    void mark(const BaseShape *shape, Change change);
    void markAll() { m_isAll = true; }

    /// The changed places since the last call, in shape coordinates. A null rectangle stands for everywhere.
    [[nodiscard]] QList<QRectF> take(const QList<std::shared_ptr<BaseShape>> &shapes, const BaseShape *hovered);

private:
    struct Seen
    {
        const BaseShape *shape = nullptr;
        QList<QRectF> parts;
        qsizetype growth = 0;
        bool isSelected = false;
        bool isHovered = false;
    };
    QList<Seen> m_seen;
    QHash<const BaseShape *, Change> m_marks;
    bool m_isAll = false;
};

} // namespace tavrel
