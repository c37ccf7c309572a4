#include "platform/update_feed.h"

#include <QStringList>
#include <QXmlStreamReader>

#include <sodium.h>

#include <algorithm>
#include <array>

namespace tavrel::platform {
namespace {

constexpr qsizetype kKeyBytes = crypto_sign_PUBLICKEYBYTES;
constexpr qsizetype kSignatureBytes = crypto_sign_BYTES;
static_assert(kKeyBytes == 32 && kSignatureBytes == 64);

QByteArray strictBase64(const QByteArray &text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? *decoded : QByteArray();
}

const uchar *bytes(const QByteArray &data)
{
    return reinterpret_cast<const uchar *>(data.constData());
}

/// The text of the element at hand with that of its children. Unlike readElementText() it does not recurse: how deep
/// the elements lie is for others to say.
QString elementText(QXmlStreamReader &xml)
{
    QString text;
    for (int depth = 1; depth > 0 && !xml.atEnd();) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            ++depth;
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        case QXmlStreamReader::Characters:
            text += xml.text();
            break;
        default:
            break;
        }
    }
    return text.trimmed();
}

/// An item as it stands, all in texts.
struct RawItem
{
    QString version;
    QString shortVersion;
    QString os;
    QString channel;
    QString link;
    QString published;
    QString notes;

    void set(QStringView name, bool isExtension, const QString &value)
    {
        const std::array<std::pair<QStringView, QString RawItem::*>, 4> extensions{
            std::pair{QStringView(u"version"), &RawItem::version},
            std::pair{QStringView(u"shortVersionString"), &RawItem::shortVersion},
            std::pair{QStringView(u"os"), &RawItem::os},
            std::pair{QStringView(u"channel"), &RawItem::channel},
        };
        const std::array<std::pair<QStringView, QString RawItem::*>, 3> plain{
            std::pair{QStringView(u"link"), &RawItem::link},
            std::pair{QStringView(u"pubDate"), &RawItem::published},
            std::pair{QStringView(u"description"), &RawItem::notes},
        };
        const auto setFrom = [&](const auto &fields) {
            for (const auto &[known, field] : fields)
                if (name == known && (this->*field).isEmpty())
                    this->*field = value;
        };
        if (isExtension)
            setFrom(extensions);
        else
            setFrom(plain);
    }
};

RawItem readItem(QXmlStreamReader &xml)
{
    RawItem item;
    RawItem enclosure;
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        const bool isExtension = !xml.namespaceUri().isEmpty();
        if (!isExtension && name == u"enclosure") {
            for (const QXmlStreamAttribute &attribute : xml.attributes())
                enclosure.set(attribute.name(), !attribute.namespaceUri().isEmpty(), attribute.value().toString());
            xml.skipCurrentElement();
        } else {
            item.set(name, isExtension, elementText(xml));
        }
    }
    const QStringList older{QStringLiteral("version"), QStringLiteral("shortVersionString"), QStringLiteral("os")};
    item.set(older[0], true, enclosure.version);
    item.set(older[1], true, enclosure.shortVersion);
    item.set(older[2], true, enclosure.os);
    return item;
}

/// A decimal number and nothing else; -1 when it is none.
qint64 buildNumber(const QString &text)
{
    const bool isDecimal =
        std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); });
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    return isDecimal && fits ? number : -1;
}

QUrl pageOf(const QStringList &links)
{
    for (const QString &link : links)
        if (const QUrl url(link); isAcceptableUpdateUrl(url))
            return url;
    return {};
}

struct NamedCharacter
{
    QStringView name;
    QStringView character;
};

constexpr std::array kNamedCharacters{NamedCharacter{u"lt", u"<"},   NamedCharacter{u"gt", u">"},
                                      NamedCharacter{u"amp", u"&"},  NamedCharacter{u"quot", u"\""},
                                      NamedCharacter{u"apos", u"'"}, NamedCharacter{u"nbsp", u" "}};

/// What stands between "&" and ";"; nothing when that is no character.
QString characterOf(QStringView name)
{
    for (const NamedCharacter &known : kNamedCharacters)
        if (name == known.name)
            return known.character.toString();
    if (!name.startsWith(u'#'))
        return {};
    const bool isHex = name.size() > 1 && name[1].toLower() == u'x';
    bool isNumber = false;
    const uint code = name.mid(isHex ? 2 : 1).toUInt(&isNumber, isHex ? 16 : 10);
    const bool isCharacter = isNumber && code >= 0x20 && code <= QChar::LastValidCodePoint && !QChar::isSurrogate(code);
    return isCharacter ? QString::fromUcs4(reinterpret_cast<const char32_t *>(&code), 1) : QString();
}

bool isBlock(QStringView tag)
{
    static constexpr std::array blocks{QStringView(u"p"),  QStringView(u"br"), QStringView(u"div"), QStringView(u"ul"),
                                       QStringView(u"ol"), QStringView(u"h1"), QStringView(u"h2"),  QStringView(u"h3"),
                                       QStringView(u"h4"), QStringView(u"h5"), QStringView(u"h6"),  QStringView(u"tr"),
                                       QStringView(u"pre")};
    return std::find(blocks.begin(), blocks.end(), tag) != blocks.end();
}

/// Lines without blanks at their ends, with at most one empty line between others.
QString tidyLines(const QString &text)
{
    QStringList lines;
    const QStringList all = text.split(u'\n');
    for (const QString &line : all) {
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty() || (!lines.isEmpty() && !lines.last().isEmpty()))
            lines.append(trimmed);
    }
    return lines.join(u'\n').trimmed();
}

} // namespace

UpdateConfig readUpdateConfig(const UpdateValues &builtIn, const UpdateValues &environment)
{
    const QString feedOverride = environment.feed.trimmed();
    const QString keyOverride = environment.publicKey.trimmed();
    const QString feed = feedOverride.isEmpty() ? builtIn.feed : feedOverride;
    const QString key = keyOverride.isEmpty() ? builtIn.publicKey : keyOverride;

    UpdateConfig config;
    if (!feedOverride.isEmpty() || !keyOverride.isEmpty())
        config.source = QStringLiteral("env");
    else if (!feed.isEmpty() || !key.isEmpty())
        config.source = QStringLiteral("release");
    const QUrl url(feed);
    const QByteArray decoded = strictBase64(key.toUtf8());
    if (isAcceptableUpdateUrl(url) && decoded.size() == kKeyBytes) {
        config.feed = url;
        config.publicKey = decoded;
    }
    return config;
}

bool isAcceptableUpdateUrl(const QUrl &url)
{
    const QString host = url.host().toLower();
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || host.isEmpty())
        return false;
    return scheme == u"https" ||
           (scheme == u"http" && (host == u"127.0.0.1" || host == u"localhost" || host == u"::1"));
}

QUrl signatureUrl(const QUrl &feed)
{
    QUrl url = feed;
    url.setPath(feed.path(QUrl::FullyEncoded) + QStringLiteral(".sig"), QUrl::TolerantMode);
    return url;
}

bool isSignedBy(const QByteArray &publicKey, const QByteArray &feed, const QByteArray &signature)
{
    const QByteArray decoded = strictBase64(signature.trimmed());
    if (sodium_init() < 0 || publicKey.size() != kKeyBytes || decoded.size() != kSignatureBytes)
        return false;
    return crypto_sign_verify_detached(bytes(decoded), bytes(feed), static_cast<unsigned long long>(feed.size()),
                                       bytes(publicKey)) == 0;
}

UpdateFeed parseUpdateFeed(const QByteArray &text)
{
    QXmlStreamReader xml(text);
    while (xml.readNext() != QXmlStreamReader::StartElement)
        if (xml.atEnd() || xml.tokenType() == QXmlStreamReader::DTD)
            return {};
    if (xml.name() != u"rss")
        return {};

    QString channelLink;
    QList<RawItem> items;
    while (xml.readNextStartElement()) {
        if (xml.name() != u"channel") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            const bool isPlain = xml.namespaceUri().isEmpty();
            if (isPlain && xml.name() == u"item")
                items.append(readItem(xml));
            else if (isPlain && xml.name() == u"link")
                channelLink = elementText(xml);
            else
                xml.skipCurrentElement();
        }
    }
    while (!xml.atEnd()) // to see the rest is well-formed too
        xml.readNext();
    if (xml.hasError())
        return {};

    UpdateFeed feed{.isValid = true, .newest = {}};
    bool hasUnnumbered = false;
    for (const RawItem &item : items) {
        if (!item.channel.isEmpty() || (!item.os.isEmpty() && item.os.toLower() != u"linux"))
            continue;
        const qint64 build = buildNumber(item.version);
        hasUnnumbered = hasUnnumbered || build < 0;
        if (build < 0 || (feed.newest && feed.newest->build >= build))
            continue;
        feed.newest = UpdateEntry{.build = build,
                                  .version = item.shortVersion.simplified().left(64),
                                  .published = QDateTime::fromString(item.published, Qt::RFC2822Date).date(),
                                  .notes = plainNotes(item.notes).left(UpdateEntry::kMaxNotes),
                                  .page = pageOf({item.link, channelLink})};
        if (feed.newest->version.isEmpty())
            feed.newest->version = QString::number(build);
    }
    feed.isValid = feed.newest || !hasUnnumbered;
    return feed;
}

QString plainNotes(const QString &notes)
{
    if (!notes.contains(u"</") && !notes.contains(u"/>") && !notes.contains(u"<br") && !notes.contains(u"<p>"))
        return tidyLines(notes);
    QString text;
    const QStringView source(notes);
    // Each jump goes forward or ends the text, so the time is linear in its length whatever stands there.
    for (qsizetype at = 0; at < source.size(); ++at) {
        const QChar c = source[at];
        if (c == u'<') {
            const bool isComment = source.mid(at).startsWith(u"<!--");
            const auto end = isComment ? source.indexOf(u"-->", at) : source.indexOf(u'>', at);
            if (end < 0)
                break;
            const bool isClosing = source.mid(at + 1, 1) == u"/";
            qsizetype nameEnd = at + (isClosing ? 2 : 1);
            const qsizetype nameStart = nameEnd;
            while (nameEnd < end && source[nameEnd].isLetterOrNumber())
                ++nameEnd;
            const QString tag = source.mid(nameStart, nameEnd - nameStart).toString().toLower();
            at = isComment ? end + 2 : end;
            if (tag == u"li" && !isClosing)
                text += QStringLiteral("\n• ");
            else if (isBlock(tag))
                text += u'\n';
            else if (!isClosing && (tag == u"style" || tag == u"script")) {
                const auto over = source.indexOf(QString(QStringLiteral("</") + tag), at, Qt::CaseInsensitive);
                if (over < 0)
                    break;
                at = over - 1;
            }
        } else if (c == u'&') {
            const auto end = source.mid(at, 12).indexOf(u';');
            const QString character = end > 1 ? characterOf(source.mid(at + 1, end - 1)) : QString();
            text += character.isEmpty() ? QString(c) : character;
            at += character.isEmpty() ? 0 : end;
        } else if (!c.isSpace()) {
            text += c;
        } else if (!text.isEmpty() && !text.back().isSpace()) {
            text += u' ';
        }
    }
    return tidyLines(text);
}

} // namespace tavrel::platform
