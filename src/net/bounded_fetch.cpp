#include "net/bounded_fetch.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <utility>

namespace tavrel::net {
namespace {

using Outcome = FetchResult::Outcome;

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tavrel/%1").arg(QCoreApplication::applicationVersion()));
    // Signatures are over the bytes as they lie on the server; and nothing unpacks to more than it weighs.
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

BoundedFetch::BoundedFetch(Rules rules, QObject *parent) : QObject(parent), m_rules(std::move(rules))
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] { finish({.outcome = Outcome::TimedOut}); });
}

BoundedFetch::~BoundedFetch()
{
    end();
}

void BoundedFetch::begin(std::chrono::milliseconds deadline)
{
    end();
    ++m_rounds;
    m_isReached = false;
    m_knownHost.clear();
    m_deadline.start(deadline);
}

void BoundedFetch::end()
{
    m_done = nullptr;
    m_deadline.stop();
    dropReply();
}

void BoundedFetch::get(const QUrl &url, qint64 maxBytes, Done done)
{
    m_done = std::move(done);
    m_maxBytes = maxBytes;
    m_redirects = m_rules.redirects;
    if (m_deadline.isActive())
        fetch(url);
    else
        m_deadline.start(0); // the round is over; it is told, but not within the call
}

void BoundedFetch::fetch(const QUrl &url)
{
    const QString host = url.host();
    if (!m_rules.lookUpHost || host == m_knownHost) {
        send(url);
        return;
    }
    m_rules.lookUpHost(host, [self = QPointer(this), round = m_rounds, host, url](bool found) {
        if (!self || !self->m_done || round != self->m_rounds)
            return; // given up meanwhile
        if (!found) {
            self->finish({.outcome = Outcome::UnknownHost, .detail = host});
            return;
        }
        self->m_knownHost = host;
        self->send(url);
    });
}

void BoundedFetch::send(const QUrl &url)
{
    if (!m_network)
        m_network = std::make_unique<QNetworkAccessManager>();
    m_reply = m_network->get(requestFor(url));
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &BoundedFetch::watch);
    connect(m_reply, &QNetworkReply::readyRead, this, &BoundedFetch::watch);
    connect(m_reply, &QNetworkReply::finished, this, &BoundedFetch::onFinished);
}

/// Neither an error page nor what is announced too large is waited for.
void BoundedFetch::watch()
{
    m_isReached = true;
    const int status = statusOf(m_reply);
    if (status >= 400)
        finish({.outcome = Outcome::Status, .status = status});
    else if (m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > m_maxBytes ||
             m_reply->bytesAvailable() > m_maxBytes)
        finish({.outcome = Outcome::TooLarge, .status = status});
}

void BoundedFetch::onFinished()
{
    QNetworkReply *reply = m_reply;
    const int status = statusOf(reply);
    const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (status < 400 && reply->error() != QNetworkReply::NoError)
        finish({.outcome = Outcome::Unreachable, .status = status, .detail = reply->errorString()});
    else if (!target.isEmpty())
        follow(reply->url(), reply->url().resolved(target));
    else if (status != 200)
        finish({.outcome = Outcome::Status, .status = status});
    else
        finish({.outcome = Outcome::Body, .body = reply->readAll(), .status = status});
}

void BoundedFetch::follow(const QUrl &from, const QUrl &to)
{
    dropReply();
    const bool fallsBack = from.scheme() == u"https" && to.scheme() != u"https";
    if (fallsBack || (m_rules.mayFollow && !m_rules.mayFollow(to)))
        finish({.outcome = Outcome::UnsafeRedirect, .detail = to.toString(QUrl::FullyEncoded)});
    else if (--m_redirects < 0)
        finish({.outcome = Outcome::TooManyRedirects});
    else
        fetch(to);
}

void BoundedFetch::finish(const FetchResult &result)
{
    dropReply();
    if (const Done done = std::exchange(m_done, nullptr))
        done(result);
}

void BoundedFetch::dropReply()
{
    if (QNetworkReply *reply = std::exchange(m_reply, nullptr)) {
        reply->disconnect(this);
        reply->deleteLater(); // ends it; abort() must not come out of its own signals
    }
}

} // namespace tavrel::net
