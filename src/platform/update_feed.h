#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QUrl>

#include <optional>

namespace tavrel::platform {

/// The two values of an update source as texts: built in, or from the environment.
struct UpdateValues
{
    QString feed;
    QString publicKey; ///< base64
};

/// Where new versions are announced, and the key whose signature is believed.
struct UpdateConfig
{
    QUrl feed;            ///< empty when there is no usable configuration
    QByteArray publicKey; ///< Ed25519: 32 bytes; empty together with the feed
    QString source;       ///< "env" or "release", for the log; empty when nothing was configured

    [[nodiscard]] bool isUsable() const { return !feed.isEmpty(); }
};

/// What is given in `environment` and not blank takes the place of what is built in, each value by itself. Without an
/// acceptable feed and a key of 32 bytes in strict base64 neither counts.
[[nodiscard]] UpdateConfig readUpdateConfig(const UpdateValues &builtIn, const UpdateValues &environment);

/// A host reached by https, or by http on this machine itself.
[[nodiscard]] bool isAcceptableUpdateUrl(const QUrl &url);

/// Where the detached signature of a feed lies: beside it, with ".sig" behind its name.
[[nodiscard]] QUrl signatureUrl(const QUrl &feed);

/// Whether `signature`, 64 bytes in base64, is that of the key over exactly these bytes (Ed25519).
[[nodiscard]] bool isSignedBy(const QByteArray &publicKey, const QByteArray &feed, const QByteArray &signature);

struct UpdateEntry
{
    qint64 build = 0;
    QString version; ///< as shown; the build number when the feed gives none
    QDate published; ///< null when the feed gives none
    QString notes;   ///< plain text of at most kMaxNotes characters
    QUrl page;       ///< where to download it; empty when there is no acceptable one
    static constexpr qsizetype kMaxNotes = 20000;
};

struct UpdateFeed
{
    bool isValid = false;
    std::optional<UpdateEntry> newest; ///< of the entries for this system, by build number
};

/// Reads an RSS appcast: "item"s with "link", "pubDate" and "description", and in a namespace of any name "version"
/// (the build number), "shortVersionString", "os" and "channel", as elements or as attributes of the "enclosure".
///
/// Entries for another system or in a named channel are passed over. Not valid is what is no well-formed RSS, what has
/// a document type, and a feed that numbers none of its entries for this system.
[[nodiscard]] UpdateFeed parseUpdateFeed(const QByteArray &xml);

/// Release notes without markup: HTML loses its tags, its blocks become lines.
[[nodiscard]] QString plainNotes(const QString &notes);

} // namespace tavrel::platform
