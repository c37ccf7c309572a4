#include "annotate/shape_history.h"

#include <algorithm>
#include <utility>

namespace tavrel {

bool ShapeHistory::commit(const ShapeTexts &shapes)
{
    if (isSame(present().shapes, shapes))
        return false;
    m_states.resize(m_index + 1);
    m_states.append({shapes, ++m_lastRevision});
    ++m_index;
    while (m_states.size() > kMaxStates) {
        m_states.removeFirst();
        --m_index;
    }
    return true;
}

const ShapeHistory::State &ShapeHistory::undo()
{
    if (canUndo())
        --m_index;
    return present();
}

const ShapeHistory::State &ShapeHistory::redo()
{
    if (canRedo())
        ++m_index;
    return present();
}

QStringList ShapeHistory::texts() const
{
    QStringList texts;
    for (const State &state : m_states)
        texts.append(QString::fromUtf8(toJsonArray(state.shapes)));
    return texts;
}

void ShapeHistory::load(const QStringList &texts, int index, const ShapeTexts &present)
{
    m_states.clear();
    TextPool pool;
    pool.add(present);
    for (const QString &text : texts)
        m_states.append({textsFromJsonArray(text.toUtf8(), pool), ++m_lastRevision});
    if (m_states.isEmpty())
        m_states.append({present, ++m_lastRevision});
    m_index = std::clamp<qsizetype>(index, 0, m_states.size() - 1);
}

void ShapeHistory::adopt(const ShapeHistory &other)
{
    const quint64 last = std::max(m_lastRevision, other.m_lastRevision);
    *this = other;
    m_lastRevision = last;
}

} // namespace tavrel
