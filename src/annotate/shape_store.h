#pragma once

#include "annotate/base_shape.h"
#include "annotate/shape_damage.h"
#include "annotate/shape_texts.h"

#include <QList>
#include <QRectF>
#include <QSet>

#include <memory>

namespace tavrel {

class ShapeFactory;

/// The shapes of a document, the last one on top, and what each of them stores as text.
///
/// A text is written when it is asked for and the shape was marked as changed since; one that proves equal is kept, so
/// that states go on sharing it.
class ShapeStore final
{
public:
    using ShapePtr = std::shared_ptr<BaseShape>;

    ShapeStore() = default;
    /// A copy would share its shapes with the original.
    ShapeStore(const ShapeStore &) = delete;
    ShapeStore &operator=(const ShapeStore &) = delete;
    ShapeStore(ShapeStore &&) = default;
    ShapeStore &operator=(ShapeStore &&) = default;
    ~ShapeStore() = default;

    [[nodiscard]] const QList<ShapePtr> &list() const { return m_shapes; }
    /// -1 for a shape that is not there.
    [[nodiscard]] qsizetype indexOf(const BaseShape *shape) const;

    void append(ShapePtr shape);
    void raise(qsizetype index);
    void removeAt(qsizetype index);
    void markChanged(const BaseShape *shape, ShapeDamage::Change change);
    void markAllChanged();

    /// unsure  a shape that may have changed without a mark; may be null
    /// cost    a shared list when nothing has changed since the last time
    [[nodiscard]] const ShapeTexts &texts(const BaseShape *unsure = nullptr) const;
    [[nodiscard]] QByteArray text(const BaseShape *shape) const;
    /// Makes the shapes those of `texts`, without those that cannot be read. A shape whose text stands there as well
    /// stays the same object: reading it again would cost the time of a long stroke for nothing.
    void assign(const ShapeTexts &texts, const ShapeFactory &factory);

    /// See ShapeDamage::take().
    [[nodiscard]] QList<QRectF> takeDamage(const BaseShape *hovered) { return m_damage.take(m_shapes, hovered); }

private:
    void write(qsizetype index) const;
    [[nodiscard]] bool isStill(qsizetype index, const QByteArray &text) const;

    QList<ShapePtr> m_shapes;
    mutable ShapeTexts m_texts;              ///< one for each shape
    mutable QSet<const BaseShape *> m_stale; ///< shapes in the list whose text has to be written anew
    ShapeDamage m_damage;
};

} // namespace tavrel
