#include "platform/update_feed.h"
#include "support/test_main.h"

#include <QElapsedTimer>

using namespace tavrel::platform;

namespace {

const QString kFeed = QStringLiteral("https://updates.example.org/appcast.xml");
const QString kKey = QStringLiteral("GdG7DRRfu45pdG/SLek3gQpJQDUl4101Q92XCv7VIDc=");

QByteArray inRss(const QByteArray &items)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<rss version=\"2.0\" xmlns:a=\"urn:example:appcast\" xmlns:atom=\"http://www.w3.org/2005/Atom\"><channel>"
           "<title>Tavrel</title><atom:link href=\"https://elsewhere.example.org/\"/>"
           "<link>https://example.org/download</link>" +
           items + "</channel></rss>";
}

QByteArray item(int build, const QByteArray &inside = {})
{
    return "<item><a:version>" + QByteArray::number(build) + "</a:version>" + inside + "</item>";
}

QString base64OfBytes(int count)
{
    return QString::fromLatin1(QByteArray(count, 'k').toBase64());
}

} // namespace

class UpdateFeedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void acceptsFeeds_data()
    {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<bool>("accepted");
        const auto row = [](const char *feed, bool accepted) {
            QTest::newRow(feed) << QString::fromLatin1(feed) << accepted;
        };
        row("https://example.org/appcast.xml", true);
        row("http://127.0.0.1:8080/appcast.xml", true);
        row("http://LocalHost/appcast.xml", true);
        row("http://[::1]:8080/appcast.xml", true);
        row("http://example.org/appcast.xml", false);
        row("http://localhost.example.org/", false);
        row("http://127.0.0.2/", false);
        row("file:///etc/passwd", false);
        row("https:///appcast.xml", false);
        row("https://exa mple.org:99999/", false);
        row("", false);
    }

    void acceptsFeeds()
    {
        QFETCH(QString, feed);
        QFETCH(bool, accepted);
        QCOMPARE(isAcceptableUpdateUrl(QUrl(feed)), accepted);
        const UpdateConfig config = readUpdateConfig({}, {feed, kKey});
        QCOMPARE(config.isUsable(), accepted);
        QCOMPARE(config.publicKey.size(), accepted ? 32 : 0);
    }

    void choosesValues_data()
    {
        QTest::addColumn<UpdateValues>("builtIn");
        QTest::addColumn<UpdateValues>("environment");
        QTest::addColumn<QString>("feed"); // empty: not usable
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QString>("source");
        const QString other = QStringLiteral("http://localhost/other.xml");
        const QByteArray built = QByteArray::fromBase64(kKey.toLatin1());
        const QByteArray own(32, 'k');
        QTest::newRow("built in") << UpdateValues{kFeed, kKey} << UpdateValues{} << kFeed << built << u"release"_qs;
        QTest::newRow("feed alone") << UpdateValues{kFeed, kKey} << UpdateValues{u" "_qs + other + u'\n', {}} << other
                                    << built << u"env"_qs;
        QTest::newRow("key alone") << UpdateValues{kFeed, kKey} << UpdateValues{{}, base64OfBytes(32)} << kFeed << own
                                   << u"env"_qs;
        QTest::newRow("31 bytes") << UpdateValues{kFeed, kKey} << UpdateValues{{}, base64OfBytes(31)} << u""_qs
                                  << QByteArray() << u"env"_qs;
        QTest::newRow("no strict base64")
            << UpdateValues{kFeed, kKey} << UpdateValues{{}, QString(kKey).replace(5, 1, u'*')} << u""_qs
            << QByteArray() << u"env"_qs;
        QTest::newRow("bad feed over a good one")
            << UpdateValues{kFeed, kKey} << UpdateValues{u"http://example.org/"_qs, {}} << u""_qs << QByteArray()
            << u"env"_qs;
    }

    void choosesValues()
    {
        QFETCH(UpdateValues, builtIn);
        QFETCH(UpdateValues, environment);
        const UpdateConfig config = readUpdateConfig(builtIn, environment);
        QTEST(config.feed.toString(), "feed");
        QTEST(config.publicKey, "key");
        QTEST(config.source, "source");
    }

    // The signature was made by another program: openssl pkeyutl -sign -rawin
    void believesTheRightSignatureOnly()
    {
        const QByteArray key = QByteArray::fromBase64(kKey.toLatin1());
        const QByteArray feed = "<rss>\n</rss>\n";
        const QByteArray signature =
            "n7oMX3Lx7c86AP1PK2j30ZGpZy+6t8N7n5/RZ7T8UbjVsCnw6DO86wWkHzn/By9VSi2FD3InqDGMF2IHLC//BA==";
        QVERIFY(isSignedBy(key, feed, signature));
        QVERIFY(isSignedBy(key, feed, signature + "\r\n"));
        QVERIFY(!isSignedBy(key, feed.trimmed(), signature));
        QVERIFY(!isSignedBy(key, QByteArray(feed).replace("rss", "RSS"), signature));
        QVERIFY(!isSignedBy(QByteArray(32, 'k'), feed, signature));
        QVERIFY(!isSignedBy(key.left(31), feed, signature));
        QVERIFY(!isSignedBy(key, feed, signature.left(84)));
        QVERIFY(!isSignedBy(key, feed, QByteArray(signature).insert(8, '\n')));
        QVERIFY(!isSignedBy(key, feed, QByteArray::fromBase64(signature)));
        QVERIFY(!isSignedBy(key, feed, {}));
    }

    void findsTheSignature()
    {
        QCOMPARE(signatureUrl(QUrl(u"https://a.org/c.xml?d=e"_qs)), QUrl(u"https://a.org/c.xml.sig?d=e"_qs));
    }

    void takesTheNewestEntry_data()
    {
        QTest::addColumn<QByteArray>("items");
        QTest::addColumn<int>("build"); // 0: none, -1: not valid
        QTest::newRow("none") << QByteArray() << 0;
        QTest::newRow("by number, not by text") << item(9) + item(10) << 10;
        QTest::newRow("as attributes") << QByteArray(
                                              "<item><enclosure url=\"https://a.org/x\" a:version=\"7\"/></item>")
                                       << 7;
        QTest::newRow("for others") << item(9, "<enclosure a:os=\"windows\"/>") + item(8, "<a:os>macos</a:os>") +
                                           item(7, "<a:os>Linux</a:os>")
                                    << 7;
        QTest::newRow("in a named channel") << item(9, "<a:channel>beta</a:channel>") + item(8) << 8;
        QTest::newRow("one without number") << QByteArray("<item><a:version>1.2.3</a:version></item>") + item(8) << 8;
        QTest::newRow("all without number") << QByteArray("<item><a:version>1.2.3</a:version></item>") << -1;
        QTest::newRow("number in no namespace") << QByteArray("<item><version>8</version></item>") << -1;
        QTest::newRow("too large a number") << item(8).replace("8", "99999999999999999999") << -1;
    }

    void takesTheNewestEntry()
    {
        QFETCH(QByteArray, items);
        QFETCH(int, build);
        const UpdateFeed feed = parseUpdateFeed(inRss(items));
        QCOMPARE(feed.isValid, build >= 0);
        QCOMPARE(feed.newest.has_value(), build > 0);
        if (feed.newest)
            QCOMPARE(feed.newest->build, build);
    }

    void readsAnEntry()
    {
        const QByteArray inside = "<title>not shown</title><a:shortVersionString> 1.\n2 </a:shortVersionString>"
                                  "<link>https://example.org/1.2</link>"
                                  "<pubDate>Mon, 23 Nov 2026 10:00:00 +0800</pubDate>"
                                  "<description><![CDATA[<h2>新功能</h2><ul><li>A &amp; B</li></ul>]]></description>";
        const UpdateFeed full = parseUpdateFeed(inRss(item(105, inside)));
        QVERIFY(full.newest);
        QCOMPARE(full.newest->version, u"1. 2"_qs);
        QCOMPARE(full.newest->published, QDate(2026, 11, 23));
        QCOMPARE(full.newest->notes, u"新功能\n\n• A & B"_qs);
        QCOMPARE(full.newest->page, QUrl(u"https://example.org/1.2"_qs));

        const UpdateFeed bare = parseUpdateFeed(inRss(item(105, "<link>http://example.org/</link>")));
        QVERIFY(bare.newest);
        QCOMPARE(bare.newest->version, u"105"_qs);
        QVERIFY(bare.newest->published.isNull());
        QCOMPARE(bare.newest->page, QUrl(u"https://example.org/download"_qs)); // its own is not acceptable
    }

    void refusesWhatIsNoFeed_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray good = inRss(item(105));
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no XML") << QByteArray("{\"version\": 105}");
        QTest::newRow("cut short") << good.left(good.size() - 3);
        QTest::newRow("something behind") << good + "<rss/>";
        QTest::newRow("unknown entity") << inRss(item(105, "<description>&x;</description>"));
        QTest::newRow("document type") << QByteArray(good).replace("<rss", "<!DOCTYPE rss [<!ENTITY x \"y\">]><rss");
        QTest::newRow("outside entity") << QByteArray(good).replace("<rss",
                                                                    "<!DOCTYPE rss SYSTEM \"file:///etc/passwd\"><rss");
        QByteArray laughs = "<!DOCTYPE rss [<!ENTITY l0 \"ha\">";
        for (int i = 1; i < 30; ++i)
            laughs += "<!ENTITY l" + QByteArray::number(i) + " \"" +
                      ("&l" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
        QTest::newRow("a thousand laughs")
            << QByteArray(inRss(item(105, "<description>&l29;</description>"))).replace("<rss", laughs + "]><rss");
    }

    void refusesWhatIsNoFeed()
    {
        QFETCH(QByteArray, text);
        const UpdateFeed feed = parseUpdateFeed(text);
        QVERIFY(!feed.isValid);
        QVERIFY(!feed.newest);
    }

    void bearsDepthAndLength()
    {
        constexpr int depth = 100000; // recursion would not come back
        const QByteArray deep = QByteArray("<b>").repeated(depth) + "x" + QByteArray("</b>").repeated(depth);
        const UpdateFeed feed = parseUpdateFeed(inRss(item(1, "<description>" + deep + "</description>")));
        QVERIFY(feed.newest);
        QCOMPARE(feed.newest->notes, u"x"_qs);
        const UpdateFeed wordy =
            parseUpdateFeed(inRss(item(1, "<description>" + QByteArray(500000, 'x') + "</description>")));
        QCOMPARE(wordy.newest->notes.size(), UpdateEntry::kMaxNotes);
        QElapsedTimer timer;
        timer.start();
        for (const QString &part : {u"<!--"_qs, u"<p>"_qs, u"<style>"_qs, u"&#"_qs, u"</"_qs, u" \n"_qs})
            static_cast<void>(plainNotes(part.repeated(250000) + u"</p>"_qs));
        QVERIFY(timer.elapsed() < 20000); // a square of this length would be minutes
    }

    void notesBecomePlain_data()
    {
        QTest::addColumn<QString>("notes");
        QTest::addColumn<QString>("plain");
        QTest::newRow("text stays") << u"  a < b && c > d;\n\n\n\n- x &amp; y  "_qs
                                    << u"a < b && c > d;\n\n- x &amp; y"_qs;
        QTest::newRow("paragraphs") << u"<p>one\n two</p>\n<p>three</p>"_qs << u"one two\n\nthree"_qs;
        QTest::newRow("line ends") << u"one<br>two<BR/>three"_qs << u"one\ntwo\nthree"_qs;
        QTest::newRow("list") << u"<ul>\n<li>one</li>\n<li class=\"x\">two</li></ul>"_qs << u"• one\n• two"_qs;
        QTest::newRow("characters") << u"<p>&lt;b&gt; &#65;&#x4e2d;&nbsp;&quot;&bogus;&#0;&#xD800;&</p>"_qs
                                    << u"<b> A中 \"&bogus;&#0;&#xD800;&"_qs;
        QTest::newRow("what is not shown")
            << u"<style>p{}</style><p>a<!-- <p>b</p> -->c<script>d</script>e</p>"_qs << u"ace"_qs;
        QTest::newRow("cut short") << u"<p>a</p><b"_qs << u"a"_qs;
    }

    void notesBecomePlain()
    {
        QFETCH(QString, notes);
        QTEST(plainNotes(notes), "plain");
    }
};

TAVREL_TEST_MAIN(QCoreApplication, UpdateFeedTest)
#include "test_update_feed.moc"
