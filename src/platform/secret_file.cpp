#include "platform/secret_file.h"

#include "base/atomic_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace tavrel::platform {
namespace {

constexpr auto kFileMode = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto kFolderMode = kFileMode | QFile::ExeOwner;

/// Key to base64 text, or to null when removed. A file that is torn holds nothing.
QJsonObject read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

bool write(const QString &path, const QJsonObject &entries)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder) || !QFile::setPermissions(folder, kFolderMode))
        return false;
    // With rights of its own: the new file would take over those of an old one that somebody has opened up.
    return replaceFile(
        path, [&entries](QIODevice &file) { return file.write(QJsonDocument(entries).toJson()) >= 0; }, kFileMode);
}

} // namespace

SecretFile::SecretFile(const QString &path)
    : m_path(path.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                                  QStringLiteral("/secrets/secrets.json")
                            : path)
{}

std::optional<SecretFile::Entry> SecretFile::find(const QString &key) const
{
    const QJsonValue stored = read(m_path).value(key);
    if (stored.isNull())
        return Entry{.isRemoved = true, .value = {}};
    if (!stored.isString())
        return {};
    const auto decoded =
        QByteArray::fromBase64Encoding(stored.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    return Entry{.isRemoved = false, .value = *decoded};
}

bool SecretFile::put(const QString &key, const Entry &entry)
{
    QJsonObject entries = read(m_path);
    entries.insert(key, entry.isRemoved ? QJsonValue() : QJsonValue(QString::fromLatin1(entry.value.toBase64())));
    return write(m_path, entries);
}

bool SecretFile::erase(const QString &key)
{
    QJsonObject entries = read(m_path);
    if (!entries.contains(key))
        return true;
    entries.remove(key);
    return entries.isEmpty() ? QFile::remove(m_path) : write(m_path, entries);
}

} // namespace tavrel::platform
