// A step of a drag in a slider and in the position picker, from the event to the pixels in the backing store of a
// window as large as a screen. Budget: 2 ms, so that a drag leaves a frame to what the value changes. QT_SCALE_FACTOR=2
// gives the same at ratio 2.
#include "ui/modern_slider.h"
#include "ui/position_picker.h"

#include <QApplication>
#include <QMouseEvent>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

using namespace tavrel::ui;

namespace {

constexpr QSize kPixels(3840, 2160);

void send(QWidget *widget, QEvent::Type type, const QPointF &point)
{
    const Qt::MouseButton changed = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, point, widget->mapToGlobal(point), changed, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

template <typename Control>
void drag(benchmark::State &state)
{
    QWidget window;
    window.resize((QSizeF(kPixels) / qApp->devicePixelRatio()).toSize());
    auto *control = new Control(lightTheme(), &window);
    control->resize(240, control->sizeHint().height());
    window.show();
    QCoreApplication::processEvents();
    send(control, QEvent::MouseButtonPress, QRectF(control->rect()).center());
    std::vector<double> times;
    int step = 0;
    for (auto _ : state) {
        const double place = std::abs(100 - step++ * 7 % 200) / 100.0;
        const auto before = std::chrono::steady_clock::now();
        send(control, QEvent::MouseMove, {place * control->width(), place * control->height()});
        QCoreApplication::sendPostedEvents();
        QEvent paint(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(&window, &paint);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
        state.SetIterationTime(took.count());
        times.push_back(took.count() * 1000);
    }
    send(control, QEvent::MouseButtonRelease, {});
    std::sort(times.begin(), times.end());
    state.counters["p50_ms"] = times[times.size() / 2];
    state.counters["p99_ms"] = times[times.size() * 99 / 100];
}

} // namespace

BENCHMARK_TEMPLATE(drag, ModernSlider)->Name("slider_step_240_wide")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(drag, PositionPicker)->Name("picker_step_240x104")->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
