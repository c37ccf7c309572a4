#pragma once

#include "annotate/shape_texts.h"

#include <QList>
#include <QStringList>

namespace tavrel {

/// Snapshot undo: a line of states and a place in it. A value; copies share their states.
class ShapeHistory final
{
public:
    static constexpr int kMaxStates = 30;

    struct State
    {
        ShapeTexts shapes;
        quint64 revision = 0; ///< grows with every new state and is never given again, also after undo and load()
    };

    /// One empty state.
    ShapeHistory() : m_states{State()} {}

    /// Makes `shapes` the newest state. Those equal to the present ones change nothing and give false; states after
    /// the present one are dropped; beyond 30 states the oldest goes.
    bool commit(const ShapeTexts &shapes);
    [[nodiscard]] const State &present() const { return m_states.at(m_index); }
    [[nodiscard]] bool canUndo() const { return m_index > 0; }
    [[nodiscard]] bool canRedo() const { return m_index + 1 < m_states.size(); }
    /// One step back or forward; the state that is present afterwards.
    const State &undo();
    const State &redo();

    [[nodiscard]] int index() const { return static_cast<int>(m_index); }
    /// Every state as the text of a JSON array.
    [[nodiscard]] QStringList texts() const;
    /// Takes a stored line of states; an empty one becomes the single state `present`. The index is clamped.
    void load(const QStringList &texts, int index, const ShapeTexts &present);
    /// Takes the states of another history with their revisions; the next one is above those of both.
    void adopt(const ShapeHistory &other);

private:
    QList<State> m_states;
    qsizetype m_index = 0;
    quint64 m_lastRevision = 0;
};

} // namespace tavrel
