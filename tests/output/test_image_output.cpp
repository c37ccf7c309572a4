#include "output/image_output.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRegularExpression>

using namespace tavrel;

namespace {

QImage picture(QSize size, double ratio, QImage::Format format = QImage::Format_ARGB32_Premultiplied)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, QColor(x * 7 % 256, y * 11 % 256, 200));
    image.convertTo(format);
    image.setDevicePixelRatio(ratio);
    return image;
}

} // namespace

class ImageOutputTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scalesToOnePixelPerPoint_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("ratio");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("already there") << QSize(30, 20) << 1.0 << QSize(30, 20);
        QTest::newRow("two") << QSize(31, 20) << 2.0 << QSize(16, 10);
        QTest::newRow("one and a half") << QSize(100, 50) << 1.5 << QSize(67, 33);
        QTest::newRow("never empty") << QSize(1, 40) << 4.0 << QSize(1, 10);
    }

    void scalesToOnePixelPerPoint()
    {
        QFETCH(QSize, size);
        QFETCH(double, ratio);
        const QImage scaled = prepareOutput(picture(size, ratio), {.scaleTo1x = true});
        QTEST(scaled.size(), "expected");
        QCOMPARE(scaled.devicePixelRatio(), std::min(ratio, 1.0));
    }

    void framesWithOneDevicePixel_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("ratio");
        for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
            for (const QSize size : {QSize(40, 30), QSize(101, 67), QSize(3, 3)})
                QTest::addRow("%dx%d at %g", size.width(), size.height(), ratio) << size << ratio;
        }
    }

    void framesWithOneDevicePixel()
    {
        QFETCH(QSize, size);
        QFETCH(double, ratio);
        const QImage before = picture(size, ratio);
        const QImage after = prepareOutput(before, {.addBorder = true});
        QCOMPARE(after.size(), size);
        QCOMPARE(after.devicePixelRatio(), ratio);
        QImage edge(1, 1, before.format());
        for (int y = 0; y < size.height(); ++y) {
            for (int x = 0; x < size.width(); ++x) {
                const bool onEdge = x == 0 || y == 0 || x == size.width() - 1 || y == size.height() - 1;
                QColor expected = before.pixelColor(x, y);
                if (onEdge) {
                    edge.fill(expected);
                    QPainter(&edge).fillRect(0, 0, 1, 1, QColor(0, 0, 0, 64));
                    expected = edge.pixelColor(0, 0);
                }
                const QColor actual = after.pixelColor(x, y);
                QVERIFY2(std::abs(actual.red() - expected.red()) <= 1 && std::abs(actual.blue() - expected.blue()) <= 1,
                         qPrintable(u"%1,%2: %3 is not %4"_qs.arg(x).arg(y).arg(actual.name(), expected.name())));
            }
        }
    }

    void framesInAFormatThatCanHoldIt_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("expected");
        QTest::newRow("kept") << int(QImage::Format_ARGB32) << int(QImage::Format_ARGB32);
        QTest::newRow("palette") << int(QImage::Format_Indexed8) << int(QImage::Format_ARGB32_Premultiplied);
        QTest::newRow("grey") << int(QImage::Format_Grayscale8) << int(QImage::Format_ARGB32_Premultiplied);
    }

    void framesInAFormatThatCanHoldIt()
    {
        QFETCH(int, format);
        const QImage framed = prepareOutput(picture({20, 20}, 2, QImage::Format(format)), {.addBorder = true});
        QTEST(int(framed.format()), "expected");
        QCOMPARE(framed.devicePixelRatio(), 2.0);
    }

    void leavesThePictureOfTheCallerAlone()
    {
        const QImage image = picture({20, 20}, 2);
        const QImage before = image.copy();
        QCOMPARE(prepareOutput(image, {}).cacheKey(), image.cacheKey());
        QVERIFY(prepareOutput({}, {.scaleTo1x = true, .addBorder = true}).isNull());
        QCOMPARE(prepareOutput(image, {.scaleTo1x = true, .addBorder = true}).size(), QSize(10, 10));
        QCOMPARE(image, before);
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ImageOutputTest)
#include "test_image_output.moc"
