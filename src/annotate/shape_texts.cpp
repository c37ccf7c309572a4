#include "annotate/shape_texts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace tavrel {
namespace {

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

} // namespace

bool isSame(const ShapeTexts &a, const ShapeTexts &b)
{
    if (a.size() != b.size() || a.constData() == b.constData())
        return a.size() == b.size();
    return std::equal(a.begin(), a.end(), b.begin(), [](const QByteArray &x, const QByteArray &y) {
        return x.constData() == y.constData() || x == y;
    });
}

void TextPool::add(const ShapeTexts &texts)
{
    for (const QByteArray &text : texts)
        m_known.insert(text);
}

QByteArray TextPool::shared(QByteArrayView text)
{
    const auto known = m_known.constFind(QByteArray::fromRawData(text.data(), text.size()));
    return known == m_known.cend() ? *m_known.insert(text.toByteArray()) : *known;
}

QByteArray toJsonArray(const ShapeTexts &texts)
{
    return '[' + texts.join(',') + ']';
}

ShapeTexts textsFromJsonArray(const QByteArray &json, TextPool &pool)
{
    ShapeTexts texts;
    QList<QByteArrayView> elements;
    if (ArrayCutter(json).cut(elements)) {
        texts.reserve(elements.size());
        for (const QByteArrayView element : std::as_const(elements))
            texts.append(pool.shared(element));
        return texts;
    }
    for (const QJsonValue &value : QJsonDocument::fromJson(json).array()) {
        if (value.isObject())
            texts.append(pool.shared(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact)));
    }
    return texts;
}

ShapeTexts textsFromJsonArray(const QByteArray &json)
{
    TextPool pool;
    return textsFromJsonArray(json, pool);
}

} // namespace tavrel
