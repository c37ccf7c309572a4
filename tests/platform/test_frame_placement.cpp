#include "platform/linux/frame_placement.h"

#include "support/test_main.h"

#include <QCoreApplication>

using namespace tavrel;
using namespace tavrel::platform;

class FramePlacementTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowsOfAllKindsOfToolkits_data()
    {
        QTest::addColumn<QRect>("client");
        QTest::addColumn<QRect>("outer");
        QTest::addColumn<QRect>("visible");
        QTest::addColumn<QRectF>("onScreen");
        QTest::addColumn<QRectF>("inWindow");
        QTest::addColumn<QRectF>("element"); // in the coordinates that are asked for
        QTest::addColumn<QRect>("native");

        const QRect client(100, 120, 800, 600);
        const QRect outer = client.adjusted(-2, -24, 2, 2);
        QTest::newRow("client area on the screen")
            << client << outer << outer << QRectF(client) << QRectF(0, 0, 800, 600) << QRectF(150, 170, 50, 20)
            << QRect(150, 170, 50, 20);
        QTest::newRow("frame on the screen") << client << outer << outer << QRectF(outer) << QRectF(0, 0, 804, 626)
                                             << QRectF(150, 170, 50, 20) << QRect(150, 170, 50, 20);
        QTest::newRow("wrong place") << client << outer << outer << QRectF(140, 50, 800, 600) << QRectF(0, 0, 800, 600)
                                     << QRectF(190, 100, 50, 20) << QRect(150, 170, 50, 20);
        QTest::newRow("everything halved")
            << client << client << client << QRectF(50, 60, 400, 300) << QRectF(0, 0, 400, 300)
            << QRectF(75, 85, 25, 10) << QRect(150, 170, 50, 20);
        QTest::newRow("size halved, place by the display's corner")
            << client.translated(1920, 0) << client.translated(1920, 0) << client.translated(1920, 0)
            << QRectF(1970, 60, 400, 300) << QRectF(0, 0, 400, 300) << QRectF(1995, 85, 25, 10)
            << QRect(2070, 170, 50, 20);
        QTest::newRow("ratio of one and a half, rounded")
            << QRect(100, 120, 801, 601) << QRect(100, 120, 801, 601) << QRect(100, 120, 801, 601)
            << QRectF(67, 80, 534, 401) << QRectF(0, 0, 534, 401) << QRectF(167, 180, 100, 50)
            << QRect(250, 270, 150, 75);
        QTest::newRow("place unknown") << client << outer << outer << QRectF(0, 0, 800, 600) << QRectF(0, 0, 800, 600)
                                       << QRectF(50, 50, 50, 20) << QRect(150, 170, 50, 20);
        QTest::newRow("place unknown, shadow")
            << client << client << client.adjusted(20, 18, -20, -24) << QRectF(0, 0, 760, 558) << QRectF(0, 0, 760, 558)
            << QRectF(50, 50, 50, 20) << QRect(170, 188, 50, 20);
        QTest::newRow("place unknown, border")
            << client << client << client << QRectF(0, 0, 790, 590) << QRectF(0, 0, 790, 590) << QRectF(50, 50, 50, 20)
            << QRect(155, 175, 50, 20);
        QTest::newRow("place unknown, halved")
            << client << client << client << QRectF(0, 0, 400, 300) << QRectF(0, 0, 400, 300) << QRectF(25, 25, 25, 10)
            << QRect(150, 170, 50, 20);
        QTest::newRow("numbers without sense") << client << outer << outer << QRectF(client) << QRectF(0, 0, 800, 600)
                                               << QRectF(150, 170, 2e9, 2e9) << QRect(150, 170, 999850, 999830);
    }

    void windowsOfAllKindsOfToolkits()
    {
        QFETCH(QRect, client);
        QFETCH(QRect, outer);
        QFETCH(QRect, visible);
        QFETCH(QRectF, onScreen);
        QFETCH(QRectF, inWindow);
        QFETCH(QRectF, element);
        QFETCH(QRect, native);
        const auto placement = placeFrame({client, outer, visible, u"Title"_qs}, {onScreen, inWindow, u"Title"_qs});
        QVERIFY(placement);
        const QRect found = placement->toNative(element);
        QVERIFY2(qAbs(found.left() - native.left()) <= 1 && qAbs(found.top() - native.top()) <= 1 &&
                     qAbs(found.right() - native.right()) <= 1 && qAbs(found.bottom() - native.bottom()) <= 1,
                 qPrintable(u"%1,%2 %3x%4"_qs.arg(found.x()).arg(found.y()).arg(found.width()).arg(found.height())));
        QVERIFY(element.contains(placement->fromNative(native.topLeft() + QPoint(3, 3))));
    }

    void otherSizesAreOtherWindows()
    {
        const QRect client(100, 120, 800, 600);
        const NativeFrame native{client, client, client, u"Title"_qs};
        for (const QRectF &extents : {QRectF(100, 120, 800, 500), QRectF(0, 0, 0, 0), QRectF(100, 120, -1, -1),
                                      QRectF(0, 0, 80, 60), QRectF(100, 120, 8000, 6000)})
            QVERIFY(!placeFrame(native, {extents, extents, u"Title"_qs}));
    }

    void ofSeveralWindowsTheRightOneFitsBest()
    {
        const QRect client(100, 120, 800, 600);
        const NativeFrame native{client, client, client, u"B"_qs};
        const auto mismatch = [&native](const QRectF &onScreen, const QString &name, bool showing) {
            return placeFrame(native, {onScreen, QRectF(0, 0, onScreen.width(), onScreen.height()), name, showing})
                ->mismatch;
        };
        const QRectF here(client);
        const QRectF elsewhere(500, 120, 800, 600);
        const QRectF nowhere(0, 0, 800, 600);
        const double right = mismatch(here, u"B"_qs, true);
        QVERIFY(right < mismatch(elsewhere, u"B"_qs, true));
        QVERIFY(right < mismatch(here, u"A"_qs, true));
        QVERIFY(right < mismatch(here, u"B"_qs, false));
        QVERIFY(mismatch(here, u"A"_qs, true) < mismatch(elsewhere, u"B"_qs, true));
        QVERIFY(mismatch(nowhere, u"B"_qs, true) < mismatch(nowhere, u"A"_qs, true));
    }

    /// The page of a scaled browser window.
    void childInPixels()
    {
        const QRect client(230, 30, 1500, 1050);
        const auto placement = placeFrame({client, client, client, {}}, {{150, 20, 1000, 700}, {0, 0, 1000, 700}, {}});
        QVERIFY(placement);
        const QRectF holder(154, 163, 992, 553);
        const QRect page = placement->toNative(holder);
        const FramePlacement inPage = placement->forChild(holder, QRectF(page).translated(0, 1));
        QCOMPARE(inPage.toNative({381, 394, 300, 90}), QRect(381, 394, 300, 90));
        QCOMPARE(inPage.forChild(QRectF(page), {381, 394, 300, 90}).scale, 1.0);
        QCOMPARE(placement->forChild(holder, {160, 170, 100, 100}).scale, 1.5);
        QCOMPARE(placement->forChild(holder, holder).scale, 1.5);
    }
};

TAVREL_TEST_MAIN(QCoreApplication, FramePlacementTest)
#include "test_frame_placement.moc"
