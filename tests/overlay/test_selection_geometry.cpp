#include "overlay/magnifier.h"
#include "overlay/overlay_picture.h"
#include "overlay/panel_placement.h"
#include "overlay/selection_geometry.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>

using namespace tavrel::ui;

class SelectionGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hitsByTheBroadRule_data()
    {
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("hit");
        QTest::newRow("corner from outside") << QPointF(85, 85) << 0;
        QTest::newRow("just out of reach") << QPointF(84, 100) << kNoHit;
        QTest::newRow("middle of the top edge") << QPointF(250, 110) << 1;
        QTest::newRow("edge between handles") << QPointF(180, 101) << kInsideHit;
        QTest::newRow("on the edge is not inside") << QPointF(180, 100) << kNoHit;
        QTest::newRow("bottom right") << QPointF(399, 301) << 7;
        QTest::newRow("far outside") << QPointF(500, 200) << kNoHit;
    }

    void hitsByTheBroadRule()
    {
        QFETCH(QPointF, point);
        QFETCH(int, hit);
        QCOMPARE(hitBroad(QRectF(100, 100, 300, 200), point), hit);
    }

    void hitsByTheNarrowRule_data()
    {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<int>("hit");
        const QRectF wide(100, 100, 300, 300);
        QTest::newRow("15 outside a corner") << wide << QPointF(85, 85) << 0;
        QTest::newRow("21 outside a corner") << wide << QPointF(79, 85) << kNoHit;
        QTest::newRow("top edge") << wide << QPointF(250, 112) << 1;
        QTest::newRow("inside the top edge's reach") << wide << QPointF(250, 113) << kNoHit;
        QTest::newRow("left edge") << wide << QPointF(112, 250) << 3;
        QTest::newRow("right edge from outside") << wide << QPointF(415, 250) << 4;
        QTest::newRow("small: corner of 6") << QRectF(100, 100, 20, 20) << QPointF(94, 94) << 0;
        QTest::newRow("small: 7 outside") << QRectF(100, 100, 20, 20) << QPointF(93, 94) << kNoHit;
        QTest::newRow("no height") << QRectF(100, 100, 20, 0) << QPointF(100, 100) << kNoHit;
    }

    void hitsByTheNarrowRule()
    {
        QFETCH(QRectF, selection);
        QFETCH(QPointF, point);
        QFETCH(int, hit);
        QCOMPARE(hitNarrow(selection, point), hit);
    }

    void handlesDragTheirSides_data()
    {
        QTest::addColumn<int>("handle");
        QTest::addColumn<QRectF>("result");
        const QPointF delta(10, 20);
        Q_UNUSED(delta);
        QTest::newRow("top left") << 0 << QRectF(110, 120, 190, 80);
        QTest::newRow("top") << 1 << QRectF(100, 120, 200, 80);
        QTest::newRow("top right") << 2 << QRectF(100, 120, 210, 80);
        QTest::newRow("left") << 3 << QRectF(110, 100, 190, 100);
        QTest::newRow("right") << 4 << QRectF(100, 100, 210, 100);
        QTest::newRow("bottom left") << 5 << QRectF(110, 100, 190, 120);
        QTest::newRow("bottom") << 6 << QRectF(100, 100, 200, 120);
        QTest::newRow("bottom right") << 7 << QRectF(100, 100, 210, 120);
    }

    void handlesDragTheirSides()
    {
        QFETCH(int, handle);
        QFETCH(QRectF, result);
        QCOMPARE(resizedSelection(QRectF(100, 100, 200, 100), handle, {10, 20}, QRectF(0, 0, 800, 600)), result);
    }

    void dragsBeyondTheOppositeEdgeFlipAndStayOnTheDisplay()
    {
        const QRectF area(0, 0, 400, 300);
        QCOMPARE(resizedSelection(QRectF(100, 100, 50, 50), 4, {-90, 0}, area), QRectF(60, 100, 40, 50));
        QCOMPARE(resizedSelection(QRectF(100, 100, 50, 50), 7, {900, 900}, area), QRectF(100, 100, 300, 200));
        QCOMPARE(movedSelection(QRectF(100, 100, 50, 50), {900, -900}, area), QRectF(350, 0, 50, 50));
        QCOMPARE(bandSelection({50, 60}, {-20, 500}, area), QRectF(0, 60, 50, 240));
    }

    void theClearPictureCoversEveryTouchedPixel()
    {
        QCOMPARE(coveredPixels(QRectF(10.3, 0, 10.4, 2), 1.5, QSize(100, 100)), QRect(QPoint(15, 0), QPoint(31, 2)));
    }

    void dimmingEqualsPaintingHalfTransparentBlack()
    {
        QImage image(257, 31, QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                // Some pixels are not opaque: a stored picture may be anything.
                const int alpha = y < 24 ? 255 : static_cast<int>(QRandomGenerator::global()->bounded(256));
                const QColor color = QColor::fromRgb(QRandomGenerator::global()->generate());
                image.setPixelColor(x, y, QColor(color.red(), color.green(), color.blue(), alpha));
            }
        }
        QImage painted = image;
        QPainter painter(&painted);
        painter.fillRect(painted.rect(), QColor(0, 0, 0, 128));
        painter.end();
        const QImage fast = dimmedImage(image);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb a = painted.pixel(x, y);
                const QRgb b = fast.pixel(x, y);
                QVERIFY(qAbs(qRed(a) - qRed(b)) <= 2 && qAbs(qGreen(a) - qGreen(b)) <= 2 &&
                        qAbs(qBlue(a) - qBlue(b)) <= 2 && qAbs(qAlpha(a) - qAlpha(b)) <= 1);
            }
        }
    }

    void theMagnifierFlipsAtTheEdges()
    {
        const MagnifierLook both{.lens = true, .colors = true, .colorFormat = {}};
        const QSizeF overlay(800, 600);
        QCOMPARE(magnifierBox({100, 100}, both, overlay), QRectF(120, 120, 150, 214));
        QCOMPARE(magnifierBox({790, 590}, both, overlay), QRectF(620, 356, 150, 214));
        QCOMPARE(magnifierBox({100, 100}, {.lens = true, .colors = false, .colorFormat = {}}, overlay).height(), 150.0);
        QCOMPARE(magnifierBox({100, 100}, {.lens = false, .colors = true, .colorFormat = {}}, overlay).height(), 64.0);
        QCOMPARE(colorText(QColor(12, 34, 56), QStringLiteral("rgb")), QStringLiteral("12, 34, 56"));
        QCOMPARE(colorText(QColor(12, 34, 56), QStringLiteral("hex")), QStringLiteral("#0C2238"));
    }

    void panelsGoWhereThereIsRoom_data()
    {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<QPoint>("toolbar");
        QTest::newRow("below, right aligned") << QRectF(300, 100, 400, 200) << QPoint(400, 315);
        QTest::newRow("above at the bottom") << QRectF(300, 400, 400, 190) << QPoint(400, 309);
        QTest::newRow("into a selection of full height") << QRectF(300, 0, 400, 600) << QPoint(400, 509);
        QTest::newRow("left edge") << QRectF(5, 100, 100, 100) << QPoint(10, 215);
    }

    void panelsGoWhereThereIsRoom()
    {
        QFETCH(QRectF, selection);
        QFETCH(QPoint, toolbar);
        const PanelPlacement place = placePanels(selection, QSize(800, 600), QSize(300, 40), QSize(200, 30), {});
        QCOMPARE(place.toolbar, toolbar);
        QCOMPARE(place.attributeBar, QPoint(toolbar.x(), toolbar.y() + 46));
    }

    void aDraggedToolbarStaysOnTheDisplayWithItsBar()
    {
        const PanelPlacement place =
            placePanels(QRectF(0, 0, 10, 10), QSize(800, 600), QSize(300, 40), QSize(200, 30), QPoint(700, 590));
        QCOMPARE(place.toolbar, QPoint(496, 556));
        QCOMPARE(place.attributeBar, QPoint(496, 520));
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SelectionGeometryTest)
#include "test_selection_geometry.moc"
