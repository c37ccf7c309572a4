#pragma once

#include <QByteArray>
#include <QHash>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <memory>

namespace tavrel::test {

/// A keyring on the session bus, in a thread of its own: one collection, sessions without encryption. It takes what the
/// protocol gives it and keeps it in memory.
class FakeSecretService final
{
public:
    enum class Mood {
        Willing,
        Locked, ///< would have to ask the user for everything
        Silent  ///< takes every message and answers none
    };

    FakeSecretService();
    ~FakeSecretService();
    FakeSecretService(const FakeSecretService &) = delete;
    FakeSecretService &operator=(const FakeSecretService &) = delete;

    /// Owns the name on the bus from the return on.
    [[nodiscard]] bool start(Mood mood);
    void setMood(Mood mood) { m_mood = mood; }

    /// As they lie in the keyring: by the attribute "key".
    [[nodiscard]] QHash<QString, QByteArray> secrets() const;
    void put(const QString &key, const QByteArray &secret);
    /// Prompts that the client asked to be shown.
    [[nodiscard]] int shownPrompts() const { return m_shownPrompts; }

private:
    class Objects;
    bool enter();
    struct Item
    {
        QString key;
        QByteArray secret;
    };

    mutable QMutex m_mutex;
    QHash<int, Item> m_items; ///< by the number in the object path
    int m_lastItem = 0;
    std::atomic<Mood> m_mood = Mood::Willing;
    std::atomic<int> m_shownPrompts = 0;
    QThread m_thread;
    std::unique_ptr<Objects> m_objects;
};

} // namespace tavrel::test
