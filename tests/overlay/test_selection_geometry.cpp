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
    void hitsByTheBroadRule()
    {
        for (const auto &[point, hit] : {std::pair(QPointF(85, 85), 0), // a corner from outside
                                         {{84, 100}, kNoHit},
                                         {{250, 110}, 1},
                                         {{180, 101}, kInsideHit}, // between the handles
                                         {{180, 100}, kNoHit},     // on the edge is not inside
                                         {{399, 301}, 7},
                                         {{500, 200}, kNoHit}})
            QCOMPARE(hitBroad(QRectF(100, 100, 300, 200), point), hit);
    }

    void hitsByTheNarrowRule()
    {
        const QRectF wide(100, 100, 300, 300);
        const QRectF small(100, 100, 20, 20);
        for (const auto &[selection, point, hit] : {std::tuple(wide, QPointF(85, 85), 0),
                                                    {wide, {79, 85}, kNoHit},
                                                    {wide, {250, 112}, 1},
                                                    {wide, {250, 113}, kNoHit},
                                                    {wide, {112, 250}, 3},
                                                    {wide, {415, 250}, 4},
                                                    {small, {94, 94}, 0},
                                                    {small, {93, 94}, kNoHit},
                                                    {{100, 100, 20, 0}, {100, 100}, kNoHit}})
            QCOMPARE(hitNarrow(selection, point), hit);
    }

    void handlesDragTheirSides()
    {
        const QRectF results[]{{110, 120, 190, 80},  {100, 120, 200, 80},  {100, 120, 210, 80},  {110, 100, 190, 100},
                               {100, 100, 210, 100}, {110, 100, 190, 120}, {100, 100, 200, 120}, {100, 100, 210, 120}};
        for (int handle = 0; handle < 8; ++handle)
            QCOMPARE(resizedSelection(QRectF(100, 100, 200, 100), handle, {10, 20}, QRectF(0, 0, 800, 600)),
                     results[handle]);
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

    void panelsGoWhereThereIsRoom()
    {
        for (const auto &[selection, toolbar] : {std::pair(QRectF(300, 100, 400, 200), QPoint(400, 315)),
                                                 {{300, 400, 400, 190}, {400, 309}},
                                                 {{300, 0, 400, 600}, {400, 509}}, // into it
                                                 {{5, 100, 100, 100}, {10, 215}}}) {
            const PanelPlacement place = placePanels(selection, QSize(800, 600), QSize(300, 40), QSize(200, 30), {});
            QCOMPARE(place.toolbar, toolbar);
            QCOMPARE(place.attributeBar, QPoint(toolbar.x(), toolbar.y() + 46));
        }
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
