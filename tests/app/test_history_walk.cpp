#include "app/history_walk.h"
#include "support/memory_history.h"
#include "support/test_main.h"

using namespace tavrel;

namespace {

OverlaySnapshot picture(int width)
{
    OverlaySnapshot snapshot;
    if (width > 0)
        snapshot.image = QImage(width, 10, QImage::Format_ARGB32_Premultiplied);
    snapshot.shapesJson = QStringLiteral("[]");
    return snapshot;
}

} // namespace

class HistoryWalkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_history = std::make_unique<MemoryHistory>();
        for (const int width : {102, 101, 100}) // the newest last
            m_history->add({.snapshot = picture(width), .source = {}, .rendered = {}, .context = {}});
        m_walk = std::make_unique<HistoryWalk>(*m_history);
        m_present = picture(7);
        m_missing = 0;
        connect(m_walk.get(), &HistoryWalk::arrived, this,
                [this](const OverlaySnapshot &snapshot) { m_present = snapshot; });
        connect(m_walk.get(), &HistoryWalk::imageMissing, this, [this] { ++m_missing; });
    }

    void walksToOlderAndBackToTheLiveCapture()
    {
        step(1); // nothing is newer
        for (const int width : {100, 101, 102}) {
            step(-1);
            QTRY_COMPARE(m_present.image.width(), width);
        }
        QCOMPARE(m_walk->recordOf(m_present), m_history->order.last());
        QVERIFY(m_walk->recordOf(picture(102)).isEmpty()); // another picture, a stitched page
        step(-1);
        for (const int width : {101, 100, 7}) {
            step(1);
            QTRY_COMPARE(m_present.image.width(), width);
        }
        QVERIFY(m_walk->recordOf(m_present).isEmpty());
    }

    /// Whoever holds the key down means the record where it ends, not those on the way.
    void stepsGoOnWhileARecordIsRead()
    {
        step(-1);
        step(-1);
        step(-1);
        QTRY_COMPARE(m_present.image.width(), 102);
        step(1);
        step(1);
        step(1);
        step(-1);
        step(1);
        QTRY_COMPARE(m_present.image.width(), 7);
        QCoreApplication::processEvents();
        QCOMPARE(m_present.image.width(), 7);
    }

    void whatWasDrawnOnARecordIsKept()
    {
        step(-1);
        QTRY_COMPARE(m_present.image.width(), 100);
        m_present.shapesJson = QStringLiteral("[1]");
        step(-1);
        QTRY_COMPARE(m_present.image.width(), 101);
        m_history->add({.snapshot = picture(99), .source = {}, .rendered = {}, .context = {}}); // shifts nothing
        step(1);
        QTRY_COMPARE(m_present.image.width(), 100);
        QCOMPARE(m_present.shapesJson, QStringLiteral("[1]"));
        step(1);
        QTRY_COMPARE(m_present.image.width(), 7);
        step(-1);
        QTRY_COMPARE(m_present.shapesJson, QStringLiteral("[1]"));
    }

    void aMissingImageKeepsThePlace()
    {
        m_history->entries[m_history->order.at(1)].snapshot = picture(0);
        step(-1);
        QTRY_COMPARE(m_present.image.width(), 100);
        step(-1);
        QTRY_COMPARE(m_missing, 1);
        QCOMPARE(m_present.image.width(), 100);
        QCOMPARE(m_walk->recordOf(m_present), m_history->order.first());
        step(1);
        QTRY_COMPARE(m_present.image.width(), 7);
    }

    void anotherOverlayCannotTakeTheWalkOver()
    {
        const QObject second;
        step(-1);
        QTRY_COMPARE(m_present.image.width(), 100);
        m_walk->step(&second, -1, [] { return OverlaySnapshot(); });
        QCoreApplication::processEvents();
        QCOMPARE(m_present.image.width(), 100);
        step(-1);
        m_walk->reset(); // with a record on its way
        QCoreApplication::processEvents();
        QCOMPARE(m_present.image.width(), 100);
        m_present = picture(8);
        m_walk->step(&second, -1, [this] { return m_present; });
        QTRY_COMPARE(m_present.image.width(), 100);
    }

private:
    void step(int delta)
    {
        m_walk->step(this, delta, [this] { return m_present; });
    }

    std::unique_ptr<MemoryHistory> m_history;
    std::unique_ptr<HistoryWalk> m_walk;
    OverlaySnapshot m_present;
    int m_missing = 0;
};

TAVREL_TEST_MAIN(QGuiApplication, HistoryWalkTest)
#include "test_history_walk.moc"
