#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

namespace tavrel {

/// The JSON of every shape of one state, in z order. Shapes that did not change between two states share their bytes,
/// so a state costs memory only for what changed.
using ShapeState = QList<QByteArray>;

/// Snapshot undo: a line of states and a place in it.
class ShapeHistory final
{
public:
    static constexpr int kMaxStates = 30;

    /// One empty state.
    ShapeHistory();

    /// Makes `state` the newest one. A state equal to the present one changes nothing and gives false; states after the
    /// present one are dropped; beyond 30 states the oldest goes.
    bool commit(const ShapeState &state);
    [[nodiscard]] bool canUndo() const { return m_index > 0; }
    [[nodiscard]] bool canRedo() const { return m_index + 1 < m_states.size(); }
    /// One step back or forward; the state that is present afterwards.
    const ShapeState &undo();
    const ShapeState &redo();

    [[nodiscard]] int index() const { return static_cast<int>(m_index); }
    /// Every state as the text of a JSON array.
    [[nodiscard]] QStringList texts() const;
    /// Takes a stored line of states; an empty one becomes the single state `present`. The index is clamped.
    void load(const QStringList &texts, int index, const ShapeState &present);

private:
    QList<ShapeState> m_states;
    qsizetype m_index = 0;
};

/// `[a,b,...]` of a state.
[[nodiscard]] QByteArray stateToJson(const ShapeState &state);
/// The objects of a JSON array, each as the text it stands in there. An array whose brackets or quotes do not fit gives
/// none; an object that is malformed inside is found out by who reads it.
[[nodiscard]] ShapeState stateFromJson(const QByteArray &json);

} // namespace tavrel
