// The parts of smart erase on drawn pictures whose truth is known.
#include "annotate/erase_color_mixture.h"
#include "annotate/erase_harmonic.h"
#include "annotate/erase_max_flow.h"
#include "annotate/erase_patch_fill.h"
#include "annotate/erase_pictures.h"
#include "annotate/erase_region.h"
#include "support/test_main.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <atomic>
#include <thread>

using namespace tavrel;
using namespace tavrel::erase;

namespace {

PixelBuffer paintedBuffer(const QSize &size, const std::function<Rgb(int, int)> &color)
{
    PixelBuffer buffer(size.width(), size.height());
    for (int y = 0; y < buffer.height; ++y) {
        for (int x = 0; x < buffer.width; ++x)
            buffer.set(x, y, color(x, y));
    }
    return buffer;
}

Mask maskOf(const PixelBuffer &buffer, const QRect &area)
{
    Mask mask(buffer.width, buffer.height);
    mask.fill(area);
    return mask;
}

/// The largest difference inside an area, or outside of it.
int worst(const PixelBuffer &a, const PixelBuffer &b, const QRect &area, bool inside = true)
{
    int most = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            if (area.contains(x, y) == inside)
                most = std::max(most, distance(a.at(x, y), b.at(x, y)));
        }
    }
    return most;
}

PixelBuffer withHole(PixelBuffer buffer, const QRect &hole)
{
    for (int y = hole.top(); y <= hole.bottom(); ++y) {
        for (int x = hole.left(); x <= hole.right(); ++x)
            buffer.set(x, y, {255, 0, 255});
    }
    return buffer;
}

Rgb ramp(int x, int y)
{
    return {40 + x / 2, 200 - y / 2, 90 + (x + y) / 4};
}

Rgb checks(int x, int y)
{
    return (x / 6 + y / 6) % 2 ? Rgb{220, 220, 220} : Rgb{140, 150, 160};
}

double error(const QString &background, EraseSolver solver, RegionInfo *info = nullptr)
{
    const test::Scene scene = test::sceneOf(test::background(background), {300, 240}, {90, 70, 110, 90});
    const RegionResult result = eraseRegion(scene.image, {scene.box, solver});
    QImage filled = scene.image;
    result.pasteInto(filled, filled.rect());
    if (info)
        *info = result.info;
    return test::meanError(filled, scene.truth, scene.box);
}

} // namespace

class EraseSolversTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dilationIsASquareClampedAtTheEdges()
    {
        QRandomGenerator random(1);
        for (const int radius : {0, 1, 2, 5, 40}) {
            Mask mask(23, 17);
            for (int i = 0; i < 6; ++i)
                mask.bytes[static_cast<std::size_t>(random.bounded(23 * 17))] = 255;
            const Mask before = mask;
            dilate(mask, radius);
            for (int y = 0; y < mask.height; ++y) {
                for (int x = 0; x < mask.width; ++x) {
                    Mask around = before;
                    around.keepOnly(QRect(x - radius, y - radius, 2 * radius + 1, 2 * radius + 1));
                    QCOMPARE(mask.has(x, y), around.count() > 0);
                }
            }
        }
    }

    void theFlowIsTheCut_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 12; ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void theFlowIsTheCut()
    {
        // Small enough to try every cut.
        QFETCH(quint32, seed);
        constexpr int kNodes = 9;
        struct Edge
        {
            int from, to;
            float forth, back;
        };
        QRandomGenerator random(seed);
        std::vector<Edge> edges;
        MaxFlow graph(kNodes);
        for (int i = 0; i < 22; ++i) {
            const Edge edge{random.bounded(kNodes), random.bounded(kNodes), static_cast<float>(random.bounded(20)),
                            static_cast<float>(random.bounded(8))};
            if (edge.from == edge.to)
                continue;
            edges.push_back(edge);
            graph.addEdge(edge.from, edge.to, edge.forth, edge.back);
        }
        const auto cutThrough = [&edges](const auto &isOnSourceSide) {
            double sum = 0;
            for (const Edge &edge : edges) {
                if (isOnSourceSide(edge.from) && !isOnSourceSide(edge.to))
                    sum += static_cast<double>(edge.forth);
                if (isOnSourceSide(edge.to) && !isOnSourceSide(edge.from))
                    sum += static_cast<double>(edge.back);
            }
            return sum;
        };
        double least = 1e9;
        for (int set = 0; set < 1 << kNodes; ++set) {
            if ((set & 1) && !(set & 2))
                least = std::min(least, cutThrough([set](int node) { return ((set >> node) & 1) != 0; }));
        }
        QCOMPARE(graph.run(0, 1), least);
        const auto side = graph.sourceSide(0);
        QCOMPARE(cutThrough([&side](int node) { return side[static_cast<std::size_t>(node)] != 0; }), least);
    }

    void aMixtureKnowsItsColours()
    {
        std::vector<Color> samples;
        QRandomGenerator random(5);
        for (int i = 0; i < 200; ++i) {
            const auto jitter = static_cast<float>(random.bounded(7));
            samples.push_back(i % 2 ? Color{200 + jitter, 30 + jitter, 30} : Color{20, 40 + jitter, 180 + jitter});
        }
        const ColorMixture mixture = ColorMixture::fit(samples);
        QCOMPARE(mixture.componentCount(), 5);
        const double near =
            std::max(mixture.negativeLogLikelihood({203, 33, 30}), mixture.negativeLogLikelihood({20, 43, 183}));
        QVERIFY(mixture.negativeLogLikelihood({110, 35, 105}) > near + 20);

        QCOMPARE(ColorMixture::fit({}).componentCount(), 1);
        // One component of known shape: variance held at 9, so the density is that of the normal distribution.
        const ColorMixture one = ColorMixture::fit(std::vector<Color>(10, Color{10, 20, 30}));
        const double peak = 1.5 * std::log(2 * 3.14159265358979 * 9);
        QVERIFY(std::abs(one.negativeLogLikelihood({10, 20, 30}) - peak) < 1e-6);
        QVERIFY(std::abs(one.negativeLogLikelihood({16, 20, 30}) - (peak + 2)) < 1e-6);
    }

    void aRampIsContinued()
    {
        for (const auto &[size, hole] : QList<QPair<QSize, QRect>>{{{200, 160}, {50, 40, 100, 80}},
                                                                   {{131, 77}, {33, 21, 61, 29}},
                                                                   {{200, 20}, {20, 6, 160, 6}},
                                                                   {{9, 9}, {4, 4, 1, 1}},
                                                                   {{340, 340}, {20, 20, 300, 300}}}) {
            const PixelBuffer truth = paintedBuffer(size, ramp);
            PixelBuffer buffer = withHole(truth, hole);
            harmonicFill(buffer, maskOf(buffer, hole), 8);
            QCOMPARE(worst(buffer, truth, hole, false), 0);
            QVERIFY2(worst(buffer, truth, hole) <= 4, qPrintable(QString::number(worst(buffer, truth, hole))));
        }
    }

    void holesAtTheEdge()
    {
        constexpr Rgb known{30, 60, 90};
        for (const auto &[size, hole] : QList<QPair<QSize, QRect>>{{{60, 50}, {0, 0, 25, 25}},
                                                                   {{60, 50}, {30, 0, 30, 50}},
                                                                   {{60, 50}, {1, 0, 59, 50}},
                                                                   {{60, 50}, {0, 0, 60, 50}}, // nothing is known
                                                                   {{1, 1}, {0, 0, 1, 1}},
                                                                   {{2, 1}, {1, 0, 1, 1}},
                                                                   {{70, 1}, {20, 0, 30, 1}}}) {
            const PixelBuffer truth = paintedBuffer(size, [&](int, int) { return known; });
            const PixelBuffer before = withHole(truth, hole);
            PixelBuffer harmonic = before;
            harmonicFill(harmonic, maskOf(before, hole), 8);
            PixelBuffer patched = before;
            patchFill(patched, maskOf(before, hole));
            const bool isAnyKnown = hole.size() != size;
            for (const PixelBuffer &filled : {harmonic, patched})
                QCOMPARE(worst(filled, isAnyKnown ? truth : before, {}, false), 0);
        }
    }

    void aTextureIsContinued()
    {
        const PixelBuffer truth = paintedBuffer({150, 130}, checks);
        const QRect hole(50, 40, 45, 40);
        PixelBuffer buffer = withHole(truth, hole);
        PixelBuffer again = buffer;
        patchFill(buffer, maskOf(buffer, hole));
        QCOMPARE(worst(buffer, truth, hole, false), 0);
        QVERIFY2(worst(buffer, truth, hole) <= 2, qPrintable(QString::number(worst(buffer, truth, hole))));
        patchFill(again, maskOf(again, hole));
        QCOMPARE(again.bytes, buffer.bytes);
    }

    void aLargeTextureIsTheSameEveryTime()
    {
        // Large enough to be cut into bands that several threads work on.
        QImage image(420, 400, QImage::Format_RGB32);
        test::background(QStringLiteral("grain")).draw(image, 1);
        const PixelBuffer before = pixelsOf(image, image.rect());
        PixelBuffer first = before;
        PixelBuffer second = before;
        patchFill(first, maskOf(first, {60, 60, 280, 280}));
        patchFill(second, maskOf(second, {60, 60, 280, 280}));
        QVERIFY(first.bytes != before.bytes);
        QCOMPARE(first.bytes, second.bytes);
    }

    void theMaskIsTheObject_data()
    {
        QTest::addColumn<QRect>("box");
        QTest::addColumn<QRect>("object");
        QTest::addColumn<QRect>("mask");
        QTest::newRow("in the middle") << QRect(60, 50, 60, 50) << QRect(80, 65, 20, 12) << QRect(78, 63, 24, 16);
        QTest::newRow("nothing") << QRect(60, 50, 60, 50) << QRect() << QRect(54, 44, 72, 62);
        QTest::newRow("too much") << QRect(60, 50, 60, 50) << QRect(65, 55, 50, 35) << QRect(54, 44, 72, 62);
        QTest::newRow("over the edge") << QRect(60, 50, 60, 50) << QRect(100, 65, 40, 12) << QRect(98, 63, 42, 16);
        QTest::newRow("at the picture's corner")
            << QRect(0, 0, 60, 50) << QRect(20, 15, 20, 12) << QRect(18, 13, 24, 16);
        QTest::newRow("whole picture") << QRect(0, 0, 200, 160) << QRect(80, 65, 20, 12) << QRect(0, 0, 200, 160);
    }

    void theMaskIsTheObject()
    {
        QFETCH(QRect, box);
        QFETCH(QRect, object);
        QFETCH(QRect, mask);
        const PixelBuffer buffer = paintedBuffer({200, 160}, [&](int x, int y) {
            return object.contains(x, y) ? Rgb{250, 30, 30} : ramp(x / 8, y / 8);
        });
        RegionMaskStats stats;
        PixelBuffer cleaned;
        const Mask found = buildRegionMask(buffer, box, &stats, &cleaned, nullptr);
        QCOMPARE(found.bounds(), mask);
        QCOMPARE(stats.maskPixels, found.count());
        QCOMPARE(stats.threshold, 12);
        QVERIFY(stats.noise < 8);
        for (int y = 0; y < buffer.height; ++y) {
            for (int x = 0; x < buffer.width; ++x)
                QVERIFY(!found.has(x, y) || distance(cleaned.at(x, y), buffer.at(x, y)) == 0);
        }
        // The rows of the object lie between the dilated ones.
        if (!stats.fellBack)
            QCOMPARE(stats.subjectPixels, (object & box).width() * (object & box).height());
    }

    void aBoxOutsideHasNoMask()
    {
        for (const auto &[size, box] : QList<QPair<QSize, QRect>>{
                 {{40, 30}, {50, 5, 10, 10}}, {{40, 30}, {5, 5, 0, 10}}, {{0, 0}, {0, 0, 10, 10}}}) {
            const PixelBuffer buffer(size.width(), size.height());
            RegionMaskStats stats;
            QCOMPARE(buildRegionMask(buffer, box, &stats, nullptr, nullptr).count(), 0);
            SubjectStats subject;
            QCOMPARE(segmentSubject(buffer, box, &subject).count(), 0);
            QVERIFY(!subject.ok);
        }
    }

    void aSubjectIsCutOut_data()
    {
        QTest::addColumn<int>("grow");
        QTest::newRow("a cell is a pixel") << 1;
        QTest::newRow("a cell is three pixels") << 3;
    }

    void aSubjectIsCutOut()
    {
        QFETCH(int, grow);
        const QRect box(40 * grow, 30 * grow, 100 * grow, 80 * grow);
        const QPoint middle = box.center();
        QRandomGenerator random(9);
        const PixelBuffer buffer = paintedBuffer({180 * grow, 140 * grow}, [&](int x, int y) {
            const int v = 90 + random.bounded(70);
            const double r = std::hypot(x - middle.x(), y - middle.y());
            return r < 22 * grow ? Rgb{220, 40, 60} : Rgb{v, v + 5, v - 10};
        });
        SubjectStats stats;
        const Mask mask = segmentSubject(buffer, box, &stats);
        QVERIFY(stats.ok);
        QCOMPARE(stats.step, grow == 1 ? 1 : 3);
        int missed = 0;
        for (int y = 0; y < buffer.height; ++y) {
            for (int x = 0; x < buffer.width; ++x) {
                const bool isObject = std::hypot(x - middle.x(), y - middle.y()) < 21 * grow;
                missed += isObject && !mask.has(x, y) ? 1 : 0;
                QVERIFY(box.contains(x, y) || !mask.has(x, y));
            }
        }
        QCOMPARE(missed, 0);
        const double object = 3.1416 * 22 * 22 / (100.0 * 80);
        QVERIFY2(stats.fraction < 1.3 * object, qPrintable(QString::number(stats.fraction)));
    }

    void tooSmallForASubject()
    {
        const PixelBuffer buffer = paintedBuffer({60, 60}, checks);
        SubjectStats stats;
        QCOMPARE(segmentSubject(buffer, {10, 10, 7, 30}, &stats).count(), 7 * 30);
        QVERIFY(!stats.ok);
        QCOMPARE(segmentSubject(buffer, {0, 0, 60, 60}, &stats).count(), 60 * 60); // no ring
        QVERIFY(!stats.ok);
    }

    void whatLiesBehindComesBack_data()
    {
        QTest::addColumn<QString>("background");
        QTest::addColumn<EraseSolver>("solver");
        QTest::addColumn<Path>("path");
        QTest::addColumn<double>("most");
        const auto row = [](const char *background, EraseSolver solver, Path path, double most) {
            QTest::addRow("%s, %s", background, qPrintable(enumName(solver)))
                << QString::fromLatin1(background) << solver << path << most;
        };
        row("flat", EraseSolver::Auto, Path::Smooth, 0.0);
        row("flat", EraseSolver::WholeBox, Path::Smooth, 0.0);
        row("gradient", EraseSolver::Auto, Path::Smooth, 0.2);
        row("gradient", EraseSolver::WholeBox, Path::Smooth, 1.0);
        row("panels", EraseSolver::Auto, Path::Smooth, 3.0);
        row("tiles", EraseSolver::Texture, Path::Texture, 0.5);
        row("weave", EraseSolver::Auto, Path::Texture, 3.0);
        row("grain", EraseSolver::Auto, Path::Texture, 6.0);
        row("grain", EraseSolver::Smooth, Path::Smooth, 20.0);
        row("photo", EraseSolver::Texture, Path::Texture, 4.0);
    }

    void whatLiesBehindComesBack()
    {
        QFETCH(QString, background);
        QFETCH(EraseSolver, solver);
        QFETCH(Path, path);
        QFETCH(double, most);
        RegionInfo info;
        const double found = error(background, solver, &info);
        QCOMPARE(info.path, path);
        QVERIFY2(found <= most, qPrintable(QString::number(found)));
    }

    void onlyPixelsOfTheBoxChange()
    {
        // The object reaches out of the box.
        QImage image(200, 160, QImage::Format_RGB32);
        image.fill(QColor(230, 235, 240));
        for (int y = 70; y < 82; ++y) {
            for (int x = 90; x < 150; ++x)
                image.setPixelColor(x, y, QColor(200, 20, 20));
        }
        const QRect box(60, 50, 60, 50);
        const RegionResult result = eraseRegion(image, {box, EraseSolver::Auto});
        QImage filled = image;
        result.pasteInto(filled, filled.rect());
        for (int y = 0; y < 160; ++y) {
            for (int x = 0; x < 200; ++x)
                QCOMPARE(filled.pixel(x, y), box.contains(x, y) ? qRgb(230, 235, 240) : image.pixel(x, y));
        }
    }

    void boxesThatLeaveNothingToFillFrom()
    {
        for (const auto &[size, box] : QList<QPair<QSize, QRect>>{{{90, 70}, {0, 0, 90, 70}},
                                                                  {{90, 70}, {-50, -50, 400, 400}},
                                                                  {{90, 70}, {200, 200, 20, 20}},
                                                                  {{90, 70}, {40, 30, 1, 1}},
                                                                  {{1, 1}, {0, 0, 1, 1}},
                                                                  {{1, 1}, {-3, -3, 9, 9}},
                                                                  {{1, 200}, {0, 20, 1, 40}}}) {
            QImage image(size, QImage::Format_RGB32);
            image.fill(QColor(90, 120, 150));
            for (const EraseSolver solver :
                 {EraseSolver::Auto, EraseSolver::Smooth, EraseSolver::Texture, EraseSolver::WholeBox}) {
                const RegionResult result = eraseRegion(image, {box, solver});
                QVERIFY(result.window.isEmpty() || image.rect().contains(result.window));
                QImage filled = image;
                result.pasteInto(filled, filled.rect());
                QCOMPARE(filled, image);
            }
        }
    }

    void aCancelledSolverComesBack()
    {
        // Sweeps for hours unless it is told not to.
        PixelBuffer buffer = paintedBuffer({300, 300}, ramp);
        CancelFlag cancel;
        std::thread sweeping([&] { harmonicFill(buffer, maskOf(buffer, {20, 20, 260, 260}), 1'000'000'000, cancel); });
        cancel.cancel();
        sweeping.join();
        QVERIFY(cancel.isSet());
    }
};

TAVREL_TEST_MAIN(QCoreApplication, EraseSolversTest)
#include "test_erase_solvers.moc"
