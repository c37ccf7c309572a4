// What stands between the hotkey and the overlay, and between the pointer and its picture, on a display of 3840 x 2160.
// Budgets: dimming 4 ms; a pointer move while a selection is drawn, moved or resized 4 ms, from the event to the pixels
// in the backing store; a shape dragged among 50 others 8 ms. QT_SCALE_FACTOR=2 gives the same display at ratio 2.
#include "overlay/capture_overlay.h"
#include "overlay/overlay_picture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPaintEvent>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

using namespace tavrel;

namespace {

constexpr QSize kPixels(3840, 2160);

QImage picture()
{
    QImage image(kPixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = qRgb(x & 0xff, y & 0xff, (x ^ y) & 0xff);
    }
    image.setDevicePixelRatio(qApp->devicePixelRatio());
    return image;
}

platform::CapturedDisplay display()
{
    platform::CapturedDisplay display;
    display.image = picture();
    display.devicePixelRatio = qApp->devicePixelRatio();
    display.geometry = QRect(QPoint(0, 0), (QSizeF(kPixels) / display.devicePixelRatio).toSize());
    return display;
}

/// Counts what is painted.
class PaintCounter final : public QObject
{
public:
    double pixels = 0;

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            for (const QRect &rect : static_cast<QPaintEvent *>(event)->region())
                pixels += rect.width() * rect.height();
        }
        return false;
    }
};

/// An overlay on the screen whose painting is done when asked for, into the backing store.
class Stage final
{
public:
    Stage()
    {
        platform::WindowInfo window;
        const QSizeF size(m_overlay.size());
        window.geometry = QRectF(size.width() * 0.1, size.height() * 0.1, size.width() * 0.6, size.height() * 0.6);
        m_overlay.setDetection({window});
        m_overlay.show();
        QCoreApplication::processEvents();
        m_overlay.installEventFilter(&m_counter);
    }

    ui::CaptureOverlay &overlay() { return m_overlay; }

    void send(QEvent::Type type, const QPointF &relative)
    {
        const QPointF at(std::round(relative.x() * m_overlay.width()), std::round(relative.y() * m_overlay.height()));
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        m_held = type == QEvent::MouseButtonPress || (m_held && type != QEvent::MouseButtonRelease);
        QMouseEvent event(type, at, at, at, button, m_held ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&m_overlay, &event);
        paint();
    }

    void paint()
    {
        QEvent event(QEvent::UpdateRequest);
        QApplication::sendEvent(&m_overlay, &event);
    }

    /// Runs the pointer along a path, one move per iteration.
    template <typename Path>
    void run(benchmark::State &state, Path path)
    {
        m_counter.pixels = 0;
        int step = 0;
        qint64 worst = 0;
        QElapsedTimer timer;
        for (auto _ : state) {
            const QPointF at = path(step++);
            timer.start();
            send(QEvent::MouseMove, at);
            worst = std::max(worst, timer.nsecsElapsed());
        }
        state.counters["painted_kpx"] = benchmark::Counter(
            m_counter.pixels * std::pow(qApp->devicePixelRatio(), 2) / 1000, benchmark::Counter::kAvgIterations);
        state.counters["worst_ms"] = static_cast<double>(worst) / 1e6;
    }

private:
    ui::CaptureOverlay m_overlay{display(), SettingsConfig()};
    PaintCounter m_counter;
    bool m_held = false;
};

/// To and fro between 0 and 1 in steps of about 15 pixels of the display.
double swing(int step, double period = 500)
{
    return std::abs(std::fmod(step / period * 2, 2.0) - 1);
}

void dim(benchmark::State &state)
{
    const QImage image = picture();
    for (auto _ : state)
        benchmark::DoNotOptimize(ui::dimmedImage(image).constBits());
}

void construct(benchmark::State &state)
{
    const platform::CapturedDisplay captured = display();
    const SettingsConfig config;
    for (auto _ : state)
        std::make_unique<ui::CaptureOverlay>(captured, config);
}

void paintEverything(benchmark::State &state)
{
    Stage stage;
    for (auto _ : state) {
        stage.overlay().update();
        stage.paint();
    }
}

void paintEverythingSelected(benchmark::State &state)
{
    Stage stage;
    stage.overlay().setSelectionRect(QRectF(stage.overlay().rect()));
    for (auto _ : state) {
        stage.overlay().update();
        stage.paint();
    }
}

void movePointer(benchmark::State &state)
{
    Stage stage;
    stage.run(state, [](int step) { return QPointF(0.15 + 0.4 * swing(step), 0.2 + 0.4 * swing(step, 730)); });
}

void movePointerOverWindowEdge(benchmark::State &state)
{
    Stage stage;
    stage.run(state, [](int step) { return QPointF(step % 2 ? 0.099 : 0.101, 0.5); });
}

void drawSelection(benchmark::State &state)
{
    Stage stage;
    stage.send(QEvent::MouseButtonPress, {0.02, 0.02});
    stage.run(state, [](int step) { return QPointF(0.1 + 0.85 * swing(step), 0.1 + 0.85 * swing(step, 730)); });
}

void moveSelection(benchmark::State &state)
{
    Stage stage;
    const QSizeF size(stage.overlay().size());
    stage.overlay().setSelectionRect({QPointF(0, 0), size * 0.7});
    stage.send(QEvent::MouseButtonPress, {0.35, 0.2});
    stage.run(state, [](int step) { return QPointF(0.36 + 0.25 * swing(step), 0.21 + 0.25 * swing(step, 730)); });
}

void resizeSelection(benchmark::State &state)
{
    Stage stage;
    const QSizeF size(stage.overlay().size());
    stage.overlay().setSelectionRect({QPointF(size.width() * 0.1, size.height() * 0.1), size * 0.6});
    stage.send(QEvent::MouseButtonPress, {0.7, 0.7});
    stage.run(state, [](int step) { return QPointF(0.5 + 0.45 * swing(step), 0.5 + 0.45 * swing(step, 730)); });
}

/// A selection over the whole display with 50 shapes of every kind on it.
void addShapes(Stage &stage)
{
    ui::CaptureOverlay &overlay = stage.overlay();
    const QSizeF size(overlay.size());
    overlay.setSelectionRect(QRectF(QPointF(0, 0), size));
    static constexpr std::array tools{ToolType::Rect, ToolType::Circle, ToolType::Arrow, ToolType::Pen,
                                      ToolType::Marker};
    ShapeDocument &document = overlay.document();
    for (int i = 0; i < 50; ++i) {
        const QPointF from(size.width() * (0.03 + 0.09 * (i % 10)), size.height() * (0.05 + 0.18 * (i / 10.0)));
        const QPointF to(from.x() + size.width() * 0.15, from.y() + size.height() * 0.2);
        document.setTool(tools[static_cast<std::size_t>(i) % tools.size()]);
        document.setThickness(document.tool() == ToolType::Marker ? 20 : 4);
        document.press(from.x(), from.y(), 1);
        for (int step = 1; step <= 100; ++step) {
            const QPointF at = from + (to - from) * (step / 100.0);
            document.move(from.x(), from.y(), at.x(), at.y() + 30 * std::sin(step * 0.2), false);
        }
        document.release();
        document.clearSelection();
    }
}

/// Drags a rectangle, whose size is a part of the display's, by its edge.
void dragShape(benchmark::State &state)
{
    Stage stage;
    addShapes(stage);
    const double part = static_cast<double>(state.range(0)) / 100;
    stage.overlay().setTool(ToolType::Rect);
    stage.send(QEvent::MouseButtonPress, {0.05, 0.05});
    stage.send(QEvent::MouseMove, {0.05 + part, 0.05 + part});
    stage.send(QEvent::MouseButtonRelease, {0.05 + part, 0.05 + part});
    stage.send(QEvent::MouseButtonPress, {0.05, 0.05 + part / 2});
    const double room = 0.9 - part;
    stage.run(state, [part, room](int step) {
        return QPointF(0.05 + room * swing(step), 0.05 + part / 2 + room * swing(step, 730));
    });
}

void drawWithPen(benchmark::State &state)
{
    Stage stage;
    addShapes(stage);
    stage.overlay().setTool(ToolType::Pen);
    stage.send(QEvent::MouseButtonPress, {0.5, 0.5});
    stage.run(state,
              [](int step) { return QPointF(0.5 + 0.3 * std::sin(step * 0.011), 0.5 + 0.4 * std::sin(step * 0.007)); });
}

BENCHMARK(dim)->Name("dim/3840x2160")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(construct)->Name("construct/3840x2160")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(paintEverything)->Name("paint_everything/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(paintEverythingSelected)->Name("paint_everything_selected/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(dragShape)
    ->Name("drag_shape_among_50/3840x2160/percent_of_display")
    ->Arg(20)
    ->Arg(60)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(drawWithPen)->Name("draw_with_pen_among_50/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(movePointer)->Name("move_pointer/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(movePointerOverWindowEdge)->Name("move_pointer_over_window_edge/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(drawSelection)->Name("draw_selection/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(moveSelection)->Name("move_selection_of_2688x1512/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(resizeSelection)->Name("resize_selection/3840x2160")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
