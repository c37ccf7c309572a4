#include "blocking_detector.h"
#include "overlay/element_probe.h"
#include "overlay/hover_tracker.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QSignalSpy>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

using Rects = QList<QRectF>;

constexpr qint64 kPid = 7;
const QRectF kArea(0, 0, 640, 480);
const QRectF kWindow(100, 100, 400, 300);
const QPointF kOrigin(1000, 50); ///< global
const QRectF kButton(120, 120, 80, 30);
const QRectF kPanel(110, 110, 300, 200);

platform::WindowInfo window(const QRectF &local, qint64 pid)
{
    platform::WindowInfo info;
    info.geometry = local.translated(kOrigin);
    info.processId = pid;
    return info;
}

} // namespace

class HoverTrackerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_now = 1000;
        m_asked.clear();
        m_tracker = std::make_unique<HoverTracker>([this] { return m_now; });
        m_tracker->setAnimated(false);
        m_tracker->setSurroundings(
            {window(kWindow, kPid), window({520, 0, 100, 480}, 8), window({0, 420, 300, 60}, kPid)}, kOrigin, kArea);
        m_tracker->setElementSource([this](const QPointF &global, qint64 pid) {
            m_asked.append(QStringLiteral("%1,%2 of %3").arg(global.x()).arg(global.y()).arg(pid));
        });
    }

    void cleanup() { m_tracker.reset(); }

    void theAnswerRefinesTheWindow()
    {
        QSignalSpy changed(m_tracker.get(), &HoverTracker::changed);
        m_tracker->update({130, 130});
        QCOMPARE(m_tracker->target(), kWindow);
        QCOMPARE(m_asked, QStringList{QStringLiteral("1130,180 of 7")});
        answer({130, 130}, {kButton, kPanel});
        QCOMPARE(m_tracker->target(), kButton);
        QCOMPARE(m_tracker->candidates(), (Rects{kButton, kPanel, kWindow, kArea}));
        QCOMPARE(changed.count(), 2);
        answer({130, 130}, {kButton, kPanel}); // nothing new
        QCOMPARE(changed.count(), 2);
    }

    void answersAreTakenWhileTheyHold()
    {
        const QRectF far(300, 300, 20, 20);
        for (const auto &[asked, pid, chain, isTaken] :
             {std::tuple(QPointF(130, 130), kPid, Rects{kButton}, true),
              {{131, 131}, kPid, {far}, true}, // two away
              {{131.5, 131}, kPid, {far}, false},
              {{190, 140}, kPid, {kButton}, true}, // further, but still around the pointer
              {{130, 130}, 8, {kButton}, false},   // of another process
              {{190, 140}, kPid, {}, false}}) {
            init(); // anew
            m_tracker->update({130, 130});
            answer(asked, chain, pid);
            QCOMPARE(m_tracker->target(), isTaken ? chain.first() : kWindow);
        }
    }

    void noAnswerComesAfterTheHoverIsGone()
    {
        m_tracker->update({130, 130});
        m_tracker->clear();
        answer({130, 130}, {kButton});
        QVERIFY(m_tracker->target().isNull());
        m_tracker->update({130, 130}); // the same point is asked for anew
        QCOMPARE(m_asked.size(), 2);
    }

    void anEmptyAnswerDoesNotTakeAnElementThatHolds()
    {
        m_tracker->update({130, 130});
        answer({130, 130}, {kButton, kPanel});
        m_tracker->update({140, 130});
        answer({140, 130}, {});
        QCOMPARE(m_tracker->target(), kButton);
        m_tracker->update({300, 300});
        answer({300, 300}, {});
        QCOMPARE(m_tracker->target(), kWindow);
    }

    void anOldElementStaysForAMoment()
    {
        m_tracker->update({130, 130});
        answer({130, 130}, {kButton, kPanel});
        m_now += 500;
        m_tracker->update({130, 170}); // off the button
        m_now += 100;
        m_tracker->update({130, 180});
        m_now += 49;
        m_tracker->update({130, 190}); // a pointer that keeps moving does not keep it for ever
        QCOMPARE(m_tracker->target(), kButton);
        m_now += 1;
        m_tracker->update({130, 200});
        QCOMPARE(m_tracker->target(), kPanel); // of what was known only that which is here too
        answer({130, 200}, {{125, 195, 40, 20}, kPanel});
        QCOMPARE(m_tracker->target(), QRectF(125, 195, 40, 20));
    }

    void aRestingPointerDoesNotKeepTheOldElementEither()
    {
        m_tracker->update({130, 130});
        answer({130, 130}, {kButton});
        m_tracker->update({130, 170});
        QCOMPARE(m_tracker->target(), kButton);
        QTRY_COMPARE(m_tracker->target(), kWindow);
        QCOMPARE(m_tracker->candidates(), (Rects{kWindow, kArea}));
    }

    void elementsGoWithTheirProcess()
    {
        m_tracker->update({130, 130});
        answer({130, 130}, {kButton});
        m_tracker->update({560, 200}); // another process: nothing to wait for
        QCOMPARE(m_tracker->target(), QRectF(520, 0, 100, 480));
        answer({130, 130}, {kButton});
        QCOMPARE(m_tracker->target(), QRectF(520, 0, 100, 480));
        m_tracker->update({20, 20});
        QVERIFY(m_tracker->target().isNull() && m_tracker->candidates().isEmpty());
    }

    void theChosenLevelSurvivesAnUpdate()
    {
        m_tracker->update({130, 130});
        m_tracker->walk(1);
        QCOMPARE(m_tracker->target(), kArea);
        answer({130, 130}, {kButton, kPanel});
        QCOMPARE(m_tracker->target(), kArea);
        m_tracker->walk(-2);
        QCOMPARE(m_tracker->target(), kPanel);
        m_tracker->update({131, 131}); // the same list
        QCOMPARE(m_tracker->target(), kPanel);
        answer({131, 131}, {kButton}); // the level is gone
        QCOMPARE(m_tracker->target(), kButton);
        m_tracker->walk(99);
        QCOMPARE(m_tracker->target(), kArea);
        m_tracker->toggleWindow();
        QCOMPARE(m_tracker->target(), kWindow);
        m_tracker->toggleWindow();
        QCOMPARE(m_tracker->target(), kButton);
    }

    void thePictureIsHeardOnceItIsAnalysed()
    {
        QImage image(640, 480, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QPainter(&image).fillRect(QRect(150, 150, 100, 100), Qt::black);
        m_tracker->setPicture(image, {10, 5});
        QVERIFY(!m_tracker->isPictureReady());
        m_tracker->update({200, 200});
        QCOMPARE(m_tracker->target(), kWindow);
        QTRY_COMPARE(m_tracker->target(), QRectF(160, 155, 100, 100));
        m_tracker->setPicture(image, {0, 0}); // the same picture elsewhere
        QVERIFY(m_tracker->isPictureReady());
        m_tracker->update({200, 201});
        QCOMPARE(m_tracker->target(), QRectF(150, 150, 100, 100));

        // A point that nothing else was found for gets its box too.
        QPainter(&image).fillRect(QRect(20, 20, 60, 60), Qt::black);
        m_tracker->setPicture(image, {});
        m_tracker->update({50, 50});
        QVERIFY(m_tracker->target().isNull());
        QTRY_COMPARE(m_tracker->target(), QRectF(20, 20, 60, 60));

        // Not once it has been cleared.
        image.fill(Qt::white);
        m_tracker->setPicture(image, {});
        m_tracker->update({50, 50});
        m_tracker->clear();
        QTRY_VERIFY(m_tracker->isPictureReady());
        QVERIFY(m_tracker->target().isNull());
    }

    void anAnalysisIsLeftBehind()
    {
        QList<std::function<void()>> works;
        m_tracker->setRunner([&works](const std::function<void()> &work) { works.append(work); });
        QImage image(640, 480, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter(&image).fillRect(QRect(20, 20, 60, 60), Qt::black);
        QImage other(640, 480, QImage::Format_RGB32);
        other.fill(Qt::white);
        QPainter(&other).fillRect(QRect(30, 30, 100, 80), Qt::black);

        // Another picture comes before the first was begun, then after it was done but before the word of it arrives.
        m_tracker->setPicture(image, {});
        m_tracker->update({50, 50});
        m_tracker->update({50, 51});
        QCOMPARE(works.size(), 1);
        m_tracker->setPicture(other, {});
        m_tracker->update({50, 50});
        QCOMPARE(works.size(), 2);
        works.takeFirst()();
        QCoreApplication::processEvents();
        QVERIFY(!m_tracker->isPictureReady());
        works.takeFirst()();
        QCoreApplication::processEvents();
        QCOMPARE(m_tracker->target(), QRectF(30, 30, 100, 80));
        m_tracker->setPicture(image, {});
        m_tracker->update({50, 50});
        works.takeFirst()();
        m_tracker->setPicture(other, {});
        m_tracker->update({50, 51});
        QCoreApplication::processEvents();
        QVERIFY(!m_tracker->isPictureReady());
        works.takeFirst()();
        QCoreApplication::processEvents();
        QCOMPARE(m_tracker->target(), QRectF(30, 30, 100, 80));
    }

    void boxesFollowThePointerWithinOneCoarseElement()
    {
        QImage image(640, 480, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.fillRect(QRect(120, 120, 60, 60), Qt::black);
        painter.fillRect(QRect(300, 200, 80, 60), Qt::black);
        painter.end();
        m_tracker->setPicture(image, {});
        const Rects coarse{kWindow};
        m_tracker->update({150, 150});
        answer({150, 150}, coarse);
        QTRY_COMPARE(m_tracker->target(), QRectF(120, 120, 60, 60));
        for (const Rects &chain : {coarse, Rects()}) { // it says the same again, or nothing
            m_tracker->update({340, 230});
            QCOMPARE(m_tracker->target(), QRectF(120, 120, 60, 60));
            answer({340, 230}, chain);
            QCOMPARE(m_tracker->target(), QRectF(300, 200, 80, 60));
            m_tracker->update({150, 150});
            answer({150, 150}, chain);
            QCOMPARE(m_tracker->target(), QRectF(120, 120, 60, 60));
        }
    }

    void anAnalysisDoesNotEndTheWaitForElements()
    {
        QImage image(640, 480, QImage::Format_RGB32);
        image.fill(Qt::white);
        m_tracker->update({130, 130});
        answer({130, 130}, {kButton});
        m_tracker->setPicture(image, {});
        m_tracker->update({130, 170}); // off the button
        QTRY_VERIFY(m_tracker->isPictureReady());
        QTRY_COMPARE(m_tracker->target(), kWindow); // the old element goes with the end of the wait
    }

    void theFrameGlidesToItsTarget()
    {
        m_tracker->setAnimated(true);
        m_tracker->update({130, 130});
        QCOMPARE(m_tracker->shown(), kWindow); // the first one is there at once
        answer({130, 130}, {{140, 120, 80, 30}});
        QCOMPARE(m_tracker->shown(), kWindow);
        m_now += 50;
        m_tracker->tick();
        QVERIFY(m_tracker->shown().left() > 120 && m_tracker->shown().left() < 130);
        const double before = m_tracker->shown().left();
        m_now += 1e6; // a pause is no jump
        m_tracker->tick();
        QVERIFY(m_tracker->shown().left() > before && m_tracker->shown().left() < 139);
        for (int i = 0; i < 6; ++i) {
            m_now += 64;
            m_tracker->tick();
        }
        QCOMPARE(m_tracker->shown(), QRectF(140, 120, 80, 30)); // exactly
        m_tracker->walk(1);
        m_tracker->setAnimated(false);
        QCOMPARE(m_tracker->shown(), kWindow);
        m_tracker->clear();
        m_tracker->tick();
        QVERIFY(m_tracker->shown().isNull());
    }

    void queriesNeverPileUp()
    {
        const auto detector = std::make_shared<BlockingDetector>();
        ElementProbe probe(detector);
        QList<QPointF> answers;
        connect(&probe, &ElementProbe::ready, this, [&answers](const QPointF &global, qint64 pid, const Rects &chain) {
            QCOMPARE(QThread::currentThread(), qApp->thread());
            QCOMPARE(pid, kPid);
            QCOMPARE(chain, Rects({{global, QSizeF(10, 10)}}));
            answers.append(global);
        });
        probe.request({0, 0}, kPid);
        detector->begun.acquire();
        for (int i = 1; i <= 50; ++i)
            probe.request(QPointF(i, 0), kPid);
        detector->leave.release(51);
        QTRY_COMPARE(answers, (QList<QPointF>{{50, 0}})); // the first was overtaken, those between never begun
        QCOMPARE(detector->done.load(), 2);
        QVERIFY(detector->isOnWorker);
        probe.request({60, 0}, kPid);
        QTRY_COMPARE(answers.size(), 2);

        detector->available = false;
        Rects last{{0, 0, 1, 1}};
        probe.disconnect(this);
        connect(&probe, &ElementProbe::ready, this,
                [&last](const auto &, qint64, const Rects &chain) { last = chain; });
        probe.request({70, 0}, kPid);
        QTRY_VERIFY(last.isEmpty());
        QCOMPARE(detector->done.load(), 3);
    }

    void aProbeEndsWithTheQueryThatRuns()
    {
        const auto detector = std::make_shared<BlockingDetector>();
        auto probe = std::make_unique<ElementProbe>(detector);
        int answers = 0;
        connect(probe.get(), &ElementProbe::ready, this, [&answers] { ++answers; });
        probe->request({0, 0}, kPid);
        detector->begun.acquire();
        probe->request({1, 0}, kPid);
        const std::unique_ptr<QThread> helper(QThread::create([&detector] { detector->leave.release(9); }));
        helper->start();
        probe.reset();
        helper->wait();
        QCoreApplication::processEvents();
        QCOMPARE(answers, 0);
        QCOMPARE(detector.use_count(), 1); // nothing is left of the worker
    }

private:
    void answer(const QPointF &point, const Rects &local, qint64 pid = kPid)
    {
        Rects chain = local;
        for (QRectF &rect : chain)
            rect.translate(kOrigin);
        m_tracker->takeElements(point + kOrigin, pid, chain);
    }

    double m_now = 0;
    QStringList m_asked;
    std::unique_ptr<HoverTracker> m_tracker;
};

TAVREL_TEST_MAIN(QGuiApplication, HoverTrackerTest)
#include "test_hover_tracker.moc"
