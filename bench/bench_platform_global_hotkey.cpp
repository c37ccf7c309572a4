#include "platform/linux/x11_global_hotkey.h"
#include "platform/linux/x11_keymap.h"
#include "platform/linux/x_connection.h"
#include "settings/key_combo.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>
#include <xkbcommon/xkbcommon-x11.h>

using namespace tavrel;
using namespace tavrel::platform;

namespace {

constexpr int kCount = 10;

KeyCombo comboOf(int i, bool shift)
{
    return {.key = Qt::Key_A + i, .ctrl = true, .shift = shift, .alt = true};
}

void bindAll(IGlobalHotkey &hotkey, bool shift)
{
    for (int i = 0; i < kCount; ++i) {
        QString error;
        if (!hotkey.registerHotkey(i, comboOf(i, shift), &error))
            qFatal("%s", qPrintable(error));
    }
}

/// The start of the program: thread, connection, keymap, ten combinations.
void startAndBind10(benchmark::State &state)
{
    for (auto _ : state) {
        X11GlobalHotkey hotkey;
        bindAll(hotkey, false);
        state.PauseTiming();
        hotkey.unregisterAll();
        state.ResumeTiming();
    }
}

/// A change of the settings that gives ten ids other combinations.
void rebind10(benchmark::State &state)
{
    X11GlobalHotkey hotkey;
    bool shift = false;
    for (auto _ : state)
        bindAll(hotkey, shift = !shift);
}

/// A change of the settings that leaves ten combinations as they are.
void bindEqual10(benchmark::State &state)
{
    X11GlobalHotkey hotkey;
    bindAll(hotkey, false);
    for (auto _ : state)
        bindAll(hotkey, false);
}

/// A dialog that opens and closes with ten combinations bound.
void suspendAndResume10(benchmark::State &state)
{
    X11GlobalHotkey hotkey;
    bindAll(hotkey, false);
    for (auto _ : state) {
        hotkey.setSuspended(true);
        hotkey.setSuspended(false);
    }
}

/// What a change of the keymap costs before anything is grabbed.
void readKeymap(benchmark::State &state)
{
    const auto x = XConnection::create();
    xkb_x11_setup_xkb_extension(x->xcb(), 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                nullptr);
    const int keyboard = xkb_x11_get_core_keyboard_device_id(x->xcb());
    for (auto _ : state)
        benchmark::DoNotOptimize(X11Keymap::fromServer(*x, keyboard));
}

void strokesOf10(benchmark::State &state)
{
    const auto x = XConnection::create();
    xkb_x11_setup_xkb_extension(x->xcb(), 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                nullptr);
    const auto keymap = X11Keymap::fromServer(*x, xkb_x11_get_core_keyboard_device_id(x->xcb()));
    for (auto _ : state) {
        for (int i = 0; i < kCount; ++i)
            benchmark::DoNotOptimize(keymap->strokes(comboOf(i, false), 0));
    }
}

BENCHMARK(startAndBind10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(rebind10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(bindEqual10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(suspendAndResume10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(readKeymap)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(strokesOf10)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
