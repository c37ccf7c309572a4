#include "app/feed_updater.h"
#include "net/local_server.h"
#include "support/test_main.h"

#include <QSettings>
#include <QSignalSpy>

#include <sodium.h>

using namespace tavrel;
using Outcome = UpdateReport::Outcome;

namespace {

constexpr qint64 kOurs = 105;

QByteArray feedOf(qint64 build)
{
    return "<rss xmlns:a=\"urn:x\"><channel><item><a:version>" + QByteArray::number(build) +
           "</a:version><a:shortVersionString>9.9</a:shortVersionString><link>https://example.org/get</link>"
           "<description>notes</description></item></channel></rss>";
}

} // namespace

class FeedUpdaterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(sodium_init() >= 0);
        m_publicKey.resize(crypto_sign_PUBLICKEYBYTES);
        m_secretKey.resize(crypto_sign_SECRETKEYBYTES);
        crypto_sign_keypair(reinterpret_cast<uchar *>(m_publicKey.data()),
                            reinterpret_cast<uchar *>(m_secretKey.data()));
    }

    void init()
    {
        QSettings().clear();
        m_reports.clear();
        m_server = std::make_unique<test::LocalServer>();
        m_now = 1'800'000'000;
    }

    void tellsWhatTheFeedSays_data()
    {
        QTest::addColumn<qint64>("build");
        QTest::addColumn<Outcome>("outcome");
        QTest::newRow("newer") << kOurs + 1 << Outcome::NewVersion;
        QTest::newRow("older") << kOurs - 1 << Outcome::UpToDate;
    }

    void tellsWhatTheFeedSays()
    {
        QFETCH(qint64, build);
        publish(feedOf(build));
        FeedUpdater updater(options());
        QSignalSpy shutdowns(&updater, &platform::IUpdater::shutdownRequested);
        updater.checkNow();
        updater.checkNow(); // the same check
        QTRY_COMPARE(m_reports.size(), 1);
        QTEST(m_reports.first().outcome, "outcome");
        if (build > kOurs) {
            QCOMPARE(m_reports.first().entry.version, u"9.9"_qs);
            QCOMPARE(m_reports.first().entry.notes, u"notes"_qs);
            QCOMPARE(m_reports.first().entry.page, QUrl(u"https://example.org/get"_qs));
        }
        QCOMPARE(m_server->requests, (QList<QByteArray>{"/feed.xml", "/feed.xml.sig"}));
        QVERIFY(m_server->lastRequest.toLower().contains("\r\nuser-agent: tavrel/0.1.5\r\n"));
        QVERIFY(!m_server->lastRequest.toLower().contains("gzip"));
        updater.checkNow();
        QTRY_COMPARE(m_reports.size(), 2);
        QCOMPARE(shutdowns.count(), 0);
    }

    void tellsWhatWentWrong_data()
    {
        QTest::addColumn<QByteArray>("feedAnswer"); // empty: a signed feed
        QTest::addColumn<QByteArray>("signatureAnswer");
        QTest::addColumn<QString>("problem");
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        const QByteArray none;
        QTest::newRow("no such file") << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n") << none
                                      << u"HTTP 404"_qs;
        QTest::newRow("announced too large")
            << ok + "Content-Length: " + QByteArray::number(FeedUpdater::kMaxFeedBytes + 1) + "\r\n\r\nx" << none
            << u"过大"_qs;
        QTest::newRow("to http elsewhere")
            << QByteArray("HTTP/1.1 302 Found\r\nLocation: http://example.org/\r\nContent-Length: 0\r\n\r\n") << none
            << u"不安全"_qs;
        QTest::newRow("not signed") << none
                                    << QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\n\r\nNot Found")
                                    << u"没有签名"_qs;
        // Put in its place by somebody else, and newer still.
        const QByteArray other = feedOf(kOurs + 2);
        QTest::newRow("signature of another feed")
            << ok + "Content-Length: " + QByteArray::number(other.size()) + "\r\n\r\n" + other << none
            << u"签名不正确"_qs;
        QTest::newRow("wrongly signed") << none << ok + "Content-Length: 88\r\n\r\n" + QByteArray(64, 's').toBase64()
                                        << u"签名不正确"_qs;
        QTest::newRow("signature not available")
            << none << QByteArray("HTTP/1.1 503 Later\r\nContent-Length: 0\r\n\r\n") << u"HTTP 503"_qs;
    }

    void tellsWhatWentWrong()
    {
        QFETCH(QByteArray, feedAnswer);
        QFETCH(QByteArray, signatureAnswer);
        QFETCH(QString, problem);
        publish(feedOf(kOurs + 1));
        if (!feedAnswer.isEmpty())
            m_server->put("/feed.xml", feedAnswer);
        if (!signatureAnswer.isEmpty())
            m_server->put("/feed.xml.sig", signatureAnswer);
        FeedUpdater updater(options());
        updater.checkNow();
        QTRY_COMPARE_WITH_TIMEOUT(m_reports.size(), 1, 20000);
        QCOMPARE(m_reports.first().outcome, Outcome::Failed);
        QVERIFY2(m_reports.first().problem.contains(problem), qPrintable(m_reports.first().problem));

        // It was this check and no more: with the fault mended the next one is well.
        publish(feedOf(kOurs + 1));
        updater.checkNow();
        QTRY_COMPARE(m_reports.size(), 2);
        QCOMPARE(m_reports.last().outcome, Outcome::NewVersion);
    }

    void followsToAcceptablePlaces()
    {
        publish(feedOf(kOurs + 1));
        m_server->putFile("/moved.xml", feedOf(kOurs + 1));
        m_server->put("/feed.xml", "HTTP/1.1 302 Found\r\nLocation: /moved.xml\r\nContent-Length: 0\r\n\r\n");
        FeedUpdater updater(options());
        updater.checkNow();
        QTRY_COMPARE(m_reports.size(), 1);
        QCOMPARE(m_reports.first().outcome, Outcome::NewVersion);
        QCOMPARE(m_server->requests, (QList<QByteArray>{"/feed.xml", "/moved.xml", "/feed.xml.sig"}));
    }

    void checksByItselfOnceADay()
    {
        publish(feedOf(kOurs));
        FeedUpdater updater(automatic());
        QVERIFY(updater.automaticChecks());
        QTRY_COMPARE(m_server->requests.size(), 2);
        waitForLooks(20);
        QCOMPARE(m_server->requests.size(), 2);
        m_now += FeedUpdater::kCheckInterval - 1;
        waitForLooks(20);
        QCOMPARE(m_server->requests.size(), 2);
        QVERIFY(m_reports.isEmpty()); // nothing new, nothing said

        publish(feedOf(kOurs + 1));
        m_now += 1;
        QTRY_COMPARE(m_reports.size(), 1);
        QCOMPARE(m_reports.first().outcome, Outcome::NewVersion);
        QVERIFY(!m_reports.first().isAsked);

        updater.setAutomaticChecks(false);
        QVERIFY(!updater.automaticChecks());
        m_now += 2 * FeedUpdater::kCheckInterval;
        waitForLooks(20);
        QCOMPARE(m_server->requests.size(), 4);
        updater.setAutomaticChecks(true);
        QTRY_COMPARE(m_reports.size(), 2);
        m_now -= 100 * FeedUpdater::kCheckInterval; // the clock is put right
        QTRY_COMPARE(m_reports.size(), 3);
    }

    void automaticFailuresAreSilent()
    {
        {
            FeedUpdater updater(automatic());
            QTRY_VERIFY(QSettings().contains(u"update/lastCheck"_qs));
            const auto asked = m_server->requests.size();
            waitForLooks(20);
            QCOMPARE(m_server->requests.size(), asked); // there was an answer: that was today's check
        }
        QSettings().clear();
        m_server->close();
        {
            FeedUpdater updater(automatic());
            waitForLooks(50);
            QVERIFY(!QSettings().contains(u"update/lastCheck"_qs));
        }
        QVERIFY(m_reports.isEmpty());
    }

    void staysQuietWhileTheProgramIsBusy()
    {
        publish(feedOf(kOurs + 1));
        FeedUpdater updater(automatic());
        updater.setCanShutdown(false);
        waitForLooks(20);
        QVERIFY(m_server->requests.isEmpty());
        updater.checkNow();
        QTRY_VERIFY(QSettings().contains(u"update/lastCheck"_qs));
        QVERIFY(m_reports.isEmpty());
        updater.setCanShutdown(true);
        QVERIFY(m_reports.isEmpty()); // not within the call
        updater.setCanShutdown(false);
        waitForLooks(20);
        QVERIFY(m_reports.isEmpty());
        updater.setCanShutdown(true);
        QTRY_COMPARE(m_reports.size(), 1);
        waitForLooks(20);
        QCOMPARE(m_reports.size(), 1);
        QVERIFY(m_reports.first().isAsked);
    }

    void aHostThatIsNotFoundIsToldAndNoCheck()
    {
        FeedUpdater::Options options = this->options();
        options.lookUp = [](const QString &host, const std::function<void(bool)> &done) { done(host != u"127.0.0.1"); };
        FeedUpdater updater(options);
        updater.checkNow();
        QTRY_COMPARE(m_reports.size(), 1);
        QVERIFY(m_reports.last().problem.contains(u"找不到"));
        QVERIFY(m_server->requests.isEmpty());
        QVERIFY(!QSettings().contains(u"update/lastCheck"_qs));
    }

    void mayGoInTheMiddle()
    {
        m_server->put("/feed.xml", "HTTP/1.1 200 OK\r\n\r\n<rss>");
        auto updater = std::make_unique<FeedUpdater>(options());
        updater->checkNow();
        QTRY_COMPARE(m_server->requests.size(), 1);
        updater.reset();
        QVERIFY(m_reports.isEmpty());
    }

    void withoutConfigurationThereIsNone()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"自动更新：配置无效（来源 env）"_qs)); // a bad one
        FeedUpdater::Options options;
        options.config.source = u"env"_qs;
        options.present = [this](const UpdateReport &report) { m_reports.append(report); };
        FeedUpdater updater(options);
        QVERIFY(!updater.isAvailable());
        QVERIFY(!updater.automaticChecks());
        updater.setAutomaticChecks(true);
        QVERIFY(!QSettings().contains(u"update/automaticChecks"_qs));
        updater.checkNow();
        updater.setCanShutdown(true);
        QCoreApplication::processEvents();
        QVERIFY(m_reports.isEmpty());
    }

private:
    FeedUpdater::Options options()
    {
        FeedUpdater::Options options;
        options.config = {m_server->url(u"/feed.xml"_qs), m_publicKey, u"env"_qs};
        options.buildNumber = kOurs;
        options.present = [this](const UpdateReport &report) { m_reports.append(report); };
        options.mayCheckByItself = false;
        options.now = [this] {
            ++m_looks;
            return m_now;
        };
        return options;
    }

    FeedUpdater::Options automatic()
    {
        FeedUpdater::Options options = this->options();
        options.mayCheckByItself = true;
        options.firstLook = std::chrono::milliseconds(0);
        options.lookEvery = std::chrono::milliseconds(1);
        return options;
    }

    void publish(const QByteArray &feed)
    {
        QByteArray signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(
            reinterpret_cast<uchar *>(signature.data()), nullptr, reinterpret_cast<const uchar *>(feed.constData()),
            static_cast<unsigned long long>(feed.size()), reinterpret_cast<const uchar *>(m_secretKey.constData()));
        m_server->putFile("/feed.xml", feed);
        m_server->putFile("/feed.xml.sig", signature.toBase64() + '\n');
    }

    /// Until the updater has looked at the clock so many times more.
    void waitForLooks(int count)
    {
        const int enough = m_looks + count;
        QTRY_VERIFY(m_looks >= enough);
    }

    std::unique_ptr<test::LocalServer> m_server;
    QByteArray m_publicKey;
    QByteArray m_secretKey;
    QList<UpdateReport> m_reports;
    qint64 m_now = 0;
    int m_looks = 0;
};

TAVREL_TEST_MAIN(QCoreApplication, FeedUpdaterTest)
#include "test_feed_updater.moc"
