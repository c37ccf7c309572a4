#pragma once

#include "platform/update_feed.h"
#include "platform/updater.h"

#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tavrel {

namespace net {
class BoundedFetch;
struct FetchResult;
} // namespace net

/// What a check has to tell the user.
struct UpdateReport
{
    enum class Outcome { NewVersion, UpToDate, Failed };
    Outcome outcome = Outcome::Failed;
    platform::UpdateEntry entry; ///< the new version
    QString problem;             ///< a sentence for the user
    bool isAsked = true;         ///< false when the program looked by itself: nobody waits for the answer
};

/// Looks for new versions in a signed feed, and leaves it to the user to install them.
///
/// The feed is read as a whole, then its signature; only a feed with the right signature is parsed. Each automatic
/// check that reached the server is remembered, so that there is one a day; one that did not is tried again within the
/// hour. Nothing is presented while the program is busy (setCanShutdown(false)), and no automatic check begins then.
/// Never asks for a shutdown. GUI thread only; nothing here blocks.
class FeedUpdater final : public platform::IUpdater
{
    Q_OBJECT

public:
    struct Options
    {
        platform::UpdateConfig config;
        qint64 buildNumber = 0; ///< of this program
        /// Shows a report. An automatic check reports new versions only.
        std::function<void(const UpdateReport &)> present;
        bool mayCheckByItself = true;
        std::chrono::milliseconds deadline{15'000};     ///< of a whole check
        std::chrono::milliseconds firstLook{30'000};    ///< after the start
        std::chrono::milliseconds lookEvery{3'600'000}; ///< whether a check is due
        /// Says later, on this thread, whether a host is known; asked before each host is talked to. Empty asks nobody.
        std::function<void(const QString &host, std::function<void(bool found)> done)> lookUp;
        std::function<qint64()> now; ///< seconds since 1970; empty means the system's clock
    };

    static constexpr qint64 kCheckInterval = 86400; ///< seconds
    static constexpr qint64 kMaxFeedBytes = qint64(1) << 20;

    explicit FeedUpdater(Options options, QObject *parent = nullptr);
    ~FeedUpdater() override;

    [[nodiscard]] bool isAvailable() const override { return m_options.config.isUsable(); }
    void checkNow() override;
    [[nodiscard]] bool automaticChecks() const override;
    void setAutomaticChecks(bool automatic) override;
    void setCanShutdown(bool can) override;

private:
    void look();
    void start(bool isInteractive);
    void takeFeed(const net::FetchResult &feed);
    void takeSignature(const QByteArray &feed, const net::FetchResult &signature);
    void fail(const QString &problem);
    void finish(const UpdateReport &report);
    void deliver();

    Options m_options;
    std::unique_ptr<net::BoundedFetch> m_fetch; ///< made by the first check
    std::optional<UpdateReport> m_held;
    QTimer m_looks;
    bool m_isRunning = false;
    bool m_isInteractive = false;
    bool m_canShutdown = true;
};

} // namespace tavrel
