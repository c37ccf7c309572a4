#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace tavrel::net {

struct FetchResult
{
    enum class Outcome {
        Body,           ///< all of it is there
        Status,         ///< the server answered something else than 200
        Unreachable,    ///< no connection, or one that broke off; `detail` says how
        UnknownHost,    ///< `detail` names it
        TooLarge,       ///< announced so, or grown so
        UnsafeRedirect, ///< from https to something else, or to what the rules refuse
        TooManyRedirects,
        TimedOut,
    };
    Outcome outcome = Outcome::Unreachable;
    QByteArray body{};
    int status = 0; ///< of HTTP
    QString detail{};
};

/// Gets files over HTTP from servers that are not trusted: each has a size that it may not exceed, all of a round have
/// one deadline, and redirects are followed by rule. Nothing is cached, unpacked or remembered in cookies.
///
/// GUI thread only, or any one with an event loop; nothing here blocks.
class BoundedFetch final : public QObject
{
    Q_OBJECT

public:
    struct Rules
    {
        /// Whether a redirect may lead there; asked in addition to what UnsafeRedirect says. Empty allows all.
        std::function<bool(const QUrl &)> mayFollow{};
        /// Says later, on this thread, whether a host is known; asked once a round for each host in turn, before it is
        /// talked to. Empty asks nobody.
        std::function<void(const QString &host, std::function<void(bool found)> done)> lookUpHost{};
        int redirects = 5; ///< of one file
    };
    using Done = std::function<void(const FetchResult &)>;

    explicit BoundedFetch(Rules rules, QObject *parent = nullptr);
    ~BoundedFetch() override;

    /// Begins a round: what is got from now on has to be there by the deadline. Gives up what is under way.
    void begin(std::chrono::milliseconds deadline);
    /// Gets one file; one at a time, within a round. `done` is called once, not within the call unless a host is told
    /// to be unknown within it, and not at all when the round ends before. It may begin the next get().
    void get(const QUrl &url, qint64 maxBytes, Done done);
    /// Gives up what is under way; it answers no more.
    void end();
    /// Whether a server has answered in this round, whatever it said.
    [[nodiscard]] bool isReached() const { return m_isReached; }

private:
    void fetch(const QUrl &url);
    void send(const QUrl &url);
    void watch();
    void onFinished();
    void follow(const QUrl &from, const QUrl &to);
    void finish(const FetchResult &result);
    void dropReply();

    const Rules m_rules;
    std::unique_ptr<QNetworkAccessManager> m_network; ///< made by the first request
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QString m_knownHost;
    Done m_done; ///< of the file that is being got
    qint64 m_maxBytes = 0;
    int m_redirects = 0; ///< that may still follow
    int m_rounds = 0;
    bool m_isReached = false;
};

} // namespace tavrel::net
