#include "platform/linux/screen_mapping.h"
#include "platform/linux/x11_element_detector.h"
#include "platform/linux/x_connection.h"
#include "platform/private_bus.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QMap>
#include <QProcess>
#include <QScreen>
#include <QtConcurrentRun>

#include <algorithm>
#include <cmath>

using namespace tavrel;
using namespace tavrel::platform;

/// A window of real widgets, and the accessibility bus of the system.
class X11ElementsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_bus = std::make_unique<test::PrivateBus>(test::PrivateBus::Kind::Session);
        QVERIFY(m_bus->start());
        m_detector = std::make_unique<X11ElementDetector>(XConnection::create());
        m_window.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_window.start(QStringLiteral(ACCESSIBLE_WINDOW), {});
        QVERIFY(m_window.waitForStarted());
        // It comes onto the screen and onto the bus in its own time.
        QTRY_VERIFY_WITH_TIMEOUT(nameAt("Press") == u"Press", 60'000);
    }

    void cleanupTestCase()
    {
        m_window.closeWriteChannel();
        m_window.waitForFinished();
        m_detector.reset();
        m_bus.reset();
    }

    void elementsAreWhereTheyAre_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("role");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isAll"); // whether the element is the whole widget
        QTest::newRow("button") << u"Press"_qs << u"Button"_qs << u"Press"_qs << true;
        QTest::newRow("text") << u"Text"_qs << u"Edit"_qs << u"Text"_qs << true;
        QTest::newRow("label") << u"Label"_qs << u"Text"_qs << u"Label"_qs << true;
        QTest::newRow("choice") << u"Combo"_qs << u"ComboBox"_qs << u"one"_qs << true;
        QTest::newRow("item") << u"Apple"_qs << u"ListItem"_qs << u"Apple"_qs << true;
        QTest::newRow("upper page") << u"Front"_qs << u"Button"_qs << u"Front"_qs << true;
        QTest::newRow("check mark") << u"Check"_qs << u"CheckBox"_qs << u"Check"_qs << false;
        QTest::newRow("page of a tab") << u"Choice"_qs << u"RadioButton"_qs << u"Choice"_qs << false;
    }

    void elementsAreWhereTheyAre()
    {
        QFETCH(QString, name);
        QFETCH(QString, role);
        QFETCH(bool, isAll);
        const QRectF place = places().value(name);
        QVERIFY(place.isValid());
        const QPointF point(place.left() + 8, place.center().y());
        const QList<QRectF> chain = chainAt(point);
        QVERIFY(chain.size() >= 2);
        if (isAll)
            QVERIFY2(isWithinAPixel(chain.first(), place), qPrintable(describe(chain.first(), place)));
        QVERIFY(place.adjusted(-1, -1, 1, 1).contains(chain.first()));
        QTEST(elementAt(point).name, "text");
        QCOMPARE(elementAt(point).role, role);
        // From inside out, up to the window.
        const QRectF window = m_detector->topLevelWindows().value(0).geometry;
        QVERIFY(window.adjusted(-1, -1, 1, 1).contains(chain.last()));
        for (qsizetype i = 1; i < chain.size(); ++i)
            QVERIFY(chain[i].adjusted(-1, -1, 1, 1).contains(chain[i - 1]));
    }

    void helpIsTheDescription()
    {
        QCOMPARE(elementAt(places().value(u"Press"_qs).center()).helpText, u"What pressing does"_qs);
    }

    void elementsMoveWithTheirWindow()
    {
        const QRectF before = places().value(u"Press"_qs);
        m_window.write("move 420 310\n");
        QTRY_VERIFY_WITH_TIMEOUT(places().value(u"Press"_qs).topLeft() != before.topLeft(), 20'000);
        const auto follows = [this] {
            const QRectF place = places().value(u"Press"_qs);
            return isWithinAPixel(chainAt(place.center()).value(0), place);
        };
        QTRY_VERIFY_WITH_TIMEOUT(follows(), 20'000);
    }

    void elsewhereThereAreNone()
    {
        const QPointF point = places().value(u"Press"_qs).center();
        QVERIFY(m_detector->elementChain(point, 0).isEmpty());
        QVERIFY(m_detector->elementChain(point, QCoreApplication::applicationPid()).isEmpty());
        QVERIFY(m_detector->elementChain(QPointF(3, 3), m_window.processId()).isEmpty());
        QVERIFY(m_detector->elementAt(QPointF(3, 3), m_window.processId()).role.isEmpty());
        QVERIFY(m_detector->sourceUrl(point, m_window.processId()).isEmpty());
    }

private:
    /// In global logical coordinates of this process.
    QMap<QString, QRectF> places()
    {
        m_window.write("where\n");
        QMap<QString, QRectF> found;
        const double ratio = QGuiApplication::primaryScreen()->devicePixelRatio();
        while (m_window.canReadLine() || m_window.waitForReadyRead()) {
            const QList<QByteArray> words = m_window.readLine().trimmed().split(' ');
            if (words.size() < 5)
                break;
            found.insert(QString::fromLatin1(words[0]),
                         QRectF(words[1].toDouble() / ratio, words[2].toDouble() / ratio, words[3].toDouble() / ratio,
                                words[4].toDouble() / ratio));
        }
        return found;
    }

    QList<QRectF> chainAt(const QPointF &point)
    {
        return QtConcurrent::run([&] { return m_detector->elementChain(point, m_window.processId()); }).result();
    }

    ElementInfo elementAt(const QPointF &point)
    {
        return QtConcurrent::run([&] { return m_detector->elementAt(point, m_window.processId()); }).result();
    }

    QString nameAt(const char *widget) { return elementAt(places().value(QString::fromLatin1(widget)).center()).name; }

    static bool isWithinAPixel(const QRectF &found, const QRectF &place)
    {
        return std::abs(found.left() - place.left()) <= 1 && std::abs(found.top() - place.top()) <= 1 &&
               std::abs(found.right() - place.right()) <= 1 && std::abs(found.bottom() - place.bottom()) <= 1;
    }

    static QString describe(const QRectF &found, const QRectF &place)
    {
        QString text;
        QDebug(&text) << found << place;
        return text;
    }

    std::unique_ptr<test::PrivateBus> m_bus;
    std::unique_ptr<X11ElementDetector> m_detector;
    QProcess m_window;
};

TAVREL_TEST_MAIN(QGuiApplication, X11ElementsTest)
#include "test_x11_elements.moc"
