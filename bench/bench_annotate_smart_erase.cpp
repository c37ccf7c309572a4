// Smart erase: how long a box takes, where the time goes, and how near the result comes to what was behind the object.
#include "annotate/erase_pictures.h"
#include "annotate/erase_region.h"
#include "annotate/flatten.h"
#include "annotate/shape_document.h"
#include "annotate/smart_erase_engine.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <thread>

using namespace tavrel;

namespace {

/// Rows of short strokes that look like words.
void drawFakeText(QPainter &painter, const QRect &area, int lineHeight, const QColor &color)
{
    QRandomGenerator random(7);
    const int letter = std::max(3, lineHeight / 3);
    for (int y = area.top() + lineHeight / 4; y + letter < area.bottom(); y += lineHeight) {
        for (int x = area.left(); x + 6 * letter < area.right(); x += letter) {
            for (int i = random.bounded(2, 9); i > 0 && x + letter < area.right(); --i, x += letter) {
                painter.fillRect(x, y, std::max(1, letter / 4), letter, color);
                painter.fillRect(x, y + random.bounded(letter), letter - letter / 4, std::max(1, letter / 5), color);
            }
        }
    }
}

/// Those of the tests and some more.
QList<test::Background> allBackgrounds()
{
    QList<test::Background> list = test::backgrounds();
    list.append({QStringLiteral("glow"), [](QImage &image, double) {
                     test::eachPixel(image, [&](int x, int y) {
                         const double r = std::hypot(x - image.width() * 0.4, y - image.height() * 0.5) / image.width();
                         const int v = static_cast<int>(230 - 150 * std::min(r, 1.0));
                         return qRgb(v, v - 20, v - 40);
                     });
                 }});
    list.append({QStringLiteral("text"), [](QImage &image, double scale) {
                     image.fill(Qt::white);
                     QPainter painter(&image);
                     drawFakeText(painter, image.rect().adjusted(10, 10, -10, -10), static_cast<int>(18 * scale),
                                  QColor(50, 55, 60));
                 }});
    list.append({QStringLiteral("table"), [](QImage &image, double scale) {
                     QPainter painter(&image);
                     const int row = static_cast<int>(22 * scale);
                     const int column = static_cast<int>(60 * scale);
                     for (int y = 0; y < image.height(); y += row) {
                         painter.fillRect(0, y, image.width(), row,
                                          y / row % 2 ? QColor(244, 246, 249) : QColor(Qt::white));
                         painter.fillRect(0, y, image.width(), 1, QColor(205, 210, 216));
                     }
                     for (int x = 0; x < image.width(); x += column)
                         painter.fillRect(x, 0, 1, image.height(), QColor(205, 210, 216));
                 }});
    return list;
}

/// A box in the middle of a picture that leaves the widest window around it.
test::Scene sceneFor(const QString &name, const QSize &box)
{
    const QSize size(box.width() + 360, box.height() + 360);
    return test::sceneOf(test::background(name), size, QRect(QPoint(180, 180), box));
}

void solve(benchmark::State &state, const QString &name, EraseSolver solver)
{
    const QSize box(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const test::Scene scene = sceneFor(name, box);
    erase::RegionResult result;
    for (auto _ : state)
        result = erase::eraseRegion(scene.image, {scene.box, solver});
    QImage filled = scene.image;
    result.pasteInto(filled, filled.rect());
    state.counters["error"] = test::meanError(filled, scene.truth, scene.box);
    state.counters["filled"] = result.info.maskPixels;
    state.counters["texture"] = result.info.path == erase::Path::Texture;
}

void sizes(benchmark::internal::Benchmark *bench)
{
    bench->ArgNames({"w", "h"})->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();
    bench->Args({600, 400})->Args({1600, 900});
}
BENCHMARK_CAPTURE(solve, gradient_auto, QStringLiteral("gradient"), EraseSolver::Auto)->Apply(sizes);
BENCHMARK_CAPTURE(solve, gradient_whole, QStringLiteral("gradient"), EraseSolver::WholeBox)->Apply(sizes);
BENCHMARK_CAPTURE(solve, grain_auto, QStringLiteral("grain"), EraseSolver::Auto)->Apply(sizes);
BENCHMARK_CAPTURE(solve, grain_whole, QStringLiteral("grain"), EraseSolver::WholeBox)->Apply(sizes);
BENCHMARK_CAPTURE(solve, photo_texture, QStringLiteral("photo"), EraseSolver::Texture)->Apply(sizes);
BENCHMARK_CAPTURE(solve, tiles_whole, QStringLiteral("tiles"), EraseSolver::WholeBox)->Apply(sizes);

/// What the thread of the windows pays while one of ten boxes goes to and fro in a 4K picture: all are solved already.
void moveSolvedBox(benchmark::State &state)
{
    QImage image(3840, 2160, QImage::Format_RGB32);
    test::background(QStringLiteral("gradient")).draw(image, 1);
    QList<EraseSpec> specs;
    for (int i = 0; i < 10; ++i)
        specs.append({QRect(100 + 700 * (i % 5), 100 + 900 * (i / 5), 600, 400), EraseSolver::WholeBox});
    QList<EraseSpec> moved = specs;
    moved[6].first.translate(20, 10);
    SmartEraseEngine engine(image);
    engine.solve(moved);
    engine.solve(specs);
    bool isMoved = false;
    for (auto _ : state) {
        isMoved = !isMoved;
        engine.setSpecs(isMoved ? moved : specs);
    }
    if (engine.solveCount() != 11)
        state.SkipWithError("solved again");
}
BENCHMARK(moveSolvedBox)->Unit(benchmark::kMillisecond);

/// The same for a new box of that size: from the call until it returns, and for taking the result in.
void beginBox(benchmark::State &state)
{
    QImage image(3840, 2160, QImage::Format_RGB32);
    image.fill(QColor(230, 235, 240));
    for (auto _ : state) {
        state.PauseTiming();
        auto engine = std::make_unique<SmartEraseEngine>(image);
        state.ResumeTiming();
        engine->setSpecs({{QRect(100, 100, 600, 400), EraseSolver::WholeBox}});
        state.PauseTiming();
        engine.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(beginBox)->Unit(benchmark::kMicrosecond)->Iterations(50);

/// Taking the engine away while a large texture is being filled.
void endWhileSolving(benchmark::State &state)
{
    const test::Scene scene = sceneFor(QStringLiteral("grain"), {1600, 900});
    for (auto _ : state) {
        state.PauseTiming();
        auto engine = std::make_unique<SmartEraseEngine>(scene.image);
        engine->setSpecs({{scene.box, EraseSolver::WholeBox}});
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        state.ResumeTiming();
        engine.reset();
    }
}
BENCHMARK(endWhileSolving)->Unit(benchmark::kMicrosecond)->Iterations(10);

/// What the thread of the windows pays for a result right after a box of 3000 x 1800 was drawn: the request made, and
/// the engine and the document gone. Before, it waited for the solver.
void handOverWhileSolving(benchmark::State &state)
{
    QImage image(3840, 2160, QImage::Format_RGB32);
    test::background(QStringLiteral("grain")).draw(image, 1);
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<ShapeDocument>();
        document->setTool(ToolType::SmartErase);
        document->setEraseWholeBox(true);
        document->press(100, 100, 1);
        document->move(100, 100, 3100, 1900, false);
        document->release();
        auto engine = std::make_unique<SmartEraseEngine>(image);
        engine->setSpecs(document->eraseRegions(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        state.ResumeTiming();
        const FlattenRequest request = flattenRequest(image, QRectF(image.rect()), *document, engine.get());
        engine.reset();
        document.reset();
        state.PauseTiming();
        benchmark::DoNotOptimize(request.shapes.constData());
        state.ResumeTiming();
    }
}
BENCHMARK(handOverWhileSolving)->Unit(benchmark::kMicrosecond)->Iterations(10);

/// The work on another thread once everything is solved: a 4K picture with that box.
void flattenSolved(benchmark::State &state)
{
    QImage image(3840, 2160, QImage::Format_RGB32);
    test::background(QStringLiteral("gradient")).draw(image, 1);
    ShapeDocument document;
    document.setTool(ToolType::SmartErase);
    document.press(100, 100, 1);
    document.move(100, 100, 3100, 1900, false);
    document.release();
    SmartEraseEngine engine(image);
    engine.solve(document.eraseRegions(1));
    const FlattenRequest request = flattenRequest(image, QRectF(image.rect()), document, &engine);
    for (auto _ : state)
        benchmark::DoNotOptimize(flatten(request).constBits());
}
BENCHMARK(flattenSolved)->Unit(benchmark::kMillisecond);

/// Ten kinds of screens with an object over a known background: mean error of a channel inside the box, before and
/// after.
void quality(benchmark::State &state, const test::Background &kind, EraseSolver solver)
{
    const test::Scene scene = test::sceneOf(kind, {480, 360}, {140, 110, 200, 140});
    erase::RegionResult result;
    for (auto _ : state)
        result = erase::eraseRegion(scene.image, {scene.box, solver});
    QImage filled = scene.image;
    result.pasteInto(filled, filled.rect());
    state.counters["before"] = test::meanError(scene.image, scene.truth, scene.box);
    state.counters["error"] = test::meanError(filled, scene.truth, scene.box);
    state.counters["texture"] = result.info.path == erase::Path::Texture;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication app(argc, argv);
    for (const test::Background &kind : allBackgrounds()) {
        const auto add = [&kind](const char *solver, EraseSolver value) {
            benchmark::RegisterBenchmark(("quality/" + kind.name.toStdString() + '/' + solver).c_str(),
                                         [kind, value](benchmark::State &state) { quality(state, kind, value); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(1);
        };
        add("auto", EraseSolver::Auto);
        add("texture", EraseSolver::Texture);
        add("whole", EraseSolver::WholeBox);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
