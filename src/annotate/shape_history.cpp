#include "annotate/shape_history.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace tavrel {
namespace {

/// Equal states mostly share their bytes, so most comparisons end at the address.
bool sameState(const ShapeState &a, const ShapeState &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const QByteArray &x, const QByteArray &y) {
        return x.constData() == y.constData() || x == y;
    });
}

} // namespace

ShapeHistory::ShapeHistory() : m_states{ShapeState()} {}

bool ShapeHistory::commit(const ShapeState &state)
{
    if (sameState(m_states.at(m_index), state))
        return false;
    m_states.resize(m_index + 1);
    m_states.append(state);
    ++m_index;
    while (m_states.size() > kMaxStates) {
        m_states.removeFirst();
        --m_index;
    }
    return true;
}

const ShapeState &ShapeHistory::undo()
{
    if (canUndo())
        --m_index;
    return m_states.at(m_index);
}

const ShapeState &ShapeHistory::redo()
{
    if (canRedo())
        ++m_index;
    return m_states.at(m_index);
}

QStringList ShapeHistory::texts() const
{
    QStringList texts;
    for (const ShapeState &state : m_states)
        texts.append(QString::fromUtf8(stateToJson(state)));
    return texts;
}

void ShapeHistory::load(const QStringList &texts, int index, const ShapeState &present)
{
    m_states.clear();
    for (const QString &text : texts)
        m_states.append(stateFromJson(text.toUtf8()));
    if (m_states.isEmpty()) {
        m_states.append(present);
        m_index = 0;
        return;
    }
    m_index = std::clamp<qsizetype>(index, 0, m_states.size() - 1);
}

QByteArray stateToJson(const ShapeState &state)
{
    return '[' + state.join(',') + ']';
}

ShapeState stateFromJson(const QByteArray &json)
{
    ShapeState state;
    for (const QJsonValue &value : QJsonDocument::fromJson(json).array())
        state.append(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    return state;
}

} // namespace tavrel
