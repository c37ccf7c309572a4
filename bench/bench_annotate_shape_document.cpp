// What a user waits for while drawing: the commit at the end of a stroke, undo, picking, the hover glow, and the
// opening of a stored edit. Budgets with 100,000 freehand points: commit 30 ms, undo 80 ms, a pick 1 ms.
#include "annotate/outline_glow.h"
#include "annotate/shape_document.h"
#include "annotate/test_shapes.h"
#include "annotate/vector_shapes.h"

#include <QGuiApplication>
#include <QImage>
#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <cmath>

using namespace tavrel;

namespace {

constexpr int kAllPoints = 100'000;

/// A scribble: it fills a 4K picture and comes near every place again and again.
QList<QPointF> scribble(int count, double phase)
{
    QList<QPointF> points;
    points.reserve(count);
    for (int i = 0; i < count; ++i) {
        const double t = phase + i * 0.01;
        points.append({1920 + 1800 * std::sin(t * 1.31) * std::cos(t * 0.017), 1080 + 1000 * std::sin(t)});
    }
    return points;
}

std::shared_ptr<PathShape> makeStroke(int count, double phase)
{
    auto shape = std::make_shared<PathShape>(ToolType::Pen);
    shape->takePoints(scribble(count, phase));
    return shape;
}

/// 100,000 points parted into `strokes`, committed.
ShapeDocument documentWith(int strokes)
{
    ShapeDocument document(test::shapeFactory());
    for (int i = 0; i < strokes; ++i)
        document.append(makeStroke(kAllPoints / strokes, i));
    document.commit();
    return document;
}

BaseShape *addBox(ShapeDocument &document)
{
    auto shape = std::make_shared<test::BoxShape>(ToolType::Rect);
    shape->setBox(QRectF(10, 10, 50, 50));
    BaseShape *raw = shape.get();
    document.append(std::move(shape));
    return raw;
}

/// The commit of one moved rectangle beside the points.
void commitBesideStrokes(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    document.select(addBox(document));
    for (auto _ : state) {
        document.selected()->translate(1, 0);
        document.commit();
    }
}

/// The commit at the end of the one stroke that has all the points.
void commitOfTheStrokeItself(benchmark::State &state)
{
    ShapeDocument document = documentWith(1);
    document.select(document.shapes().first().get());
    for (auto _ : state) {
        document.selected()->translate(1, 0);
        document.commit();
    }
}

void commitWithoutChange(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    for (auto _ : state)
        document.commit();
}

void undoAndRedoBesideStrokes(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    addBox(document);
    document.commit();
    for (auto _ : state) {
        document.undo();
        document.redo();
    }
}

/// One undo of a move of the stroke that has all the points; it is read from its text.
void undoOfTheStrokeItself(benchmark::State &state)
{
    ShapeDocument document = documentWith(1);
    document.select(document.shapes().first().get());
    document.selected()->translate(1, 0);
    document.commit();
    bool back = false;
    for (auto _ : state) {
        back = !back;
        back ? document.undo() : document.redo();
    }
}

void pickNearStrokes(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    document.setHitSlop(8);
    double x = 0;
    for (auto _ : state) {
        x = std::fmod(x + 37.7, 3840);
        benchmark::DoNotOptimize(document.pickAt(x, std::fmod(x * 3.3, 2160)));
    }
}

void pressOnStrokes(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    double x = 0;
    for (auto _ : state) {
        x = std::fmod(x + 37.7, 3840);
        document.press(x, std::fmod(x * 3.3, 2160), 6);
        document.release();
    }
}

void erasePassBesideStrokes(benchmark::State &state)
{
    ShapeDocument document = documentWith(static_cast<int>(state.range(0)));
    document.setTool(ToolType::Eraser);
    document.setEraserRadius(12);
    for (auto _ : state) {
        document.press(5000, 5000, 6);
        document.release();
    }
}

/// What a host with an undo list of its own pays for a state of 1,000 shapes, in the middle of its undo states.
ShapeDocument thousandBoxes()
{
    ShapeDocument document(test::shapeFactory());
    for (int i = 0; i < 1000; ++i) {
        addBox(document)->translate(i, i);
        if (i >= 970)
            document.commit();
    }
    return document;
}

void stateTaken(benchmark::State &state)
{
    const ShapeDocument document = thousandBoxes();
    for (auto _ : state)
        benchmark::DoNotOptimize(document.state().shapes.constData());
}

/// Two states that differ in one shape.
void statePutBack(benchmark::State &state)
{
    ShapeDocument document = thousandBoxes();
    const ShapeDocument::State first = document.state();
    document.select(document.shapes().at(500).get());
    document.setThickness(9);
    document.clearSelection();
    const ShapeDocument::State second = document.state();
    bool isFirst = false;
    for (auto _ : state) {
        isFirst = !isFirst;
        document.restore(isFirst ? first : second);
    }
}

/// The same by way of text.
void stateTakenAndPutBackAsText(benchmark::State &state)
{
    ShapeDocument document = thousandBoxes();
    for (auto _ : state)
        document.loadState(document.shapesJson(), document.countersJson(), document.undoStack(), document.undoIndex());
}

/// 30 states of 50 strokes of 200 points each, as the history keeps them.
void loadOfStoredEdit(benchmark::State &state)
{
    ShapeDocument source(test::shapeFactory());
    for (int i = 0; i < 50; ++i)
        source.append(makeStroke(200, i));
    for (int i = 0; i < 30; ++i) {
        addBox(source);
        source.commit();
    }
    const QString shapes = source.shapesJson();
    const QString counters = source.countersJson();
    const QStringList stack = source.undoStack();
    ShapeDocument document(test::shapeFactory());
    for (auto _ : state)
        document.loadState(shapes, counters, stack, source.undoIndex());
}

void glowMade(benchmark::State &state)
{
    test::BoxShape shape(ToolType::Rect);
    const double side = static_cast<double>(state.range(0));
    shape.setBox(QRectF(0, 0, side, side));
    for (auto _ : state)
        benchmark::DoNotOptimize(makeOutlineGlow(shape, {}, 1.0).image.constBits());
}

void glowMadeOfOutline(benchmark::State &state)
{
    RectShape shape;
    const double side = static_cast<double>(state.range(0));
    shape.setBox(QRectF(0, 0, side, side));
    for (auto _ : state)
        benchmark::DoNotOptimize(makeOutlineGlow(shape, {}, 1.0).image.constBits());
}

void glowPaintedAgain(benchmark::State &state)
{
    ShapeDocument document(test::shapeFactory());
    BaseShape *shape = addBox(document);
    const double side = static_cast<double>(state.range(0));
    static_cast<test::BoxShape *>(shape)->setBox(QRectF(20, 20, side, side));
    document.setHovered(shape);
    QImage image(1400, 1400, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    document.paint(painter, {});
    for (auto _ : state)
        document.paint(painter, {});
}

BENCHMARK(commitBesideStrokes)->Name("commit/100000_points/strokes")->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(commitOfTheStrokeItself)->Name("commit_of_moved_stroke/100000_points")->Unit(benchmark::kMillisecond);
BENCHMARK(commitWithoutChange)->Name("commit_unchanged/100000_points/strokes")->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(undoAndRedoBesideStrokes)
    ->Name("undo_and_redo/100000_points/strokes")
    ->Arg(1)
    ->Arg(100)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(undoOfTheStrokeItself)->Name("undo_of_moved_stroke/100000_points")->Unit(benchmark::kMillisecond);
BENCHMARK(pickNearStrokes)
    ->Name("pick_with_slop/100000_points/strokes")
    ->Arg(1)
    ->Arg(100)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(pressOnStrokes)->Name("press/100000_points/strokes")->Arg(1)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(erasePassBesideStrokes)
    ->Name("erase_at/100000_points/strokes")
    ->Arg(1)
    ->Arg(100)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(loadOfStoredEdit)->Name("load/30_states_of_50_strokes_of_200_points")->Unit(benchmark::kMillisecond);
BENCHMARK(stateTaken)->Name("state_taken/1000_shapes")->Unit(benchmark::kMicrosecond);
BENCHMARK(statePutBack)->Name("state_put_back/1_of_1000_shapes")->Unit(benchmark::kMicrosecond);
BENCHMARK(stateTakenAndPutBackAsText)->Name("state_as_text/1000_shapes")->Unit(benchmark::kMicrosecond);
BENCHMARK(glowMade)->Name("glow_made/side")->Arg(100)->Arg(400)->Arg(1200)->Unit(benchmark::kMillisecond);
BENCHMARK(glowMadeOfOutline)->Name("glow_of_outline_made/side")->Arg(400)->Arg(1200)->Unit(benchmark::kMillisecond);
BENCHMARK(glowPaintedAgain)->Name("glow_painted_again/side")->Arg(1200)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
