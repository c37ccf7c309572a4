#include "platform/input_collector.h"
#include "platform/linux/x11_input_injector.h"
#include "platform/linux/x11_input_monitor.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

using namespace tavrel;
using namespace tavrel::platform;

namespace {

/// Moves that are all kept; per event.
void collectMoves(benchmark::State &state)
{
    InputCollector collector;
    collector.begin({});
    InputEventRecord event;
    for (auto _ : state) {
        event.x += 1;
        benchmark::DoNotOptimize(collector.add(event));
    }
    state.SetItemsProcessed(state.iterations());
}

/// 10,000 injected jumps as fast as the server takes them, until the monitor has handed all of them over.
void hear10000(benchmark::State &state)
{
    xcb_connection_t *c = xcb_connect(nullptr, nullptr);
    X11InputMonitor monitor;
    qsizetype lost = 0;
    for (auto _ : state) {
        if (!monitor.start(nullptr))
            qFatal("no monitor");
        for (int i = 0; i < 10000; ++i)
            xcb_test_fake_input(c, XCB_MOTION_NOTIFY, 0, 0, XCB_WINDOW_NONE, static_cast<qint16>(i % 1900),
                                static_cast<qint16>(i % 1000), 0);
        std::free(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
        lost += 10000 - monitor.stop().size();
    }
    xcb_disconnect(c);
    state.counters["lost"] = static_cast<double>(lost);
    state.SetItemsProcessed(state.iterations() * 10000);
}

} // namespace

BENCHMARK(collectMoves)->Iterations(1000000);
BENCHMARK(hear10000)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
