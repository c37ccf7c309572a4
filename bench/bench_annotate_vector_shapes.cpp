// What drawing costs: a growing and a standing freehand stroke, a shape dragged among others, the eraser.
#include "annotate/path_shape.h"
#include "annotate/shape_document.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

using namespace tavrel;

namespace {

constexpr QSize kPicture(3840, 2160);

/// A hand that wanders over the picture in steps of some pixels.
QList<QPointF> wander(int count, double step, const QPointF &from = {1900, 1000})
{
    QList<QPointF> points{from};
    double angle = 0;
    while (points.size() < count) {
        angle += 0.05 * std::sin(static_cast<double>(points.size()) * 0.013) + 0.03;
        points.append(points.last() + QPointF(std::cos(angle), std::sin(angle)) * step);
    }
    return points;
}

QImage picture()
{
    QImage image(kPicture, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    return image;
}

void paint(QImage &image, const ShapeDocument &document, const QRectF &exposed)
{
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (!exposed.isNull())
        painter.setClipRect(exposed);
    ShapeRenderContext context;
    if (!exposed.isNull())
        context.exposed = {exposed};
    document.paint(painter, context);
}

std::shared_ptr<PathShape> strokeOf(ToolType type, QList<QPointF> points)
{
    auto stroke = std::make_shared<PathShape>(type);
    stroke->takeAttributes({});
    stroke->takePoints(std::move(points));
    return stroke;
}

/// One more point on a stroke that has so many already: the document's work and the paint of what changed.
void growStroke(benchmark::State &state, ToolType tool)
{
    const auto before = static_cast<int>(state.range(0));
    ShapeDocument document;
    document.setTool(tool);
    document.setThickness(tool == ToolType::Marker ? 20 : 4);
    const QList<QPointF> points = wander(before + 20'000, 4);
    QImage image = picture();
    document.press(points[0].x(), points[0].y(), 15);
    qsizetype next = 1;
    const auto add = [&] {
        document.move(points[0].x(), points[0].y(), points[next].x(), points[next].y(), false);
        ++next;
        QRectF exposed;
        for (const QRectF &damage : document.takeDamage())
            exposed |= damage;
        paint(image, document, exposed);
    };
    while (next < before)
        add();
    for (auto _ : state) {
        if (next == points.size()) {
            state.SkipWithError("ran out of points");
            break;
        }
        add();
    }
}
BENCHMARK_CAPTURE(growStroke, pen, ToolType::Pen)
    ->ArgName("points")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(5000)
    ->Iterations(2000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(growStroke, marker, ToolType::Marker)
    ->ArgName("points")
    ->Arg(100)
    ->Arg(5000)
    ->Iterations(2000)
    ->Unit(benchmark::kMicrosecond);

void repaintStroke(benchmark::State &state, ToolType tool, double step)
{
    ShapeDocument document;
    document.append(strokeOf(tool, wander(static_cast<int>(state.range(0)), step)));
    QImage image = picture();
    paint(image, document, {});
    for (auto _ : state)
        paint(image, document, {});
}
BENCHMARK_CAPTURE(repaintStroke, pen_steps_of_2, ToolType::Pen, 2)
    ->ArgName("points")
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaintStroke, pen_steps_of_8, ToolType::Pen, 8)
    ->ArgName("points")
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaintStroke, marker_steps_of_2, ToolType::Marker, 2)
    ->ArgName("points")
    ->Arg(5000)
    ->Unit(benchmark::kMillisecond);

/// The first paint, which draws every piece of the curve once.
void paintStrokeFirst(benchmark::State &state)
{
    QImage image = picture();
    const QList<QPointF> points = wander(static_cast<int>(state.range(0)), 4);
    for (auto _ : state) {
        state.PauseTiming();
        ShapeDocument document;
        document.append(strokeOf(ToolType::Pen, points));
        state.ResumeTiming();
        paint(image, document, {});
    }
}
BENCHMARK(paintStrokeFirst)->ArgName("points")->Arg(5000)->Unit(benchmark::kMillisecond);

/// One move of the eraser inside the boxes of as many strokes as possible without meeting any, so that every one of
/// them is looked at closely.
void moveEraser(benchmark::State &state)
{
    ShapeDocument document;
    for (int i = 0; i < state.range(0); ++i)
        document.append(strokeOf(ToolType::Pen, wander(2000, 3, {1800.0 + i, 1000})));
    document.setTool(ToolType::Eraser);
    document.setEraserRadius(2);
    qsizetype most = 0;
    QPointF place;
    for (int y = 400; y < 1700; y += 7) {
        for (int x = 1400; x < 2400; x += 7) {
            const auto &shapes = document.shapes();
            const auto boxes = std::count_if(shapes.begin(), shapes.end(),
                                             [&](const auto &shape) { return shape->bounds()->contains(x, y); });
            const bool isFree = std::none_of(shapes.begin(), shapes.end(), [&](const auto &shape) {
                return shape->hitTest(x, y) || shape->hitTest(x + 2, y) || shape->hitTest(x - 2, y) ||
                       shape->hitTest(x, y + 2) || shape->hitTest(x, y - 2);
            });
            if (isFree && boxes > most) {
                most = boxes;
                place = QPointF(x, y);
            }
        }
    }
    document.press(-500, -500, 15);
    for (auto _ : state)
        document.move(-500, -500, place.x(), place.y(), false);
    if (document.shapes().size() != state.range(0))
        state.SkipWithError("something was erased");
    state.counters["boxes"] = static_cast<double>(most);
}
BENCHMARK(moveEraser)->ArgName("strokes_of_2000_points")->Arg(50)->Unit(benchmark::kMicrosecond);

/// The same where it erases all it meets, with all of them under it.
void eraseStrokes(benchmark::State &state)
{
    QList<std::shared_ptr<PathShape>> strokes;
    for (int i = 0; i < state.range(0); ++i)
        strokes.append(strokeOf(ToolType::Pen, wander(2000, 3, {1900.0 + i, 1000})));
    for (auto _ : state) {
        state.PauseTiming();
        ShapeDocument document;
        for (const auto &stroke : strokes)
            document.append(stroke);
        document.setTool(ToolType::Eraser);
        document.setEraserRadius(20);
        state.ResumeTiming();
        document.press(1900, 1000, 15);
    }
}
BENCHMARK(eraseStrokes)->ArgName("strokes_of_2000_points")->Arg(50)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
