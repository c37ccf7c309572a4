#include "overlay/edge_region_finder.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>

using namespace tavrel::ui;

namespace {

using Rects = QList<QRectF>;

QImage picture(const QSize &size, const QList<std::pair<QRect, QColor>> &boxes, QColor ground = Qt::white)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    QPainter painter(&image);
    for (const auto &[rect, color] : boxes)
        painter.fillRect(rect, color);
    return image;
}

/// Windows, panels, buttons and lines of text at random.
QImage crowdedPicture(const QSize &size, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage image = picture(size, {}, QColor(90, 110, 130));
    QPainter painter(&image);
    for (int i = 0; i < 40; ++i) {
        const QPoint at(random.bounded(size.width()), random.bounded(size.height()));
        const QSize extent(random.bounded(10, size.width() / 2), random.bounded(6, size.height() / 2));
        painter.fillRect(QRect(at, extent), QColor::fromRgb(random.generate()));
        for (int line = 0; line < 5; ++line) {
            for (int x = 0; x < extent.width(); x += 4)
                painter.fillRect(QRect(at + QPoint(x, 4 + line * 9), QSize(2, random.bounded(1, 6))), Qt::black);
        }
    }
    return image;
}

} // namespace

class EdgeRegionFinderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheBoxAroundAPoint_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRect>("box");
        QTest::addColumn<QColor>("color");
        const QColor strong(20, 60, 120);
        QTest::newRow("cell 2, even") << QSize(640, 480) << QRect(100, 80, 200, 120) << strong;
        QTest::newRow("cell 2, odd") << QSize(640, 480) << QRect(101, 83, 199, 121) << strong;
        QTest::newRow("cell 2, one below odd") << QSize(640, 480) << QRect(99, 81, 202, 125) << strong;
        QTest::newRow("cell 5") << QSize(3840, 2160) << QRect(1000, 505, 800, 600) << strong;
        for (int shift = 1; shift < 5; ++shift) {
            QTest::addRow("cell 5, %d beside the grid", shift)
                << QSize(3840, 2160) << QRect(1000 + shift, 500 + shift, 801, 602) << strong;
        }
        QTest::newRow("cells that do not divide the width")
            << QSize(2560, 1440) << QRect(2001, 1001, 500, 400) << strong;
        QTest::newRow("faint") << QSize(640, 480) << QRect(101, 83, 199, 121) << QColor(230, 230, 230);
        QTest::newRow("at the right border") << QSize(2560, 1440) << QRect(2001, 1001, 559, 200) << strong;
        QTest::newRow("at the upper left corner") << QSize(640, 480) << QRect(0, 0, 133, 77) << strong;
        QTest::newRow("at the lower right corner") << QSize(1000, 701) << QRect(601, 501, 399, 200) << strong;
    }

    void findsTheBoxAroundAPoint()
    {
        QFETCH(QSize, size);
        QFETCH(QRect, box);
        QFETCH(QColor, color);
        const EdgeRegionFinder finder(picture(size, {{box, color}}));
        const QRectF whole({0, 0}, QSizeF(size));
        for (const QPointF &at :
             {QRectF(box).center(), box.topLeft() + QPointF(16, 16), box.bottomRight() - QPointF(16, 16)}) {
            const Rects found = finder.candidatesAt(at);
            QCOMPARE(found.value(0), QRectF(box));
            QCOMPARE(found.last(), whole);
        }
    }

    void nestedBoxesAscend()
    {
        const QRect outer(100, 60, 440, 360);
        const QRect inner(151, 111, 200, 100);
        const EdgeRegionFinder finder(
            picture({640, 480}, {{outer, QColor(40, 80, 40)}, {inner, QColor(250, 220, 20)}}));
        const Rects boxes = finder.candidatesAt({200, 150});
        QCOMPARE(boxes.first(), QRectF(inner));
        QVERIFY(boxes.contains(QRectF(outer)));
        QCOMPARE(boxes.last(), QRectF(0, 0, 640, 480));
        QVERIFY(std::is_sorted(boxes.begin(), boxes.end(), [](const QRectF &a, const QRectF &b) {
            return a.width() * a.height() < b.width() * b.height();
        }));
        QCOMPARE(finder.candidatesAt({120, 80}).first(), QRectF(outer)); // through between the two
    }

    void aBoxHardlyLargerIsNoStepOfItsOwn()
    {
        const QRect inner(151, 111, 200, 100);
        for (const int by : {4, 20}) { // a frame, and a box of more than half as much again
            const QRect around = inner.adjusted(-by, -by, by, by);
            const EdgeRegionFinder finder(picture({640, 480}, {{QRect(80, 40, 480, 400), QColor(40, 80, 40)},
                                                               {around, QColor(130, 130, 130)},
                                                               {inner, QColor(250, 220, 20)}}));
            const Rects boxes = finder.candidatesAt({250, 150});
            QCOMPARE(boxes.first(), QRectF(inner));
            QCOMPARE(around.adjusted(-4, -4, 4, 4).contains(boxes.value(1).toRect()), by == 20);
        }
    }

    void thePictureCountsInLogicalUnits()
    {
        QImage image = picture({1280, 960}, {{QRect(201, 161, 400, 240), Qt::black}});
        image.setDevicePixelRatio(2);
        const EdgeRegionFinder finder(image);
        QCOMPARE(finder.candidatesAt({150, 120}).first(), QRectF(100.5, 80.5, 200, 120));
        QCOMPARE(finder.candidatesAt({150, 120}).last(), QRectF(0, 0, 640, 480));
    }

    void nothingIsFoundWithoutEdges()
    {
        QImage slope(640, 480, QImage::Format_RGB32);
        for (int x = 0; x < slope.width(); ++x) {
            for (int y = 0; y < slope.height(); ++y)
                slope.setPixel(x, y, qRgb(x * 255 / 640, y * 255 / 480, 90));
        }
        const std::pair<QImage, QPointF> rows[]{
            {QImage(), {1, 1}},
            {picture({640, 480}, {}), {320, 240}},
            {slope, {320, 240}},
            {picture({1, 1}, {}), {0, 0}},
            {picture({640, 480}, {{QRect(300, 100, 2, 20), Qt::black}}), {200, 240}}, // a short line is no box
            {picture({640, 480}, {{QRect(300, 100, 12, 12), Qt::black}}), {306, 106}}};
        for (const auto &[image, point] : rows)
            QCOMPARE(EdgeRegionFinder(image).candidatesAt(point), Rects());
    }

    void pointsOutsideCountAsOnTheBorder()
    {
        const EdgeRegionFinder finder(picture({640, 480}, {{QRect(0, 0, 100, 100), Qt::black}}));
        QCOMPARE(finder.candidatesAt({-1e9, -5}), finder.candidatesAt({0, 0}));
        QCOMPARE(finder.candidatesAt({1e9, 480}), finder.candidatesAt({639, 479}));
        QCOMPARE(finder.candidatesAt({0, 0}).first(), QRectF(0, 0, 100, 100));
    }

    /// Whatever is on the screen: the lists ascend to the whole picture and stay inside it.
    void crowdedPicturesGiveNestedLists()
    {
        const double ratio = 1.5;
        for (const QSize &size : {QSize(320, 200), QSize(1921, 301), QSize(33, 17)}) {
            QImage image = crowdedPicture(size, 7);
            image.setDevicePixelRatio(ratio);
            const QRectF whole({0, 0}, QSizeF(size) / ratio);
            const EdgeRegionFinder finder(image);
            QRandomGenerator random(7);
            for (int i = 0; i < 40; ++i) {
                const QPointF at(random.bounded(whole.width()), random.bounded(whole.height()));
                const Rects found = finder.candidatesAt(at);
                QVERIFY(found.isEmpty() || found.last() == whole);
                for (qsizetype k = 0; k + 1 < found.size(); ++k) {
                    QVERIFY(whole.adjusted(-0.5, -0.5, 0.5, 0.5).contains(found[k]) &&
                            found[k].adjusted(-6, -6, 6, 6).contains(at));
                    QVERIFY(found[k].width() * found[k].height() < found[k + 1].width() * found[k + 1].height());
                }
            }
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, EdgeRegionFinderTest)
#include "test_edge_region_finder.moc"
