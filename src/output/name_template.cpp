#include "output/name_template.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace tavrel {
namespace {

constexpr qsizetype kMaxNameBytes = 200;

QString randomWord(const RandomBelow &random)
{
    static const QString letters = QStringLiteral("abcdefghijklmnopqrstuvwxyz0123456789");
    QString word;
    for (int i = 0; i < 6; ++i) {
        const int bound = int(letters.size());
        word += letters.at(random ? random(bound) : QRandomGenerator::global()->bounded(bound));
    }
    return word;
}

QString expandWord(const QString &word, const QDateTime &time, const FilenameContext &context,
                   const RandomBelow &random)
{
    if (word == u"window")
        return context.window;
    if (word == u"app")
        return context.app;
    if (word == u"index")
        return QString::number(std::max(context.index, 1));
    if (word == u"random")
        return randomWord(random);
    return time.toString(word);
}

/// Half a surrogate pair cannot be written in UTF-8.
QString withoutLoneSurrogates(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!text.at(i).isSurrogate())
            continue;
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = u'_';
    }
    return text;
}

qsizetype utf8Size(QStringView text)
{
    return text.toUtf8().size();
}

QString cutToBytes(const QString &text, qsizetype maxBytes)
{
    if (utf8Size(text) <= maxBytes)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    for (qsizetype next = finder.toNextBoundary(); next >= 0 && utf8Size(QStringView(text).left(next)) <= maxBytes;
         next = finder.toNextBoundary())
        end = next;
    if (end > 0)
        return text.left(end);
    // One letter under hundreds of combining marks: cut between the marks.
    for (qsizetype next = 0; utf8Size(QStringView(text).left(next)) <= maxBytes;) {
        end = next;
        next += text.at(next).isHighSurrogate() ? 2 : 1;
    }
    return text.left(end);
}

} // namespace

QString defaultNameTemplate()
{
    return QStringLiteral("Tavrel_{{yyyyMMdd}}_{{HHmmss}}");
}

QString expandName(const QString &nameTemplate, const QDateTime &time, const FilenameContext &context,
                   const RandomBelow &random)
{
    const QString source = nameTemplate.trimmed().isEmpty() ? defaultNameTemplate() : nameTemplate;
    const QDateTime shown = context.useUtc ? time.toUTC() : time;

    static const QRegularExpression wordInBraces(QStringLiteral("\\{\\{([^{}]+)\\}\\}"));
    QString name;
    qsizetype copied = 0;
    for (auto matches = wordInBraces.globalMatch(source); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        name += QStringView(source).mid(copied, match.capturedStart() - copied);
        name += expandWord(match.captured(1), shown, context, random);
        copied = match.capturedEnd();
    }
    name += QStringView(source).mid(copied);

    static const QRegularExpression refused(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]"));
    name = name.replace(refused, QStringLiteral("_")).trimmed();
    return name.isEmpty() ? QStringLiteral("Tavrel") : name;
}

QString fileBaseName(const QString &name, const QString &suffix)
{
    QString base = cutToBytes(withoutLoneSurrogates(name), kMaxNameBytes - utf8Size(suffix));
    if (base.startsWith(u'.'))
        base[0] = u'_';
    return base + suffix;
}

} // namespace tavrel
