#pragma once

#include "process/commands.h"

#include <QByteArray>
#include <QList>
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <memory>
#include <optional>

class QLocalSocket;

namespace tavrel {

/// What a second start asks of the running instance: one line of JSON over a local socket.
struct HandOver
{
    QStringList files = {};       ///< positional arguments, unfiltered
    QList<Command> commands = {}; ///< those with a word, in the order of the request, each once
    QString cwd = {};             ///< working directory of the sender

    friend bool operator==(const HandOver &, const HandOver &) = default;

    [[nodiscard]] QByteArray toLine() const;
    /// A line that is no JSON object is an empty request.
    [[nodiscard]] static HandOver fromLine(const QByteArray &line);
    /// The files that are recordings, each as an absolute path.
    [[nodiscard]] QStringList recordings() const;
};

/// Keeps one instance per user: a lock file, and a local server through which later starts hand their requests over.
///
/// Both lie in XDG_RUNTIME_DIR when that is private to the user, else in the temporary directory with the user id in
/// the name. GUI thread only. claim() is the only call that waits, and it does so before any window exists.
class SingleInstance final : public QObject
{
    Q_OBJECT

public:
    enum class Claim {
        Held,              ///< this is the instance
        HandedOver,        ///< the running instance has the request; this process ends
        HolderUnreachable, ///< the lock cannot be had and nobody answers: run without a server
    };

    struct Timing
    {
        std::chrono::milliseconds lockWait{50};
        int rounds = 15;
        std::chrono::milliseconds connectWait{200};
        std::chrono::milliseconds roundPause{200};
        std::chrono::milliseconds writeWait{1000};
        std::chrono::milliseconds answerWait{1000}; ///< for the holder to have read the request
    };

    /// A longer line is no request of ours: the connection is dropped, so that nobody can fill the memory.
    static constexpr qint64 kMaxLineBytes = 256 * 1024;
    /// Who has not ended its line by then has its connection dropped.
    static constexpr std::chrono::milliseconds kLineWait{5000};

    /// folder  where lock and socket lie; empty for the user's place
    explicit SingleInstance(const QString &folder = {}, QObject *parent = nullptr);
    ~SingleInstance() override;

    [[nodiscard]] Claim claim(const HandOver &request) { return claim(request, Timing()); }
    [[nodiscard]] Claim claim(const HandOver &request, const Timing &timing);
    /// Starts to listen when the lock is held. A failure is logged; later starts then cannot hand over.
    void listen(std::chrono::milliseconds lineWait = kLineWait);
    /// Whether another process is the instance now.
    [[nodiscard]] static bool isHeldElsewhere(const QString &folder = {});
    /// Stops listening; the lock stays with this object.
    void close();

    [[nodiscard]] QString socketPath() const { return m_socketPath; }
    [[nodiscard]] QString lockPath() const { return m_lockPath; }

Q_SIGNALS:
    void requested(const tavrel::HandOver &request);

private:
    [[nodiscard]] bool sendTo(const HandOver &request, const Timing &timing);
    void onConnection();
    void onReadable(QLocalSocket *socket);

    QString m_socketPath;
    QString m_lockPath;
    std::chrono::milliseconds m_lineWait = kLineWait;
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<QLocalServer> m_server;
};

} // namespace tavrel
