#include "platform/linux/atspi_tree.h"

#include "platform/fake_tree.h"
#include "platform/private_bus.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtConcurrentRun>

#include <algorithm>
#include <chrono>
#include <optional>

using namespace tavrel;
using namespace tavrel::platform;
using namespace tavrel::test;
using namespace std::chrono_literals;

namespace {

constexpr auto kQuery = 250ms;
/// Far above the time a query may take and far below that of one that hangs, for a machine that is busy.
constexpr qint64 kEnds = 5000;
/// Where what is found is compared, no answer may be missing on a busy machine either.
constexpr auto kAmple = 60s;

/// What a descent finds that asks for one thing after the other, the window first: 24 levels deep, among the first 400
/// children.
QList<int> plainWalk(const QList<FakeElement> &tree, const QPoint &point)
{
    QList<int> chain{0};
    for (int level = 0; level < 24; ++level) {
        std::optional<int> showing;
        std::optional<int> visible;
        for (const int child : tree[chain.last()].children.mid(0, 400)) {
            const QRect &rect = tree[child].rect;
            if (!rect.contains(point) || rect.width() < 2 || rect.height() < 2)
                continue;
            if (tree[child].showing)
                showing = child;
            else if (tree[child].visible)
                visible = child;
        }
        if (!showing && !visible)
            break;
        chain.append(showing ? *showing : *visible);
    }
    return chain;
}

QList<QRect> rectanglesOf(const QList<FakeElement> &tree, const QList<int> &chain)
{
    QList<QRect> rectangles;
    for (auto index = chain.crbegin(); index != chain.crend(); ++index)
        rectangles.append(tree[*index].rect);
    return rectangles;
}

template <typename Query>
auto onWorker(Query query)
{
    return QtConcurrent::run(query).result();
}

} // namespace

class AtspiTreeTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_bus = std::make_unique<PrivateBus>(PrivateBus::Kind::Bare);
        QVERIFY(m_bus->start());
        m_tree = std::make_unique<AtspiTree>();
    }

    void cleanup()
    {
        closeZoo();
        m_tree.reset();
        m_bus.reset();
    }

    void findsWhatThePlainWalkFinds_data()
    {
        QTest::addColumn<QByteArray>("shape");
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<QStringList>("how");
        for (const char *shape : {"grid", "levels", "crowd", "deep"})
            QTest::newRow(shape) << QByteArray(shape) << 0U << QStringList();
        for (quint32 seed = 1; seed <= 4; ++seed)
            QTest::addRow("random %u", seed) << QByteArray("random") << seed << QStringList();
        QTest::newRow("coordinates of the window")
            << QByteArray("random") << 5U << QStringList(u"coordinates=window"_qs);
        QTest::newRow("scaled") << QByteArray("random") << 6U << QStringList(u"scale=2"_qs);
        QTest::newRow("scaled coordinates of the window")
            << QByteArray("random") << 7U << QStringList{u"scale=2"_qs, u"coordinates=window"_qs};
    }

    void findsWhatThePlainWalkFinds()
    {
        QFETCH(QByteArray, shape);
        QFETCH(quint32, seed);
        QFETCH(QStringList, how);
        const QList<FakeElement> tree = fakeTree(shape, seed);
        QVERIFY(openZoo(shape, seed, how));
        QRandomGenerator random(seed + 1);
        qsizetype deepest = 0;
        for (int i = 0; i < 25; ++i) {
            const QPoint point(kFakeWindow.x() + random.bounded(kFakeWindow.width()),
                               kFakeWindow.y() + random.bounded(kFakeWindow.height()));
            const QList<QRect> expected = rectanglesOf(tree, plainWalk(tree, point));
            QCOMPARE(rectanglesAt(point, kAmple), expected);
            deepest = std::max(deepest, expected.size());
        }
        QVERIFY(deepest > 1);
    }

    void rolesAndTexts_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("word");
        // Those of real widgets are found by x11_elements.
        QTest::newRow("entry, which Qt does not have") << 79 << u"Edit"_qs;
        QTest::newRow("panel") << 39 << u"Element"_qs;
    }

    void rolesAndTexts()
    {
        QFETCH(int, role);
        QFETCH(QString, word);
        QVERIFY(openZoo("roles"));
        m_target.point = kFakeWindow.topLeft() + QPoint(8 * role + 4, 50);
        const ElementInfo info = onWorker([this] { return m_tree->elementAt(m_target, QDeadlineTimer(kAmple)); });
        QCOMPARE(info.role, word);
        QCOMPARE(info.name, QString(79, u'n')); // 80 would be half a letter
        QCOMPARE(info.helpText, QString(119, u'h'));
    }

    void addressOfThePage_data()
    {
        QTest::addColumn<QStringList>("how");
        QTest::addColumn<QPoint>("point");
        QTest::addColumn<QString>("address");
        const QString address = u"https://example.org/page?ä=1"_qs;
        QTest::newRow("page") << QStringList() << QPoint(600, 800) << address;
        QTest::newRow("frame in it") << QStringList() << QPoint(400, 400) << address;
        QTest::newRow("by another name") << QStringList(u"address=URI"_qs) << QPoint(600, 800) << address;
        QTest::newRow("the browser's own part") << QStringList() << QPoint(600, 100) << QString();
    }

    void addressOfThePage()
    {
        QFETCH(QStringList, how);
        QFETCH(QPoint, point);
        QVERIFY(openZoo("page", 0, how));
        m_target.point = point;
        QTEST(onWorker([this] { return m_tree->pageAddressAt(m_target, QDeadlineTimer(kAmple)); }), "address");
    }

    void stoppedApplicationDelaysOnlyTheQuery()
    {
        QVERIFY(openZoo("grid"));
        const QPoint point = kFakeWindow.center();
        const QList<QRect> expected = rectanglesAt(point, kAmple);
        QCOMPARE(expected.size(), 3);
        test::setFrozen(*m_zoo, true);
        QVERIFY(rectanglesAt(point, kQuery).isEmpty());
        QVERIFY(m_elapsed < kEnds);
        test::setFrozen(*m_zoo, false);
        QCOMPARE(rectanglesAt(point, kAmple), expected);
    }

    void elementWithoutAnswerEndsTheWay()
    {
        const QPoint point = kFakeWindow.center();
        const QList<FakeElement> tree = fakeTree("deep", 0);
        const QList<int> chain = plainWalk(tree, point);
        QVERIFY(openZoo("deep", 0, {u"silent=%1"_qs.arg(chain[10])}));
        QCOMPARE(rectanglesAt(point, 2s), rectanglesOf(tree, chain.mid(0, 10)));
        QVERIFY(m_elapsed < kEnds);
    }

    void applicationThatGoesEndsTheWay()
    {
        const QPoint point = kFakeWindow.center();
        const QList<FakeElement> tree = fakeTree("deep", 0);
        const QList<int> chain = plainWalk(tree, point);
        QVERIFY(openZoo("deep", 0, {u"dies=%1"_qs.arg(chain[10])}));
        QCOMPARE(rectanglesAt(point, kAmple), rectanglesOf(tree, chain.mid(0, 10)));
        QVERIFY(m_elapsed < kEnds);
        closeZoo();
        QVERIFY(openZoo("deep")); // a new process
        QCOMPARE(rectanglesAt(point, kAmple), rectanglesOf(tree, chain));
    }

    void withoutBusThereIsNothing()
    {
        m_bus.reset();
        QVERIFY(!available());
        QVERIFY(rectanglesAt(kFakeWindow.center(), kQuery).isEmpty());
        QVERIFY(m_elapsed < kEnds);
    }

    void sessionWithoutAccessibilityBusHasNone() { QVERIFY(!available()); }

    void stoppedBusDelaysNobody()
    {
        QVERIFY(openZoo("grid"));
        m_bus->setFrozen(true);
        // The GUI thread may ask, and gets its answer without the bus.
        QElapsedTimer timer;
        timer.start();
        QVERIFY(m_tree->isAvailable(QDeadlineTimer(0)));
        QVERIFY(timer.elapsed() < kEnds);
        QVERIFY(!onWorker([] { return AtspiTree().isAvailable(QDeadlineTimer(kQuery)); }));
        for (int i = 0; i < 40; ++i) // more than a bus lets wait to be let in
            QVERIFY(rectanglesAt(kFakeWindow.center(), kQuery).isEmpty());
        QVERIFY(!available());
        m_bus->setFrozen(false);
        QTRY_VERIFY_WITH_TIMEOUT(available(), 60'000); // it may have been given up meanwhile
        QCOMPARE(rectanglesAt(kFakeWindow.center(), kAmple).size(), 3);
        m_bus->setFrozen(true);
        QVERIFY(rectanglesAt(kFakeWindow.center(), kQuery).isEmpty());
        QVERIFY(m_elapsed < kEnds);
    }

    void newBusIsFoundAfterTheOldOne()
    {
        QVERIFY(openZoo("grid"));
        QCOMPARE(rectanglesAt(kFakeWindow.center(), kAmple).size(), 3);
        m_bus->stop();
        closeZoo();
        QVERIFY(m_bus->start());
        QVERIFY(openZoo("grid"));
        QVERIFY(rectanglesAt(kFakeWindow.center(), kAmple).isEmpty()); // notices that the old one is gone
        QTRY_COMPARE_WITH_TIMEOUT(rectanglesAt(kFakeWindow.center(), kAmple).size(), 3, 60'000);
    }

    void queriesOfSeveralThreadsTakeTurns()
    {
        QVERIFY(openZoo("random", 1));
        const QList<FakeElement> tree = fakeTree("random", 1);
        QVERIFY(!rectanglesAt(kFakeWindow.center(), kAmple).isEmpty());
        const auto countRight = [&](quint32 seed) {
            QRandomGenerator random(seed);
            int right = 0;
            for (int i = 0; i < 20; ++i) {
                AtspiTree::Target target = m_target;
                target.point = kFakeWindow.topLeft() + QPoint(random.bounded(1200), random.bounded(900));
                right += m_tree->rectanglesAt(target, QDeadlineTimer(kAmple)) ==
                                 rectanglesOf(tree, plainWalk(tree, target.point))
                             ? 1
                             : 0;
            }
            return right;
        };
        QThreadPool pool;
        pool.setMaxThreadCount(4);
        QList<QFuture<int>> all;
        for (quint32 seed = 0; seed < 4; ++seed)
            all.append(QtConcurrent::run(&pool, countRight, seed));
        for (QFuture<int> &one : all)
            QCOMPARE(one.result(), 20);
    }

private:
    bool openZoo(const QByteArray &shape, quint32 seed = 0, const QStringList &how = {})
    {
        m_zoo = std::make_unique<QProcess>();
        m_zoo->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_zoo->start(QStringLiteral(ATSPI_ZOO), QStringList{QString::fromLatin1(shape), QString::number(seed)} + how);
        m_target.processId = m_zoo->processId();
        m_target.window = {kFakeWindow, kFakeWindow, kFakeWindow, u"Zoo"_qs};
        return m_zoo->waitForReadyRead() && m_zoo->readLine() == "ready\n";
    }

    void closeZoo()
    {
        if (!m_zoo)
            return;
        m_zoo->closeWriteChannel();
        m_zoo->waitForFinished();
        m_zoo.reset();
    }

    QList<QRect> rectanglesAt(const QPoint &point, std::chrono::milliseconds atMost)
    {
        m_target.point = point;
        QElapsedTimer timer;
        timer.start();
        const QList<QRect> found =
            onWorker([this, atMost] { return m_tree->rectanglesAt(m_target, QDeadlineTimer(atMost)); });
        m_elapsed = timer.elapsed();
        return found;
    }

    bool available()
    {
        return onWorker([this] { return m_tree->isAvailable(QDeadlineTimer(kAmple)); });
    }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<QProcess> m_zoo;
    std::unique_ptr<AtspiTree> m_tree;
    AtspiTree::Target m_target;
    qint64 m_elapsed = 0; ///< milliseconds of the last query
};

TAVREL_TEST_MAIN(QCoreApplication, AtspiTreeTest)
#include "test_atspi_tree.moc"
