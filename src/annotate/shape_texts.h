#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QSet>

namespace tavrel {

/// The JSON of every shape, in z order. Lists of one document share the texts of shapes that are the same in both, so
/// that a list costs memory only for what differs, and mostly the list too.
using ShapeTexts = QList<QByteArray>;

/// Texts of one document mostly are the same because they are shared, which is looked at first.
[[nodiscard]] bool isSame(const ShapeTexts &a, const ShapeTexts &b);

/// Hands out one copy of equal texts.
class TextPool final
{
public:
    void add(const ShapeTexts &texts);
    [[nodiscard]] QByteArray shared(QByteArrayView text);

private:
    QSet<QByteArray> m_known;
};

/// `[a,b,...]`
[[nodiscard]] QByteArray toJsonArray(const ShapeTexts &texts);
/// The objects of a JSON array, each as the text it stands in there. An array whose brackets or quotes do not fit gives
/// none; an object that is malformed inside is found out by who reads it.
[[nodiscard]] ShapeTexts textsFromJsonArray(const QByteArray &json);
[[nodiscard]] ShapeTexts textsFromJsonArray(const QByteArray &json, TextPool &pool);

} // namespace tavrel
