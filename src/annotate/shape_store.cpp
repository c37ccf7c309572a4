#include "annotate/shape_store.h"

#include "annotate/shape_factory.h"

#include <QMultiHash>

#include <algorithm>
#include <utility>

namespace tavrel {

qsizetype ShapeStore::indexOf(const BaseShape *shape) const
{
    const auto at = std::find_if(m_shapes.cbegin(), m_shapes.cend(),
                                 [shape](const ShapePtr &known) { return known.get() == shape; });
    return at == m_shapes.cend() ? -1 : at - m_shapes.cbegin();
}

void ShapeStore::append(ShapePtr shape)
{
    m_stale.insert(shape.get());
    m_texts.append(QByteArray());
    m_shapes.append(std::move(shape));
}

void ShapeStore::raise(qsizetype index)
{
    if (index == m_shapes.size() - 1)
        return;
    m_shapes.move(index, m_shapes.size() - 1);
    m_texts.move(index, m_texts.size() - 1);
}

void ShapeStore::removeAt(qsizetype index)
{
    m_stale.remove(m_shapes.at(index).get());
    m_texts.removeAt(index);
    m_shapes.removeAt(index);
}

void ShapeStore::markChanged(const BaseShape *shape, ShapeDamage::Change change)
{
    m_damage.mark(shape, change);
    if (indexOf(shape) >= 0)
        m_stale.insert(shape);
}

void ShapeStore::markAllChanged()
{
    m_damage.markAll();
    for (const ShapePtr &shape : std::as_const(m_shapes))
        m_stale.insert(shape.get());
}

void ShapeStore::write(qsizetype index) const
{
    const QByteArray text = m_shapes.at(index)->toJsonText();
    if (text != m_texts.at(index))
        m_texts[index] = text;
}

const ShapeTexts &ShapeStore::texts(const BaseShape *unsure) const
{
    if (const qsizetype index = unsure ? indexOf(unsure) : -1; index >= 0) {
        write(index);
        m_stale.remove(unsure);
    }
    for (qsizetype i = 0; i < m_shapes.size() && !m_stale.isEmpty(); ++i) {
        if (m_stale.remove(m_shapes.at(i).get()))
            write(i);
    }
    return m_texts;
}

QByteArray ShapeStore::text(const BaseShape *shape) const
{
    const qsizetype index = indexOf(shape);
    if (index < 0)
        return shape->toJsonText();
    if (m_stale.remove(shape))
        write(index);
    return m_texts.at(index);
}

bool ShapeStore::isStill(qsizetype index, const QByteArray &text) const
{
    return m_texts.at(index).constData() == text.constData() && !m_stale.contains(m_shapes.at(index).get());
}

void ShapeStore::assign(const ShapeTexts &texts, const ShapeFactory &factory)
{
    const qsizetype most = std::min(texts.size(), m_shapes.size());
    qsizetype head = 0;
    while (head < most && isStill(head, texts.at(head)))
        ++head;
    qsizetype tail = 0;
    while (tail < most - head && isStill(m_shapes.size() - 1 - tail, texts.at(texts.size() - 1 - tail)))
        ++tail;
    QMultiHash<QByteArray, ShapePtr> known;
    for (qsizetype i = head; i < m_shapes.size() - tail; ++i) {
        if (!m_stale.contains(m_shapes.at(i).get()))
            known.insert(m_texts.at(i), m_shapes.at(i));
    }
    // The old shapes live until the new ones are made: at the address of one seen before, another would be taken for
    // it.
    QList<ShapePtr> shapes = m_shapes.first(head);
    ShapeTexts read = texts;
    for (qsizetype i = head; i < texts.size() - tail; ++i) {
        ShapePtr shape = known.take(texts.at(i));
        if (!shape && (shape = factory.read(texts.at(i))))
            m_damage.mark(shape.get(), ShapeDamage::Change::Whole);
        if (shape)
            shapes.append(std::move(shape));
        else
            read.removeAt(shapes.size());
    }
    shapes.append(m_shapes.last(tail));
    m_shapes = std::move(shapes);
    m_texts = std::move(read);
    m_stale.clear();
}

} // namespace tavrel
