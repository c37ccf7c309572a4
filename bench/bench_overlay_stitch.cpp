// Stitching a scrolling page, on one core. Budgets: a frame from pixels to decision 20 ms for 2400 x 1300 device pixels
// and 8 ms for 1200 x 800; a step of the preview 5 ms at 40,000 rows; finishing 40,000 rows 300 ms, with at most twice
// the page's bytes in memory.
#include "overlay/scroll_page.h"
#include "overlay/scroll_preview.h"
#include "overlay/scroll_stitcher.h"

#include <QFile>
#include <QPainter>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <unistd.h>

using namespace tavrel::ui;

namespace {

/// Lines of words; every other stretch is a picture with grain.
QImage drawPage(const QSize &size)
{
    QImage page(size, QImage::Format_ARGB32_Premultiplied);
    page.fill(Qt::white);
    QPainter painter(&page);
    QRandomGenerator random(4);
    for (int y = 8; y + 20 < size.height(); y += 26) {
        for (int x = 20; x + 40 < size.width(); x += random.bounded(6, 22))
            painter.fillRect(x, y + random.bounded(6), random.bounded(2, 6), random.bounded(6, 16), QColor(40, 40, 46));
    }
    painter.end();
    for (int top = 900; top + 400 < size.height(); top += 1800) {
        for (int y = top; y < top + 400; ++y) {
            auto *line = reinterpret_cast<quint32 *>(page.scanLine(y));
            for (int x = 40; x < size.width() / 2; ++x) {
                const auto wave = static_cast<quint32>((x * 3 + y * 5) / 16 % 160);
                line[x] = (0xff303030U + wave * 0x010101U) ^ (random.generate() & 0x070707U);
            }
        }
    }
    return page;
}

qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

enum Motion { Scrolls, Rests, Unknown };

/// One frame after another of a page that scrolls by 130 rows, stands still, or shows something else entirely after
/// three misses, which makes the search eight times as long.
void frame(benchmark::State &state, int width, int height, Motion motion)
{
    constexpr int kFrames = 24;
    constexpr int kStep = 130;
    const QImage page = drawPage({width, height + kFrames * kStep});
    const QImage other = page.mirrored(true, true);
    std::vector<QImage> frames;
    for (int i = 0; i <= kFrames; ++i) {
        const int at = motion == Scrolls ? i * kStep : 0;
        frames.push_back((motion == Unknown && i > 0 ? other : page).copy(0, at, width, height));
    }
    ScrollStitcher stitcher;
    std::size_t next = frames.size();
    double worst = 0;
    for (auto _ : state) {
        if (next == frames.size()) {
            state.PauseTiming();
            stitcher.begin(frames.front(), QRectF(0, 0, width, height));
            next = 1;
            state.ResumeTiming();
        }
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(stitcher.addFrame(frames[next++]));
        worst = std::max(worst,
                         std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    state.counters["worst_ms"] = worst;
    state.counters["rows"] = stitcher.height();
}

constexpr int kWidth = 2400;
constexpr int kRows = 40'000;

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// A preview that follows while the page grows to 40,000 rows; the last step is measured, and the worst on the way, on
/// which the picture halves several times.
void previewStep(benchmark::State &state)
{
    constexpr int kStep = 400;
    const QImage source = drawPage({kWidth, kStep});
    double worst = 0;
    for (auto _ : state) {
        ScrollPage page(kWidth);
        ScrollPreview preview(QSize(264, 1000));
        double last = 0;
        for (int y = 0; y < kRows; y += kStep) {
            page.write(y, reinterpret_cast<const quint32 *>(source.constBits()), kWidth, kStep);
            const auto start = std::chrono::steady_clock::now();
            preview.update(page);
            benchmark::DoNotOptimize(preview.image());
            last = millisecondsSince(start);
            worst = std::max(worst, last);
        }
        state.SetIterationTime(last / 1000);
    }
    state.counters["worst_ms_on_the_way"] = worst;
}

void finish(benchmark::State &state)
{
    constexpr int kView = 1300;
    const QImage page = drawPage({kWidth, kRows});
    double most = 0;
    for (auto _ : state) {
        const qint64 before = residentBytes();
        ScrollStitcher stitcher;
        stitcher.begin(page.copy(0, 0, kWidth, kView), QRectF(0, 0, kWidth, kView));
        for (int y = 900; y + kView <= kRows; y += 900)
            stitcher.addFrame(page.copy(0, y, kWidth, kView));
        const auto pageBytes = static_cast<double>(stitcher.height()) * kWidth * 4;
        most = std::max(most, static_cast<double>(residentBytes() - before) / pageBytes);
        state.counters["rows"] = stitcher.height();
        const auto start = std::chrono::steady_clock::now();
        const QImage result = stitcher.takeResult();
        state.SetIterationTime(millisecondsSince(start) / 1000);
        most = std::max(most, static_cast<double>(residentBytes() - before) / pageBytes);
    }
    state.counters["memory_in_pages"] = most;
}

} // namespace

BENCHMARK_CAPTURE(frame, scrolls_2400x1300, 2400, 1300, Scrolls)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frame, scrolls_1200x800, 1200, 800, Scrolls)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frame, rests_2400x1300, 2400, 1300, Rests)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frame, unknown_2400x1300, 2400, 1300, Unknown)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(frame, unknown_1200x800, 1200, 800, Unknown)->Unit(benchmark::kMillisecond);
BENCHMARK(previewStep)
    ->Name("previewStep/400_rows_at_40000_of_2400")
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK(finish)->Name("finish/40000_rows_of_2400")->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(3);

BENCHMARK_MAIN();
