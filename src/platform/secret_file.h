#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tavrel::platform {

/// Secrets in a file of the user's own: where they go when the system has nobody to keep them.
///
/// Only the user may read the file (0600) and its folder (0700); it is written atomically. A key may also be marked as
/// removed, for a keeper that could not be told. Each call reads the file anew; one thread at a time.
class SecretFile final
{
public:
    struct Entry
    {
        bool isRemoved = false;
        QByteArray value; ///< empty when removed
    };

    /// path  empty means "secrets/secrets.json" in the application's data folder
    explicit SecretFile(const QString &path = {});

    [[nodiscard]] QString path() const { return m_path; }
    /// Nothing when the file says nothing about the key or cannot be read.
    [[nodiscard]] std::optional<Entry> find(const QString &key) const;
    /// False when the file could not be written; it is then as it was.
    [[nodiscard]] bool put(const QString &key, const Entry &entry);
    /// True as well when the key was not there. The file goes with its last entry.
    bool erase(const QString &key);

private:
    QString m_path;
};

} // namespace tavrel::platform
