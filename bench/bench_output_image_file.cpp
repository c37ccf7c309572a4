// What saving and copying a whole screen costs, and how long the GUI thread is busy with it without a break. The
// encoders run on workers; the budget of the GUI thread is 2 ms for each step.
#include "output/clipboard_writer.h"
#include "output/copy_image.h"
#include "output/image_file.h"
#include "output/picture_mime_data.h"
#include "output/save_service.h"
#include "settings/settings_config.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <thread>

using namespace tavrel;

namespace {

/// Like a desktop: a soft background with some grain (a photo), and windows full of small text.
QImage desktop(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    quint32 state = 1;
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525u + 1013904223u;
            const int grain = int(state >> 30);
            line[x] = qRgb(40 + 120 * x / size.width() + grain, 60 + 100 * y / size.height() + grain, 150 + grain);
        }
    }
    QPainter painter(&image);
    for (int window = 0; window < 3; ++window) {
        const QRect frame(size.width() * (2 + 9 * window) / 32, size.height() / 8, size.width() / 4,
                          size.height() * 3 / 4);
        painter.fillRect(frame, Qt::white);
        for (int y = frame.top() + 20; y < frame.bottom(); y += 16)
            painter.drawText(frame.left() + 8, y, QStringLiteral("for (int i = 0; i < %1; ++i) sum += row[i];").arg(y));
    }
    return image;
}

QImage screen(const benchmark::State &state)
{
    return desktop({int(state.range(0)), int(state.range(1))});
}

void encodesPng(benchmark::State &state)
{
    const QImage image = screen(state);
    qsizetype bytes = 0;
    for (auto _ : state)
        bytes = encodedPng(image).size();
    state.counters["fileMB"] = double(bytes) / 1e6;
}

void encodesJpeg(benchmark::State &state)
{
    const QImage image = screen(state);
    for (auto _ : state) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(encodeImage(image, buffer, ImageFileFormat::Jpg));
    }
}

void framesAndScales(benchmark::State &state)
{
    QImage image = screen(state);
    image.setDevicePixelRatio(2.0);
    for (auto _ : state)
        benchmark::DoNotOptimize(prepareOutput(image, {.scaleTo1x = true, .addBorder = true}));
}

/// Another program asks for the picture as BMP, the one format that is made on the GUI thread.
void answersWithBmp(benchmark::State &state)
{
    const PictureMimeData data(screen(state), std::make_shared<const PngEncoding>(QByteArray()));
    for (auto _ : state)
        benchmark::DoNotOptimize(data.data(QStringLiteral("image/bmp")));
}

/// The time is the longest stretch in which the GUI thread answered nobody, from the request to the outcome.
template <typename Begin>
void longestStall(benchmark::State &state, const Begin &begin)
{
    for (auto _ : state) {
        bool done = false;
        double longest = 0;
        QElapsedTimer whole;
        whole.start();
        QElapsedTimer step;
        step.start();
        begin([&done] { done = true; });
        while (true) {
            longest = std::max(longest, double(step.nsecsElapsed()) / 1e9);
            if (done)
                break;
            std::this_thread::sleep_for(std::chrono::microseconds(500)); // the pause of an idle GUI thread
            step.start();
            QCoreApplication::processEvents();
        }
        state.SetIterationTime(longest);
        state.counters["outcomeMs"] = double(whole.nsecsElapsed()) / 1e6;
    }
}

void stallsWhileSaving(benchmark::State &state)
{
    const QImage image = screen(state);
    QTemporaryDir folder;
    SaveRequest request;
    request.directory = folder.path();
    QObject owner;
    longestStall(state, [&](const std::function<void()> &done) {
        saveImageAsync(image, request, QDateTime::currentDateTime(), {.addBorder = true}, &owner,
                       [done](const SaveResult &) { done(); });
    });
}

void stallsWhileCopying(benchmark::State &state, const QString &form)
{
    const QImage image = screen(state);
    SettingsConfig config;
    config.clipboardFormat = form;
    SystemClipboard clipboard;
    ClipboardWriter writer(clipboard);
    ImageCopier copier(writer);
    longestStall(state, [&](const std::function<void()> &done) {
        copier.copyImage(image, QDateTime::currentDateTime(), {}, config, nullptr, [done](bool) { done(); });
    });
}

void sizes(benchmark::internal::Benchmark *bench)
{
    bench->Args({1920, 1080})->Args({3840, 2160})->Unit(benchmark::kMillisecond);
}

} // namespace

BENCHMARK(encodesPng)->Apply(sizes);
BENCHMARK(encodesJpeg)->Apply(sizes);
BENCHMARK(framesAndScales)->Apply(sizes);
BENCHMARK(answersWithBmp)->Apply(sizes);
BENCHMARK(stallsWhileSaving)->Apply(sizes)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(stallsWhileCopying, picture, QStringLiteral("image"))->Apply(sizes)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(stallsWhileCopying, pictureAndFile, QStringLiteral("imageAndFile"))
    ->Apply(sizes)
    ->UseManualTime()
    ->Iterations(1);

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CACHE_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
