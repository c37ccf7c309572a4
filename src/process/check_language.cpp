#include "process/check_language.h"

#include <QRegularExpression>

#include <algorithm>

namespace tavrel {
namespace {

QChar accented(QChar letter)
{
    static const QString plain = QStringLiteral("aceginosuyzACEGINOSUYZ");
    static const QString withAccent = QStringLiteral("áçêğîñôšüýžÁÇÊĞÎÑÔŠÜÝŽ");
    const auto at = plain.indexOf(letter);
    return at < 0 ? letter : withAccent.at(at);
}

/// Lengthens as letters go by, so that single words grow as well: what does not wrap is what gets cut off.
class Stretcher final
{
public:
    explicit Stretcher(QString &out) : m_out(out) {}

    void add(QChar character)
    {
        if (!character.isLetter())
            endWord();
        m_out += accented(character);
        if (!character.isLetter())
            return;
        m_last = accented(character);
        m_owed += 4;
        if (m_owed >= 10)
            pay();
    }

    /// Rounds up: a short word grows by a letter.
    void endWord()
    {
        if (m_owed > 0 && !m_last.isNull())
            pay();
        m_owed = 0;
        m_last = {};
    }

private:
    void pay()
    {
        m_out += m_last.toLower();
        m_owed = std::max(0, m_owed - 10);
    }

    QString &m_out;
    QChar m_last;
    int m_owed = 0; ///< in tenths of a letter
};

} // namespace

QString lengthened(const QString &english)
{
    static const QRegularExpression kept(QStringLiteral(R"(%L?(?:\d{1,2}|n)|</?[A-Za-z][^<>]*>|&#?\w+;|&.|\*\.\w+)"));
    QString out;
    Stretcher stretcher(out);
    qsizetype at = 0;
    const auto stretchTo = [&](qsizetype end) {
        for (; at < end; ++at)
            stretcher.add(english.at(at));
    };
    for (auto matches = kept.globalMatch(english); matches.hasNext();) {
        const auto match = matches.next();
        stretchTo(match.capturedStart());
        stretcher.endWord();
        out += match.captured();
        at = match.capturedEnd();
    }
    stretchTo(english.size());
    stretcher.endWord();
    return out;
}

QString CheckTranslator::translate(const char *context, const char *sourceText, const char *disambiguation, int n) const
{
    const QString english = m_english.translate(context, sourceText, disambiguation, n);
    if (!english.isEmpty())
        return lengthened(english);
    const QString source = QString::fromUtf8(sourceText);
    const bool isEnglish =
        std::none_of(source.begin(), source.end(), [](QChar c) { return c.script() == QChar::Script_Han; });
    return isEnglish ? lengthened(source) : QString();
}

} // namespace tavrel
