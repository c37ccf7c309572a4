#include "annotate/shape_history.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

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

/// Hands out one copy of equal bytes.
class Pool final
{
public:
    void add(const QByteArray &bytes) { m_known.insert(bytes); }

    QByteArray shared(QByteArrayView bytes)
    {
        const auto known = m_known.constFind(QByteArray::fromRawData(bytes.data(), bytes.size()));
        return known == m_known.cend() ? *m_known.insert(bytes.toByteArray()) : *known;
    }

private:
    QSet<QByteArray> m_known;
};

/// Cuts a JSON array of objects into its elements without reading them.
class ArrayCutter final
{
public:
    explicit ArrayCutter(QByteArrayView json) : m_json(json) {}

    /// False when this is no array of objects as far as brackets and quotes tell.
    bool cut(QList<QByteArrayView> &elements)
    {
        if (!take('['))
            return false;
        if (take(']'))
            return atEnd();
        do {
            skipSpace();
            const qsizetype start = m_at;
            if (!skipObject())
                return false;
            elements.append(m_json.sliced(start, m_at - start));
        } while (take(','));
        return take(']') && atEnd();
    }

private:
    void skipSpace()
    {
        while (m_at < m_json.size() && QByteArrayView(" \t\r\n").contains(m_json[m_at]))
            ++m_at;
    }

    bool take(char wanted)
    {
        skipSpace();
        if (m_at == m_json.size() || m_json[m_at] != wanted)
            return false;
        ++m_at;
        return true;
    }

    bool atEnd()
    {
        skipSpace();
        return m_at == m_json.size();
    }

    bool skipText()
    {
        for (++m_at; m_at < m_json.size(); ++m_at) {
            if (m_json[m_at] == '\\')
                ++m_at;
            else if (m_json[m_at] == '"')
                return true;
        }
        return false;
    }

    bool skipObject()
    {
        if (m_at == m_json.size() || m_json[m_at] != '{')
            return false;
        int depth = 0;
        for (; m_at < m_json.size(); ++m_at) {
            const char c = m_json[m_at];
            if (c == '"') {
                if (!skipText())
                    return false;
            } else if (c == '{' || c == '[') {
                ++depth;
            } else if ((c == '}' || c == ']') && --depth == 0) {
                ++m_at;
                return true;
            }
        }
        return false;
    }

    QByteArrayView m_json;
    qsizetype m_at = 0;
};

ShapeState read(const QByteArray &json, Pool &pool)
{
    ShapeState state;
    QList<QByteArrayView> elements;
    if (ArrayCutter(json).cut(elements)) {
        for (const QByteArrayView element : std::as_const(elements))
            state.append(pool.shared(element));
        return state;
    }
    for (const QJsonValue &value : QJsonDocument::fromJson(json).array()) {
        if (value.isObject())
            state.append(pool.shared(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact)));
    }
    return state;
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
    Pool pool;
    for (const QByteArray &json : present)
        pool.add(json);
    for (const QString &text : texts)
        m_states.append(read(text.toUtf8(), pool));
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
    Pool pool;
    return read(json, pool);
}

} // namespace tavrel
