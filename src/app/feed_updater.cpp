#include "app/feed_updater.h"

#include "net/bounded_fetch.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLoggingCategory>
#include <QSettings>

namespace tavrel {
namespace {

using net::FetchResult;

constexpr qint64 kMaxSignatureBytes = 1024;

QString automaticKey()
{
    return QStringLiteral("update/automaticChecks");
}

QString lastCheckKey()
{
    return QStringLiteral("update/lastCheck");
}

QString text(const char *source)
{
    return QCoreApplication::translate("FeedUpdater", source);
}

/// Why a file could not be read, for the user.
QString problemOf(const FetchResult &result)
{
    switch (result.outcome) {
    case FetchResult::Outcome::Body:
        return {};
    case FetchResult::Outcome::Status:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "更新服务器答复了错误（HTTP %1）。")).arg(result.status);
    case FetchResult::Outcome::Unreachable:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "无法连接更新服务器：%1")).arg(result.detail);
    case FetchResult::Outcome::UnknownHost:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "找不到更新服务器 %1。")).arg(result.detail);
    case FetchResult::Outcome::TooLarge:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源过大，已放弃读取。"));
    case FetchResult::Outcome::UnsafeRedirect:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源转向了不安全的地址，已放弃。"));
    case FetchResult::Outcome::TooManyRedirects:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源转向次数过多，已放弃。"));
    case FetchResult::Outcome::TimedOut:
        return text(QT_TRANSLATE_NOOP("FeedUpdater", "更新服务器没有及时答复。"));
    }
    return {};
}

} // namespace

FeedUpdater::FeedUpdater(Options options, QObject *parent) : IUpdater(parent), m_options(std::move(options))
{
    const platform::UpdateConfig &config = m_options.config;
    if (!config.isUsable()) {
        if (!config.source.isEmpty())
            qWarning().noquote() << QStringLiteral("自动更新：配置无效（来源 "
                                                   "%1）——更新源须为 HTTPS、公钥须为 32 字节 base64；本次不启用")
                                        .arg(config.source);
        return;
    }
    if (m_options.mayCheckByItself) {
        // By the wall clock at intervals: a timer of a day would stand still while the machine sleeps.
        m_looks.setTimerType(Qt::VeryCoarseTimer);
        connect(&m_looks, &QTimer::timeout, this, &FeedUpdater::look);
        m_looks.start(m_options.lookEvery);
        QTimer::singleShot(m_options.firstLook, this, &FeedUpdater::look);
    }
    qInfo().noquote() << QStringLiteral("自动更新：%1（来源 %2，构建号 %3）")
                             .arg(config.feed.toString(QUrl::FullyEncoded), config.source)
                             .arg(m_options.buildNumber);
}

FeedUpdater::~FeedUpdater() = default;

bool FeedUpdater::automaticChecks() const
{
    return isAvailable() && QSettings().value(automaticKey(), true).toBool();
}

void FeedUpdater::setAutomaticChecks(bool automatic)
{
    if (isAvailable())
        QSettings().setValue(automaticKey(), automatic);
}

void FeedUpdater::setCanShutdown(bool can)
{
    m_canShutdown = can;
    if (!can || !isAvailable())
        return;
    // Not within the call: whoever ends a session has more to do before messages may come.
    QMetaObject::invokeMethod(this, &FeedUpdater::deliver, Qt::QueuedConnection);
}

void FeedUpdater::checkNow()
{
    if (isAvailable())
        start(true);
}

void FeedUpdater::look()
{
    const qint64 now = m_options.now ? m_options.now() : QDateTime::currentSecsSinceEpoch();
    const qint64 last = QSettings().value(lastCheckKey()).toLongLong();
    const bool isDue = now - last >= kCheckInterval || last > now; // the clock may have been put back
    if (isDue && m_canShutdown && automaticChecks())
        start(false);
}

void FeedUpdater::start(bool isInteractive)
{
    m_isInteractive = m_isInteractive || isInteractive;
    if (m_isRunning)
        return;
    m_isRunning = true;
    if (!m_fetch)
        m_fetch = std::make_unique<net::BoundedFetch>(
            net::BoundedFetch::Rules{.mayFollow = platform::isAcceptableUpdateUrl, .lookUpHost = m_options.lookUp});
    m_fetch->begin(m_options.deadline);
    m_fetch->get(m_options.config.feed, kMaxFeedBytes, [this](const FetchResult &feed) { takeFeed(feed); });
}

void FeedUpdater::takeFeed(const FetchResult &feed)
{
    if (feed.outcome != FetchResult::Outcome::Body) {
        fail(problemOf(feed));
        return;
    }
    m_fetch->get(platform::signatureUrl(m_options.config.feed), kMaxSignatureBytes,
                 [this, body = feed.body](const FetchResult &signature) { takeSignature(body, signature); });
}

void FeedUpdater::takeSignature(const QByteArray &body, const FetchResult &signature)
{
    if (signature.outcome == FetchResult::Outcome::Status && signature.status == 404) {
        fail(text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源没有签名，已忽略其内容。")));
        return;
    }
    if (signature.outcome != FetchResult::Outcome::Body) {
        fail(problemOf(signature));
        return;
    }
    if (!platform::isSignedBy(m_options.config.publicKey, body, signature.body)) {
        fail(text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源的签名不正确，已忽略其内容。")));
        return;
    }
    const platform::UpdateFeed feed = platform::parseUpdateFeed(body);
    if (!feed.isValid)
        fail(text(QT_TRANSLATE_NOOP("FeedUpdater", "更新源的内容无法读取。")));
    else if (feed.newest && feed.newest->build > m_options.buildNumber)
        finish({.outcome = UpdateReport::Outcome::NewVersion, .entry = *feed.newest, .problem = {}});
    else
        finish({.outcome = UpdateReport::Outcome::UpToDate, .entry = {}, .problem = {}});
}

void FeedUpdater::fail(const QString &problem)
{
    finish({.outcome = UpdateReport::Outcome::Failed, .entry = {}, .problem = problem});
}

void FeedUpdater::finish(const UpdateReport &report)
{
    m_fetch->end();
    m_isRunning = false;
    const bool isInteractive = std::exchange(m_isInteractive, false);
    if (m_fetch->isReached())
        QSettings().setValue(lastCheckKey(), m_options.now ? m_options.now() : QDateTime::currentSecsSinceEpoch());
    switch (report.outcome) {
    case UpdateReport::Outcome::NewVersion:
        qInfo().noquote()
            << QStringLiteral("检查更新：有新版本 %1（构建号 %2）").arg(report.entry.version).arg(report.entry.build);
        break;
    case UpdateReport::Outcome::UpToDate:
        qInfo().noquote() << QStringLiteral("检查更新：已是最新");
        break;
    case UpdateReport::Outcome::Failed:
        qInfo().noquote() << QStringLiteral("检查更新：失败，") + report.problem;
        break;
    }
    if (!isInteractive && report.outcome != UpdateReport::Outcome::NewVersion)
        return;
    m_held = report;
    m_held->isAsked = isInteractive;
    deliver();
}

void FeedUpdater::deliver()
{
    if (!m_canShutdown || !m_held)
        return;
    const UpdateReport report = *std::exchange(m_held, {});
    if (m_options.present)
        m_options.present(report);
}

} // namespace tavrel
