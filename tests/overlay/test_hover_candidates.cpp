#include "overlay/hover_candidates.h"
#include "support/test_main.h"
#include "ui/wheel_steps.h"

#include <QGuiApplication>
#include <QWheelEvent>

using namespace tavrel;
using namespace tavrel::ui;

namespace {

using Rects = QList<QRectF>;

const QRectF kScreen(0, 0, 1000, 800);
const QRectF kWindow(100, 100, 400, 300);

} // namespace

class HoverCandidatesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sourcesBecomeOneAscendingList_data()
    {
        QTest::addColumn<Rects>("image");
        QTest::addColumn<Rects>("elements");
        QTest::addColumn<QRectF>("window"); // empty for none
        QTest::addColumn<Rects>("merged");
        const QRectF button(120, 120, 80, 30);
        const QRectF panel(110, 110, 300, 200);
        const QRectF box(150, 150, 50, 50);
        const auto ofWindow = [](double share) { return QRectF(100, 100, 400, 300 * share); };

        QTest::newRow("nothing") << Rects() << Rects() << QRectF() << Rects();
        QTest::newRow("the picture alone, as it is")
            << Rects{kWindow, box} << Rects() << QRectF() << Rects{kWindow, box};
        QTest::newRow("a window on a flat picture") << Rects() << Rects() << kWindow << Rects{kWindow, kScreen};
        QTest::newRow("boxes inside the window only") << Rects{box, {98.5, 150, 50, 50}, {98.4, 200, 50, 50}} << Rects()
                                                      << kWindow << Rects{box, {98.5, 150, 50, 50}, kWindow, kScreen};
        QTest::newRow("elements hide the picture")
            << Rects{box} << Rects{button, panel} << kWindow << Rects{button, panel, kWindow, kScreen};
        QTest::newRow("unless the smallest takes 60 % of the window")
            << Rects{box} << Rects{ofWindow(0.6)} << kWindow << Rects{box, ofWindow(0.6), kWindow, kScreen};
        QTest::newRow("59 % is not enough")
            << Rects{box} << Rects{ofWindow(0.59)} << kWindow << Rects{ofWindow(0.59), kWindow, kScreen};
        QTest::newRow("elements without a window")
            << Rects{box} << Rects{{-10, 10, 50, 50}, {995, 0, 6, 800}, {999, 0, 6, 800}} << QRectF()
            << Rects{{0, 10, 40, 50}, {995, 0, 5, 800}, kScreen};
        QTest::newRow("elements are sorted, cut to the window, or dropped")
            << Rects() << Rects{panel, button, {90, 100, 50, 50}, {300, 99, 40, 3}, {498.5, 100, 40, 40}} << kWindow
            << Rects{{300, 100, 40, 2}, {100, 100, 40, 50}, button, panel, kWindow, kScreen};
        QTest::newRow("sides at most 1.5 apart are the same")
            << Rects() << Rects{button, button.adjusted(-1.5, -1.5, 1.5, 1.5), button.adjusted(-1.6, 0, 1.6, 0)}
            << kWindow << Rects{button, button.adjusted(-1.6, 0, 1.6, 0), kWindow, kScreen};
        QTest::newRow("a window over the border is cut")
            << Rects() << Rects() << QRectF(-50, 700, 200, 200) << Rects{{0, 700, 150, 100}, kScreen};
        QTest::newRow("a window beside the screen is none")
            << Rects{box} << Rects() << QRectF(999, 0, 50, 50) << Rects{box};
        QTest::newRow("a window as large as the screen") << Rects() << Rects() << kScreen << Rects{kScreen};
    }

    void sourcesBecomeOneAscendingList()
    {
        QFETCH(Rects, image);
        QFETCH(Rects, elements);
        QFETCH(QRectF, window);
        QFETCH(Rects, merged);
        HoverSources sources{image, elements, std::nullopt, kScreen};
        if (!window.isEmpty())
            sources.window = window;
        QCOMPARE(mergedCandidates(sources), merged);
    }

    void theLevelsAreWalkedByContainment()
    {
        const QRectF small(100, 100, 10, 10);
        const QRectF besides(200, 200, 12, 12);
        const QRectF middle(90, 90, 50, 50);
        const QRectF nearly(91, 90.5, 50, 50);
        const Rects all{small, besides, middle, nearly, kScreen};
        QCOMPARE(walked(all, small, 1), middle);
        QCOMPARE(walked(all, small, 2), kScreen);
        QCOMPARE(walked(all, small, 99), kScreen);
        QCOMPARE(walked(all, kScreen, -1), nearly);
        QCOMPARE(walked(all, kScreen, -2), small); // what is no smaller is passed over
        QCOMPARE(walked(all, small, -1), small);
        QCOMPARE(walked(all, QRectF(99.5, 99, 11, 11.2), -1), small); // lies in, within a unit
        QCOMPARE(walked(all, small, 0), small);
        QVERIFY(!stepUp(all, QRectF(500, 500, 600, 10)));
        QVERIFY(!stepDown({}, kScreen));
    }

    void spaceChangesBetweenWindowAndSmallest()
    {
        const QRectF button(120, 120, 80, 30);
        const QRectF over(-20, 100, 400, 300);
        const Rects all{button, kWindow, kScreen};
        const HoverSources sources{{}, {}, kWindow, kScreen};
        QCOMPARE(windowToggled(all, button, sources), kWindow);
        QCOMPARE(windowToggled(all, kScreen, sources), kWindow);
        QCOMPARE(windowToggled(all, kWindow, sources), button);
        QCOMPARE(windowToggled(all, kWindow.adjusted(1.5, -1.5, 0, 0), sources), button);
        QCOMPARE(windowToggled({button}, button, {{}, {}, over, kScreen}), QRectF(0, 100, 380, 300));
        const QRectF nearly = kWindow.adjusted(1, 1, 0, 0); // stands in the list in place of the window
        QCOMPARE(windowToggled({button, nearly, kScreen}, button, sources), nearly);
        QVERIFY(!windowToggled(all, button, {{}, {}, {}, kScreen}));
        QVERIFY(!windowToggled({}, button, sources));
    }

    void windowsAreTakenTopMostFirstAndHalfOpen()
    {
        platform::WindowInfo left;
        left.geometry = QRectF(1000, 0, 100, 100);
        platform::WindowInfo right;
        right.geometry = QRectF(1000, -50, 200, 400);
        const QList<platform::WindowInfo> windows{left, right};
        QCOMPARE(windowAt(windows, {1099.5, 50}), &windows[0]);
        QCOMPARE(windowAt(windows, {1100, 50}), &windows[1]);
        QCOMPARE(windowAt(windows, {1050, 100}), &windows[1]);
        QCOMPARE(windowAt(windows, {1200, 50}), nullptr);
    }

    void wheelEventsHaveAValue()
    {
        const struct
        {
            QPoint pixels;
            QPoint angle;
            Qt::ScrollPhase phase;
            bool inverted;
            bool reversed;
            int value;
            bool smooth;
        } rows[]{
            {{}, {0, -15}, Qt::NoScrollPhase, false, false, -15, false}, // part of a notch
            {{0, 5}, {0, 40}, Qt::NoScrollPhase, false, false, 20, true},
            {{}, {0, 40}, Qt::ScrollUpdate, false, false, 40, true},
            {{0, 5}, {0, 40}, Qt::ScrollEnd, false, false, 0, true},
            {{}, {-121, 120}, Qt::NoScrollPhase, false, false, 0, false}, // sideways
            {{}, {0, 120}, Qt::NoScrollPhase, true, false, -120, false},
            {{}, {0, 120}, Qt::NoScrollPhase, false, true, -120, false},
            {{}, {0, 120}, Qt::NoScrollPhase, true, true, 120, false},
        };
        for (const auto &row : rows) {
            const QWheelEvent event({}, {}, row.pixels, row.angle, Qt::NoButton, Qt::NoModifier, row.phase,
                                    row.inverted);
            QCOMPARE(wheelValue(event, row.reversed), row.value);
            QCOMPARE(isSmoothWheel(event), row.smooth);
        }
    }

    void wheelValuesAddUpToSteps()
    {
        WheelAccumulator wheel;
        int steps = 0;
        for (int i = 0; i < 12; ++i)
            steps += wheel.take(5 * 4);
        QCOMPARE(steps, 2);
        QCOMPARE(wheel.take(110), 0);
        QCOMPARE(wheel.take(-20), 0); // the rest of the other direction is gone
        QCOMPARE(wheel.take(-100), -1);
        QCOMPARE(wheel.take(119), 0);
        wheel.reset();
        QCOMPARE(wheel.take(1), 0);
        QCOMPARE(wheel.take(360), 3);
        QCOMPARE(gestureValue(0.03), 120);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, HoverCandidatesTest)
#include "test_hover_candidates.moc"
