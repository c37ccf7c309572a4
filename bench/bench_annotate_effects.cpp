#include "annotate/effect_image_cache.h"
#include "annotate/shape_document.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <cmath>

using namespace tavrel;

namespace {

QImage picture()
{
    QImage image(3840, 2160, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = qRgb(x & 255, y & 255, (x * y) & 255);
    }
    return image;
}

/// All of 3840x2160 at a strength: radius of the blur or side of a block, in pixels.
void buildEffectOf3840x2160(benchmark::State &state, bool blur)
{
    const QImage source = picture();
    for (auto _ : state) {
        const EffectImageCache cache(source);
        benchmark::DoNotOptimize(cache.region(blur, static_cast<int>(state.range(0)), {0, 0, 10, 10}));
    }
}
BENCHMARK_CAPTURE(buildEffectOf3840x2160, blur, true)
    ->ArgName("radius")
    ->Arg(1)
    ->Arg(2)
    ->Arg(15)
    ->Arg(50)
    ->Arg(127)
    ->Arg(128)
    ->Arg(200)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(buildEffectOf3840x2160, mosaic, false)
    ->ArgName("block")
    ->Arg(1)
    ->Arg(2)
    ->Arg(4)
    ->Arg(15)
    ->Arg(200)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void paintDamage(QImage &image, ShapeDocument &document, const EffectImageCache &cache)
{
    ShapeRenderContext context;
    context.effectSource = &cache;
    for (const QRectF &part : document.takeDamage())
        context.exposed.append(part);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QRegion clip;
    for (const QRectF &part : context.exposed)
        clip += part.toAlignedRect();
    painter.setClipRegion(clip);
    document.paint(painter, context);
}

/// One step of a box of 1200x800 over 3840x2160.
void dragBoxOf1200x800(benchmark::State &state)
{
    QImage image = picture();
    const EffectImageCache cache(image);
    ShapeDocument document;
    document.setTool(ToolType::Mosaic);
    document.press(100, 100, 15);
    document.move(100, 100, 1300, 900, false);
    document.release();
    paintDamage(image, document, cache);
    document.press(600, 500, 15);
    int x = 0;
    for (auto _ : state) {
        x = (x + 7) % 2000;
        document.move(600, 500, 600 + x, 500 + x / 2, false);
        paintDamage(image, document, cache);
    }
}
BENCHMARK(dragBoxOf1200x800)->Unit(benchmark::kMillisecond);

/// One more point on a brush stroke that has so many already.
void growBrush(benchmark::State &state)
{
    QImage image = picture();
    const EffectImageCache cache(image);
    ShapeDocument document;
    document.setThickness(30);
    document.setTool(ToolType::MosaicPen);
    document.press(1900, 1000, 15);
    double t = 0;
    const auto add = [&] {
        t += 0.01;
        document.move(1900, 1000, 1900 + 900 * std::sin(t), 1000 + 800 * std::sin(1.37 * t), false);
        paintDamage(image, document, cache);
    };
    for (int i = 0; i < state.range(0); ++i)
        add();
    for (auto _ : state)
        add();
}
BENCHMARK(growBrush)->ArgName("points")->Arg(100)->Arg(2000)->Iterations(500)->Unit(benchmark::kMicrosecond);

/// A tiled watermark: its length in characters, and the side of the square that is painted anew, 0 for everything.
void paintWatermark(benchmark::State &state)
{
    QImage image = picture();
    ShapeDocument document;
    document.setTool(ToolType::Watermark);
    QString text;
    for (int i = 0; i < state.range(0); ++i)
        text.append(QChar(i % 6 == 5 ? u' ' : char16_t(u'a' + i % 26)));
    document.setWatermarkText(text);
    document.setWatermark();
    ShapeRenderContext context;
    context.canvasBounds = QRectF(image.rect());
    const auto side = static_cast<int>(state.range(1));
    for (auto _ : state) {
        QPainter painter(&image);
        if (side > 0)
            painter.setClipRect(QRect(1900, 1000, side, side));
        document.paint(painter, context);
    }
}
BENCHMARK(paintWatermark)
    ->ArgNames({"characters", "side"})
    ->Args({12, 0})
    ->Args({12, 300})
    ->Args({200, 0})
    ->Args({10'000, 0})
    ->Args({10'000, 300})
    ->Unit(benchmark::kMillisecond);

/// The first paint after a character was added to a watermark of so many.
void shapeWatermark(benchmark::State &state)
{
    QImage image = picture();
    ShapeDocument document;
    document.setTool(ToolType::Watermark);
    const QString text = QStringLiteral("mark ").repeated(static_cast<int>(state.range(0)) / 5);
    ShapeRenderContext context;
    context.canvasBounds = QRectF(image.rect());
    int count = 0;
    for (auto _ : state) {
        document.setWatermarkText(text + QString::number(++count));
        document.setWatermark();
        QPainter painter(&image);
        document.paint(painter, context);
    }
}
BENCHMARK(shapeWatermark)->ArgName("characters")->Arg(200)->Arg(10'000)->Unit(benchmark::kMillisecond);

/// A text of so many characters, half of them from right to left, in the style that costs most.
void paintText(benchmark::State &state)
{
    QImage image = picture();
    ShapeDocument document;
    QString text;
    while (text.size() < state.range(0))
        text += QStringLiteral("سلام text\\n");
    document.loadState(QStringLiteral(R"([{"type":"text","x":100,"y":50,"text":"%1","textStyle":"border"}])").arg(text),
                       {}, {}, 0);
    for (auto _ : state) {
        QPainter painter(&image);
        document.paint(painter, {});
    }
}
BENCHMARK(paintText)->ArgName("characters")->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
