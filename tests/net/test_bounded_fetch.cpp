#include "net/bounded_fetch.h"
#include "net/local_server.h"
#include "support/test_main.h"

#include <optional>

using namespace tavrel;
using namespace std::chrono_literals;
using net::BoundedFetch;
using net::FetchResult;
using Outcome = FetchResult::Outcome;

namespace {

constexpr qint64 kMaxBytes = 100;

QByteArray redirectTo(const QByteArray &target)
{
    return "HTTP/1.1 302 Found\r\nLocation: " + target + "\r\nContent-Length: 0\r\n\r\n";
}

} // namespace

class BoundedFetchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(QStringLiteral(".*"))); }

    void whatComesOfIt_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("isEndless");
        QTest::addColumn<Outcome>("outcome");
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        QTest::newRow("a body") << ok + "Content-Length: 4\r\n\r\nbody" << false << Outcome::Body;
        QTest::newRow("a body of the limit")
            << ok + "Content-Length: 100\r\n\r\n" + QByteArray(kMaxBytes, 'b') << false << Outcome::Body;
        QTest::newRow("announced too large") << ok + "Content-Length: 101\r\n\r\nx" << false << Outcome::TooLarge;
        QTest::newRow("endless") << ok + "\r\n" << true << Outcome::TooLarge;
        QTest::newRow("an endless error page")
            << QByteArray("HTTP/1.1 500 Sorry\r\n\r\n<html>") << true << Outcome::Status;
        QTest::newRow("nothing there") << QByteArray("HTTP/1.1 204 None\r\n\r\n") << false << Outcome::Status;
        QTest::newRow("cut short") << ok + "Content-Length: 100\r\nConnection: close\r\n\r\nx" << false
                                   << Outcome::Unreachable;
        QTest::newRow("no HTTP") << QByteArray("SSH-2.0-server\r\n\r\n") << false << Outcome::Unreachable;
        QTest::newRow("never answers") << QByteArray("\r\n") << false << Outcome::TimedOut;
        QTest::newRow("to what the rules refuse") << redirectTo("/secret") << false << Outcome::UnsafeRedirect;
        QTest::newRow("round and round") << redirectTo("/a") << false << Outcome::TooManyRedirects;
        QTest::newRow("a way round") << redirectTo("/b") << false << Outcome::Body;
    }

    void whatComesOfIt()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, isEndless);
        QFETCH(Outcome, outcome);
        test::LocalServer server;
        server.put("/a", answer);
        server.putFile("/b", "other");
        if (isEndless)
            server.setEndless("/a");
        BoundedFetch fetch(rules());
        fetch.begin(outcome == Outcome::TimedOut ? 200ms : 15'000ms);
        const FetchResult result = get(fetch, server.url(u"/a"_qs));
        QCOMPARE(result.outcome, outcome);
        if (outcome == Outcome::TimedOut)
            QVERIFY(!fetch.isReached());
        if (outcome == Outcome::Body)
            QCOMPARE(result.body, answer.contains("302") ? "other" : answer.mid(answer.indexOf("\r\n\r\n") + 4));
        QVERIFY(server.lastRequest.toLower().contains("\r\naccept-encoding: identity\r\n"));

        // It was this round and no more.
        if (outcome == Outcome::TimedOut)
            QCOMPARE(get(fetch, server.url(u"/b"_qs)).outcome, Outcome::TimedOut);
        fetch.begin(15'000ms);
        QCOMPARE(get(fetch, server.url(u"/b"_qs)).body, "other");
        QVERIFY(fetch.isReached());
    }

    void hostsAreLookedUpOnceARound()
    {
        test::LocalServer server;
        server.putFile("/a", "a");
        QStringList asked;
        bool isKnown = true;
        BoundedFetch::Rules rules;
        rules.lookUpHost = [&](const QString &host, const std::function<void(bool)> &done) {
            asked.append(host);
            QMetaObject::invokeMethod(
                this, [done, isKnown] { done(isKnown); }, Qt::QueuedConnection);
        };
        BoundedFetch fetch(rules);
        fetch.begin(15'000ms);
        QCOMPARE(get(fetch, server.url(u"/a"_qs)).body, "a");
        QCOMPARE(get(fetch, server.url(u"/a"_qs)).body, "a");
        QCOMPARE(asked, QStringList(u"127.0.0.1"_qs));
        isKnown = false;
        fetch.begin(15'000ms);
        const FetchResult unknown = get(fetch, server.url(u"/a"_qs));
        QCOMPARE(unknown.outcome, Outcome::UnknownHost);
        QCOMPARE(unknown.detail, u"127.0.0.1"_qs);
        QVERIFY(!fetch.isReached());
        QCOMPARE(server.requests.size(), 2);
    }

    /// Neither one that was given up nor one whose fetch is gone; nor does a late lookup begin anything.
    void whatIsGivenUpAnswersNoMore()
    {
        test::LocalServer server;
        server.putFile("/a", "a");
        QList<std::function<void(bool)>> lookups;
        BoundedFetch::Rules rules;
        rules.lookUpHost = [&](const QString &, std::function<void(bool)> done) { lookups.append(std::move(done)); };
        int answers = 0;
        const auto count = [&answers](const FetchResult &) { ++answers; };
        auto fetch = std::make_unique<BoundedFetch>(rules);
        fetch->begin(15'000ms);
        fetch->get(server.url(u"/a"_qs), kMaxBytes, count);
        fetch->begin(15'000ms);
        fetch->get(server.url(u"/a"_qs), kMaxBytes, count);
        lookups.takeFirst()(false); // that of the first round
        server.onRequest = [&fetch] { fetch.reset(); };
        lookups.takeFirst()(true);
        QTRY_VERIFY(!fetch);
        QCOMPARE(server.requests.size(), 1);
        BoundedFetch other{{}};
        other.begin(15'000ms);
        server.onRequest = {};
        QCOMPARE(get(other, server.url(u"/a"_qs)).body, "a");
        QCOMPARE(answers, 0);
    }

private:
    static BoundedFetch::Rules rules()
    {
        return {.mayFollow = [](const QUrl &url) { return url.scheme() == u"http" && url.path() != u"/secret"; }};
    }

    static FetchResult get(BoundedFetch &fetch, const QUrl &url)
    {
        std::optional<FetchResult> got;
        fetch.get(url, kMaxBytes, [&got](const FetchResult &result) { got = result; });
        (void)QTest::qWaitFor([&got] { return got.has_value(); }, 20'000);
        return got.value_or(FetchResult());
    }
};

TAVREL_TEST_MAIN(QCoreApplication, BoundedFetchTest)
#include "test_bounded_fetch.moc"
