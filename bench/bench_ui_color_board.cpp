// A step of a drag in the colour board, from the event to the pixels in the backing store, over a large window as the
// capture overlay is. Budget: 8 ms. QT_SCALE_FACTOR=2 gives the same at ratio 2.
#include "ui/color_board.h"
#include "ui/color_library.h"
#include "ui/eyedropper_layer.h"
#include "ui/eyedropper_sample.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

using namespace tavrel::ui;

namespace {

constexpr QSize kPixels(3840, 2160);

/// A window that shows a picture, as cheaply as it can be done.
class Host final : public QWidget
{
public:
    Host() : m_picture(kPixels, QImage::Format_RGB32)
    {
        for (int y = 0; y < m_picture.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(m_picture.scanLine(y));
            for (int x = 0; x < m_picture.width(); ++x)
                line[x] = qRgb(x & 0xff, y & 0xff, (x ^ y) & 0xff);
        }
        m_picture.setDevicePixelRatio(qApp->devicePixelRatio());
        setAttribute(Qt::WA_OpaquePaintEvent);
        resize((QSizeF(kPixels) / qApp->devicePixelRatio()).toSize());
        show();
        QCoreApplication::processEvents();
    }

    [[nodiscard]] const QImage &picture() const { return m_picture; }
    [[nodiscard]] double painted() const { return m_painted; } ///< logical pixels, so far

protected:
    void paintEvent(QPaintEvent *event) override
    {
        for (const QRect &rect : event->region())
            m_painted += rect.width() * rect.height();
        QPainter painter(this);
        painter.setClipRegion(event->region());
        painter.drawImage(0, 0, m_picture);
    }

private:
    QImage m_picture;
    double m_painted = 0;
};

void send(QWidget *widget, QEvent::Type type, const QPointF &point)
{
    const bool moves = type == QEvent::MouseMove;
    QMouseEvent event(type, point, widget->mapToGlobal(point), moves ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

/// Runs steps that are a drag back and forth, and tells the middle time and the slowest of a hundred.
template <typename Point>
void drag(benchmark::State &state, QWidget *widget, bool pressed, Point point)
{
    if (pressed)
        send(widget, QEvent::MouseButtonPress, point(0.5));
    const auto *host = static_cast<const Host *>(widget->window());
    const double paintedBefore = host->painted();
    std::vector<double> times;
    int step = 0;
    for (auto _ : state) {
        const double place = std::abs(100 - step++ * 7 % 200) / 100.0;
        const auto before = std::chrono::steady_clock::now();
        send(widget, QEvent::MouseMove, point(place));
        QCoreApplication::sendPostedEvents();
        QEvent paint(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(widget->window(), &paint);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
        state.SetIterationTime(took.count());
        times.push_back(took.count() * 1000);
    }
    if (pressed)
        send(widget, QEvent::MouseButtonRelease, point(0.5));
    std::sort(times.begin(), times.end());
    state.counters["painted_kpx"] =
        benchmark::Counter((host->painted() - paintedBefore) / 1000, benchmark::Counter::kAvgIterations);
    state.counters["p50_ms"] = times[times.size() / 2];
    state.counters["p99_ms"] = times[times.size() * 99 / 100];
}

void dragInBoard(benchmark::State &state, const char *control)
{
    Host host;
    ColorLibrary library;
    QStringList colors;
    for (int i = 0; i < ColorLibrary::kMaxColors; ++i)
        colors.append(QStringLiteral("#4060%1").arg(i + 16, 2, 16));
    library.setColors(colors);
    ColorBoard board(&host, &library);
    board.setColor(QStringLiteral("#8040D651"), false);
    board.popupAt(QRect(400, 40, 40, 20));
    QCoreApplication::processEvents();
    auto *widget = board.findChild<QWidget *>(QString::fromLatin1(control));
    drag(state, widget, true,
         [widget](double place) { return QPointF(place * widget->width(), place * place * widget->height()); });
}

void eyedropper(benchmark::State &state)
{
    Host host;
    auto *layer =
        new EyedropperLayer(&host, [&](const QPointF &point) { return eyedropperSample(host.picture(), point); });
    drag(state, layer, false, [layer](double place) {
        return QPointF(10 + place * (layer->width() - 20), 10 + place * (layer->height() - 20));
    });
}

} // namespace

BENCHMARK_CAPTURE(dragInBoard, saturation_and_value, "colorSvArea")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(dragInBoard, hue, "colorHueBar")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(dragInBoard, alpha, "colorAlphaBar")->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(eyedropper)->Name("eyedropper_move_over_3840x2160")->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
