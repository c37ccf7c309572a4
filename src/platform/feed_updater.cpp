#include "platform/feed_updater.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSettings>

namespace tavrel::platform {
namespace {

constexpr qint64 kMaxSignatureBytes = 1024;
constexpr int kMaxRedirects = 5;

QString automaticKey()
{
    return QStringLiteral("update/automaticChecks");
}

QString lastCheckKey()
{
    return QStringLiteral("update/lastCheck");
}

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tavrel/%1").arg(QCoreApplication::applicationVersion()));
    // The signature is over the bytes as they lie on the server; and nothing unpacks to more than it weighs.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return request;
}

int statusOf(const QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

} // namespace

FeedUpdater::FeedUpdater(Options options, QObject *parent) : IUpdater(parent), m_options(std::move(options))
{
    const UpdateConfig &config = m_options.config;
    if (!config.isUsable()) {
        if (!config.source.isEmpty())
            qWarning().noquote() << QStringLiteral("自动更新：配置无效（来源 "
                                                   "%1）——更新源须为 HTTPS、公钥须为 32 字节 base64；本次不启用")
                                        .arg(config.source);
        return;
    }
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this,
            [this] { fail(QCoreApplication::translate("FeedUpdater", "更新服务器没有及时答复。")); });
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

FeedUpdater::~FeedUpdater()
{
    if (m_reply)
        m_reply->disconnect(this);
}

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
    m_isReached = false;
    ++m_checks;
    m_knownHost.clear();
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    m_deadline.start(m_options.deadline);
    fetch(m_options.config.feed, {&FeedUpdater::takeFeed, kMaxFeedBytes, kMaxRedirects});
}

void FeedUpdater::fetch(const QUrl &url, const Step &step)
{
    const QString host = url.host();
    if (!m_options.lookUp || host == m_knownHost) {
        send(url, step);
        return;
    }
    m_options.lookUp(host, [this, check = m_checks, host, url, step](bool found) {
        if (!m_isRunning || check != m_checks)
            return; // given up meanwhile
        if (!found) {
            fail(QCoreApplication::translate("FeedUpdater", "找不到更新服务器 %1。").arg(host));
            return;
        }
        m_knownHost = host;
        send(url, step);
    });
}

void FeedUpdater::send(const QUrl &url, const Step &step)
{
    QNetworkReply *reply = m_network->get(requestFor(url));
    m_reply = reply;
    // Neither an error page nor what is announced too large is waited for.
    const auto watch = [this, reply, step] {
        m_isReached = true;
        const int status = statusOf(reply);
        if (status >= 400)
            refuse(status, step);
        else if (reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > step.maxBytes ||
                 reply->bytesAvailable() > step.maxBytes)
            fail(QCoreApplication::translate("FeedUpdater", "更新源过大，已放弃读取。"));
    };
    connect(reply, &QNetworkReply::metaDataChanged, this, watch);
    connect(reply, &QNetworkReply::readyRead, this, watch);
    connect(reply, &QNetworkReply::finished, this, [this, step] { onFinished(step); });
}

void FeedUpdater::onFinished(const Step &step)
{
    QNetworkReply *reply = m_reply;
    m_reply = nullptr;
    reply->deleteLater();
    const int status = statusOf(reply);
    const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (status < 400 && reply->error() != QNetworkReply::NoError)
        fail(QCoreApplication::translate("FeedUpdater", "无法连接更新服务器：%1").arg(reply->errorString()));
    else if (!target.isEmpty())
        follow(reply->url(), reply->url().resolved(target), step);
    else if (status != 200)
        refuse(status, step);
    else
        (this->*step.received)(reply->readAll());
}

void FeedUpdater::follow(const QUrl &from, const QUrl &to, Step step)
{
    const bool fallsBack = from.scheme() == u"https" && to.scheme() != u"https";
    if (fallsBack || !isAcceptableUpdateUrl(to))
        fail(QCoreApplication::translate("FeedUpdater", "更新源转向了不安全的地址，已放弃。"));
    else if (--step.redirects < 0)
        fail(QCoreApplication::translate("FeedUpdater", "更新源转向次数过多，已放弃。"));
    else
        fetch(to, step);
}

void FeedUpdater::refuse(int status, const Step &step)
{
    if (status == 404 && step.received == &FeedUpdater::takeSignature)
        fail(QCoreApplication::translate("FeedUpdater", "更新源没有签名，已忽略其内容。"));
    else
        fail(QCoreApplication::translate("FeedUpdater", "更新服务器答复了错误（HTTP %1）。").arg(status));
}

void FeedUpdater::takeFeed(const QByteArray &body)
{
    m_feed = body;
    fetch(signatureUrl(m_options.config.feed), {&FeedUpdater::takeSignature, kMaxSignatureBytes, kMaxRedirects});
}

void FeedUpdater::takeSignature(const QByteArray &body)
{
    if (!isSignedBy(m_options.config.publicKey, m_feed, body)) {
        fail(QCoreApplication::translate("FeedUpdater", "更新源的签名不正确，已忽略其内容。"));
        return;
    }
    const UpdateFeed feed = parseUpdateFeed(m_feed);
    if (!feed.isValid)
        fail(QCoreApplication::translate("FeedUpdater", "更新源的内容无法读取。"));
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
    if (QNetworkReply *reply = m_reply) {
        m_reply = nullptr;
        reply->disconnect(this);
        reply->deleteLater(); // ends it; abort() must not come out of its own signals
    }
    m_deadline.stop();
    m_feed.clear();
    m_isRunning = false;
    const bool isInteractive = std::exchange(m_isInteractive, false);
    if (m_isReached)
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

} // namespace tavrel::platform
