// What is cut out of a picture, and the shapes painted on it.
#include "annotate/crop_rect.h"
#include "annotate/selection_renderer.h"
#include "annotate/shape_factory.h"
#include "support/test_main.h"

#include <QGuiApplication>

using namespace tavrel;

namespace {

QImage speckled(const QSize &size, double ratio)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb((x * 37) & 0xff, (y * 53) & 0xff, ((x + y) * 91) & 0xff));
    }
    image.setDevicePixelRatio(ratio);
    return image;
}

} // namespace

class SelectionRendererTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyEdgeIsRoundedNeverTheSize_data()
    {
        QTest::addColumn<QRectF>("selection");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QRect>("crop");
        QTest::newRow("whole") << QRectF(10, 20, 30, 40) << 1.0 << QRect(10, 20, 30, 40);
        QTest::newRow("1.25: 12.5 to 37.5") << QRectF(10, 10, 20, 20) << 1.25 << QRect(13, 13, 25, 25);
        QTest::newRow("1.25: a width that rounds differently") << QRectF(1, 0, 1.2, 4) << 1.25 << QRect(1, 0, 2, 5);
        QTest::newRow("1.5") << QRectF(10.3, 0, 10.4, 2) << 1.5 << QRect(15, 0, 16, 3);
        QTest::newRow("cut to the picture") << QRectF(90, 90, 50, 50) << 1.0 << QRect(90, 90, 10, 10);
        QTest::newRow("outside") << QRectF(200, 200, 50, 50) << 1.0 << QRect();
    }

    void everyEdgeIsRoundedNeverTheSize()
    {
        QFETCH(QRectF, selection);
        QFETCH(double, ratio);
        QFETCH(QRect, crop);
        const QRect result = cropRect(selection, ratio, QSize(100, 100));
        if (crop.isNull())
            QVERIFY(result.isEmpty());
        else
            QCOMPARE(result, crop);
    }

    void theResultHasThePixelsBetweenTheRoundedEdges()
    {
        const QImage image = speckled({125, 125}, 1.25);
        const QImage result = renderSelection(image, {1, 10, 1.2, 20}, {}, ShapeFactory::standard());
        QCOMPARE(result.size(), QSize(2, 25)); // 1.25 to 2.75, 12.5 to 37.5
        QCOMPARE(result.devicePixelRatio(), 1.25);
        QCOMPARE(result.pixel(0, 0), image.pixel(1, 13));
        QVERIFY(renderSelection(image, {200, 0, 10, 10}, {}, ShapeFactory::standard()).isNull());
        QVERIFY(renderSelection({}, {0, 0, 10, 10}, {}, ShapeFactory::standard()).isNull());
    }
};

TAVREL_TEST_MAIN(QGuiApplication, SelectionRendererTest)
#include "test_selection_renderer.moc"
