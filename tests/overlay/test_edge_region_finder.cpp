#include "overlay/edge_region_finder.h"
#include "support/test_main.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>

#include <cmath>

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

/// The same search written for reading: every density is counted anew, every pixel is asked for.
class SlowFinder final
{
public:
    explicit SlowFinder(const QImage &source)
        : m_image(source.convertToFormat(QImage::Format_RGB32)),
          m_ratio(source.devicePixelRatio()),
          m_w(source.width()),
          m_h(source.height()),
          m_cell(std::max(2, static_cast<int>(std::ceil(std::max(m_w, m_h) / 900.0)))),
          m_gridW(std::max(1, m_w / m_cell)),
          m_gridH(std::max(1, m_h / m_cell)),
          m_small(m_image.scaled(m_gridW, m_gridH, Qt::IgnoreAspectRatio, Qt::SmoothTransformation))
    {}

    Rects candidatesAt(const QPointF &point) const
    {
        int l = std::clamp(static_cast<int>(std::floor(point.x() * m_ratio / m_cell)), 0, m_gridW - 1);
        int t = std::clamp(static_cast<int>(std::floor(point.y() * m_ratio / m_cell)), 0, m_gridH - 1);
        int r = l;
        int b = t;
        Rects list;
        for (int round = 0; round < 40; ++round) {
            grow(l, r, t, b);
            const int touches = (l == 0) + (r == m_gridW - 1) + (t == 0) + (b == m_gridH - 1);
            if (round == 0 && touches == 4)
                return {};
            int x0 = l * m_cell;
            int x1 = r == m_gridW - 1 ? m_w : (r + 1) * m_cell;
            int y0 = t * m_cell;
            int y1 = b == m_gridH - 1 ? m_h : (b + 1) * m_cell;
            if (std::min(x1 - x0, y1 - y0) < std::max(2 * m_cell, 16))
                break;
            if (round == 0)
                refine(x0, x1, y0, y1);
            list.append({x0 / m_ratio, y0 / m_ratio, (x1 - x0) / m_ratio, (y1 - y0) / m_ratio});
            if (touches == 4)
                break;
            l = std::max(x0 / m_cell - 1, 0);
            r = std::min((x1 - 1) / m_cell + 1, m_gridW - 1);
            t = std::max(y0 / m_cell - 1, 0);
            b = std::min((y1 - 1) / m_cell + 1, m_gridH - 1);
        }
        return filter(list);
    }

private:
    static int luma(QRgb rgb) { return (299 * qRed(rgb) + 587 * qGreen(rgb) + 114 * qBlue(rgb)) / 1000; }
    int cell(int x, int y) const { return luma(m_small.pixel(x, y)); }
    int full(int x, int y) const { return luma(m_image.pixel(x, y)); }

    double columnDensity(int x, int y0, int y1) const
    {
        int edges = 0;
        for (int y = y0; y <= y1 && x > 0; ++y) {
            const int d1 = std::abs(cell(x, y) - cell(x - 1, y));
            const int d2 = x >= 2 ? std::abs(cell(x, y) - cell(x - 2, y)) : d1;
            edges += std::max(d1, d2) > 14;
        }
        return x <= 0 ? 1.0 : edges / double(y1 - y0 + 1);
    }

    double rowDensity(int y, int x0, int x1) const
    {
        int edges = 0;
        for (int x = x0; x <= x1 && y > 0; ++x) {
            const int d1 = std::abs(cell(x, y) - cell(x, y - 1));
            const int d2 = y >= 2 ? std::abs(cell(x, y) - cell(x, y - 2)) : d1;
            edges += std::max(d1, d2) > 14;
        }
        return y <= 0 ? 1.0 : edges / double(x1 - x0 + 1);
    }

    void grow(int &l, int &r, int &t, int &b) const
    {
        for (int pass = 0; pass < 10; ++pass) {
            const auto before = std::tuple(l, r, t, b);
            while (l >= 1 && columnDensity(l, t, b) <= 0.55)
                --l;
            while (r < m_gridW - 1 && columnDensity(r + 1, t, b) <= 0.55)
                ++r;
            while (t >= 1 && rowDensity(t, l, r) <= 0.55)
                --t;
            while (b < m_gridH - 1 && rowDensity(b + 1, l, r) <= 0.55)
                ++b;
            if (before == std::tuple(l, r, t, b))
                break;
        }
    }

    template <typename Step>
    int strongest(int at, int end, Step step) const
    {
        int found = -1;
        int most = 0;
        for (int i = std::max(0, at - 2 * m_cell) + 1; i < std::min(at + m_cell, end); ++i) {
            if (step(i) > most) {
                most = step(i);
                found = i;
            }
        }
        return found;
    }

    void refine(int &x0, int &x1, int &y0, int &y1) const
    {
        const auto row = [&](int y) {
            int sum = 0;
            for (int x = x0; x < x1; ++x)
                sum += std::abs(full(x, y) - full(x, y - 1));
            return sum;
        };
        const auto column = [&](int x) {
            int sum = 0;
            for (int y = y0; y < y1; ++y)
                sum += std::abs(full(x, y) - full(x - 1, y));
            return sum;
        };
        if (const int top = strongest(y0, m_h, row); y0 > 0 && top >= 0 && top < y1)
            y0 = top;
        if (const int bottom = strongest(y1, m_h, row); y1 < m_h && bottom > y0)
            y1 = bottom;
        if (const int left = strongest(x0, m_w, column); x0 > 0 && left >= 0 && left < x1)
            x0 = left;
        if (const int right = strongest(x1, m_w, column); x1 < m_w && right > x0)
            x1 = right;
    }

    Rects filter(const Rects &list) const
    {
        const double w = m_w / m_ratio;
        const double h = m_h / m_ratio;
        const auto touch = [&](const QRectF &rect) {
            return (rect.left() <= 2) + (rect.top() <= 2) + (rect.right() >= w - 2) + (rect.bottom() >= h - 2);
        };
        const auto area = [](const QRectF &rect) { return rect.width() * rect.height(); };
        Rects kept;
        for (int i = 0; i < list.size() && kept.size() < 5; ++i) {
            const QRectF &entry = list[i];
            if (!kept.isEmpty()) {
                const QRectF prev = kept.last();
                const bool beforeBorder =
                    i + 1 < list.size() && touch(list[i + 1]) > touch(entry) && area(entry) >= 1.15 * area(prev);
                const bool atBorder = touch(entry) >= 2 && touch(entry) > touch(prev);
                if (area(entry) <= area(prev) || !(area(entry) >= 1.4 * area(prev) || beforeBorder || atBorder))
                    continue;
            }
            kept.append(entry);
        }
        if (!kept.isEmpty()) {
            const QRectF last = kept.last();
            if (last.left() > 0.5 || last.top() > 0.5 || last.width() < w - 0.5 || last.height() < h - 0.5)
                kept.append({0, 0, w, h});
        }
        return kept;
    }

    QImage m_image;
    double m_ratio;
    int m_w;
    int m_h;
    int m_cell;
    int m_gridW;
    int m_gridH;
    QImage m_small;
};

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

    void thePictureCountsInLogicalUnits()
    {
        QImage image = picture({1280, 960}, {{QRect(201, 161, 400, 240), Qt::black}});
        image.setDevicePixelRatio(2);
        const EdgeRegionFinder finder(image);
        QCOMPARE(finder.candidatesAt({150, 120}).first(), QRectF(100.5, 80.5, 200, 120));
        QCOMPARE(finder.candidatesAt({150, 120}).last(), QRectF(0, 0, 640, 480));
    }

    void nothingIsFoundWithoutEdges_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QPointF>("point");
        QImage slope(640, 480, QImage::Format_RGB32);
        for (int x = 0; x < slope.width(); ++x) {
            for (int y = 0; y < slope.height(); ++y)
                slope.setPixel(x, y, qRgb(x * 255 / 640, y * 255 / 480, 90));
        }
        QTest::newRow("no picture") << QImage() << QPointF(1, 1);
        QTest::newRow("flat") << picture({640, 480}, {}) << QPointF(320, 240);
        QTest::newRow("gradient") << slope << QPointF(320, 240);
        QTest::newRow("one pixel") << picture({1, 1}, {}) << QPointF(0, 0);
        QTest::newRow("a short line is no box")
            << picture({640, 480}, {{QRect(300, 100, 2, 20), Qt::black}}) << QPointF(200, 240);
        QTest::newRow("too small a box") << picture({640, 480}, {{QRect(300, 100, 12, 12), Qt::black}})
                                         << QPointF(306, 106);
    }

    void nothingIsFoundWithoutEdges()
    {
        QFETCH(QImage, image);
        QFETCH(QPointF, point);
        QCOMPARE(EdgeRegionFinder(image).candidatesAt(point), Rects());
    }

    void pointsOutsideCountAsOnTheBorder()
    {
        const EdgeRegionFinder finder(picture({640, 480}, {{QRect(0, 0, 100, 100), Qt::black}}));
        QCOMPARE(finder.candidatesAt({-1e9, -5}), finder.candidatesAt({0, 0}));
        QCOMPARE(finder.candidatesAt({1e9, 480}), finder.candidatesAt({639, 479}));
        QCOMPARE(finder.candidatesAt({0, 0}).first(), QRectF(0, 0, 100, 100));
    }

    void equalsTheSlowSearch_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("ratio");
        QTest::newRow("small") << QSize(320, 200) << 1.0;
        QTest::newRow("wide, cell 3") << QSize(1921, 301) << 1.5;
        QTest::newRow("high, cell 3") << QSize(250, 1999) << 1.25;
        QTest::newRow("tiny") << QSize(33, 17) << 1.0;
    }

    void equalsTheSlowSearch()
    {
        QFETCH(QSize, size);
        QFETCH(double, ratio);
        QRandomGenerator random(7);
        for (quint32 seed = 0; seed < 6; ++seed) {
            QImage image = crowdedPicture(size, seed);
            image.setDevicePixelRatio(ratio);
            const EdgeRegionFinder finder(image);
            const SlowFinder slow(image);
            for (int i = 0; i < 12; ++i) {
                const QPointF at(random.bounded(size.width() / ratio), random.bounded(size.height() / ratio));
                QCOMPARE(finder.candidatesAt(at), slow.candidatesAt(at));
            }
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, EdgeRegionFinderTest)
#include "test_edge_region_finder.moc"
