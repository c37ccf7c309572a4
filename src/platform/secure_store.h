#pragma once

#include <QByteArray>
#include <QString>

namespace tavrel::platform {

/// Secrets of the user, kept by the system.
class ISecureStore
{
public:
    ISecureStore() = default;
    ISecureStore(const ISecureStore &) = delete;
    ISecureStore &operator=(const ISecureStore &) = delete;
    virtual ~ISecureStore() = default;

    virtual bool save(const QString &key, const QByteArray &value) = 0;
    /// False when the key is absent or not readable; `value` is then left as it was.
    virtual bool load(const QString &key, QByteArray *value) = 0;
    virtual bool remove(const QString &key) = 0;
};

} // namespace tavrel::platform
