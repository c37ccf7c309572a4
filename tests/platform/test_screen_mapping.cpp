#include "platform/linux/screen_mapping.h"
#include "support/test_main.h"

#include <QGuiApplication>

using namespace tavrel;
using namespace tavrel::platform;

namespace {

/// 1920 x 1080 at ratio 1, and right of it 1366 x 768 at ratio 1.5, whose logical size 911 x 512 is a rounded one.
ScreenMapping twoDisplays()
{
    return ScreenMapping({{1, u"A"_qs, QRect(0, 0, 1920, 1080), 1.0, true},
                          {2, u"B"_qs, QRect(1920, 100, 911, 512), 1.5, false},
                          {3, u"gone"_qs, QRect(5000, 0, 100, 100), 1.0, false}},
                         {{u"B"_qs, QRect(1920, 100, 1366, 768)}, {u"A"_qs, QRect(0, 0, 1920, 1080)}});
}

} // namespace

class ScreenMappingTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rectangles_data()
    {
        QTest::addColumn<QRect>("native");
        QTest::addColumn<QRectF>("logical");
        QTest::newRow("first display") << QRect(10, 20, 300, 200) << QRectF(10, 20, 300, 200);
        QTest::newRow("second display starts at the first one's width")
            << QRect(1920, 100, 300, 150) << QRectF(1920, 100, 200, 100);
        QTest::newRow("mostly on the second") << QRect(1890, 250, 300, 150) << QRectF(1900, 200, 200, 100);
        QTest::newRow("off every display, nearest to the second")
            << QRect(3400, 100, 30, 30) << QRectF(1920 + 1480 / 1.5, 100, 20, 20);
    }

    void rectangles()
    {
        QFETCH(QRect, native);
        QFETCH(QRectF, logical);
        QCOMPARE(twoDisplays().toLogical(native), logical);
    }

    void pointsThereAndBack()
    {
        const ScreenMapping mapping = twoDisplays();
        for (const QPoint native : {QPoint(0, 0), QPoint(1919, 1079), QPoint(1920, 100), QPoint(2501, 333)})
            QCOMPARE(mapping.toNative(mapping.toLogical(native)), native);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ScreenMappingTest)
#include "test_screen_mapping.moc"
