// The attribute bar over a display of 3840 x 2160, from the input to the pixels in the backing store. Budgets: choosing
// a tool 16 ms, a step of a dragged slider with a shape that follows it 8 ms.
#include "overlay/capture_overlay.h"
#include "overlay/overlay_panels.h"
#include "ui/attribute_bar.h"
#include "ui/modern_slider.h"

#include <QApplication>
#include <QMouseEvent>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

using namespace tavrel;

namespace {

constexpr QSize kPixels(3840, 2160);

platform::CapturedDisplay display()
{
    platform::CapturedDisplay display;
    display.image = QImage(kPixels, QImage::Format_ARGB32_Premultiplied);
    display.image.fill(QColor(200, 210, 220));
    display.geometry = QRect(QPoint(0, 0), kPixels);
    return display;
}

class Stage final
{
public:
    Stage()
    {
        m_overlay.show();
        m_overlay.setSelectionRect({400, 300, 2800, 1400});
        QCoreApplication::processEvents();
    }

    ui::CaptureOverlay &overlay() { return m_overlay; }
    ui::AttributeBar &bar() { return *m_overlay.panels().attributeBar(); }

    /// What is posted, such as layouts and controls that go, belongs to the cost.
    void settle()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        QEvent paint(QEvent::UpdateRequest);
        QApplication::sendEvent(&m_overlay, &paint);
    }

    void draw(ToolType tool)
    {
        m_overlay.setTool(tool);
        m_overlay.document().press(600, 500, 5);
        m_overlay.document().move(600, 500, 1600, 1200, false);
        m_overlay.document().release();
        settle();
    }

private:
    ui::CaptureOverlay m_overlay{display(), SettingsConfig()};
};

void openBar(benchmark::State &state)
{
    Stage stage;
    for (auto _ : state) {
        stage.overlay().setTool(ToolType::Arrow);
        stage.settle();
        state.PauseTiming();
        stage.overlay().setTool(ToolType::None);
        stage.settle();
        state.ResumeTiming();
    }
}

void switchTools(benchmark::State &state)
{
    constexpr std::array kTools{ToolType::Rect,      ToolType::Arrow,     ToolType::Marker,
                                ToolType::Sequence,  ToolType::Mosaic,    ToolType::Spotlight,
                                ToolType::Watermark, ToolType::Magnifier, ToolType::Text};
    Stage stage;
    std::size_t next = 0;
    for (auto _ : state) {
        stage.overlay().setTool(kTools[next++ % kTools.size()]);
        stage.settle();
    }
}

void dragSlider(benchmark::State &state)
{
    Stage stage;
    stage.draw(ToolType::Mosaic);
    auto *slider = stage.bar().findChild<ui::ModernSlider *>(QStringLiteral("blockSize"));
    const auto send = [slider](QEvent::Type type, double x) {
        const QPointF at(x, slider->height() / 2.0);
        QMouseEvent event(type, at, slider->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(slider, &event);
    };
    send(QEvent::MouseButtonPress, 20);
    int step = 0;
    for (auto _ : state) {
        send(QEvent::MouseMove, 10 + step++ % (slider->width() - 20));
        stage.settle();
    }
    send(QEvent::MouseButtonRelease, 20);
}

BENCHMARK(openBar)->Name("open_bar/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(switchTools)->Name("switch_tools/9_tools/3840x2160")->Unit(benchmark::kMillisecond);
BENCHMARK(dragSlider)->Name("drag_slider/mosaic_of_1000x700/3840x2160")->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
