#include "overlay/scroll_sub_pixel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <optional>

namespace tavrel::ui {

namespace {

constexpr int kMinRun = 32;
constexpr int kMaxRun = 192;
constexpr int kColumnStep = 16;
constexpr std::size_t kMaxSamples = 96;
constexpr std::size_t kMinSamples = 8;
constexpr double kMinVariance = 40.0;
constexpr double kMaxSpread = 0.6;
constexpr double kTiny = 0.000000001;

using Complex = std::complex<double>;
using Signal = std::vector<Complex>;

/// In place, unscaled. `roots` holds exp(-2 pi i k / n) for the first half of k.
void transform(Signal &signal, const Signal &roots, bool inverse)
{
    const std::size_t n = signal.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; (j & bit) != 0; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(signal[i], signal[j]);
    }
    for (std::size_t length = 2; length <= n; length *= 2) {
        const std::size_t half = length / 2;
        for (std::size_t first = 0; first < n; first += length) {
            for (std::size_t k = 0; k < half; ++k) {
                const Complex root = inverse ? std::conj(roots[k * (n / length)]) : roots[k * (n / length)];
                const Complex a = signal[first + k];
                const Complex raw = signal[first + k + half];
                const Complex b(raw.real() * root.real() - raw.imag() * root.imag(),
                                raw.real() * root.imag() + raw.imag() * root.real());
                signal[first + k] = a + b;
                signal[first + k + half] = a - b;
            }
        }
    }
}

class PhaseCorrelation
{
public:
    explicit PhaseCorrelation(std::size_t length) : m_window(length), m_roots(std::bit_ceil(2 * length) / 2)
    {
        for (std::size_t i = 0; i < length; ++i) {
            const double phase = 2.0 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(length - 1);
            m_window[i] = 0.5 - 0.5 * std::cos(phase);
        }
        const double step = std::numbers::pi / static_cast<double>(m_roots.size());
        for (std::size_t k = 0; k < m_roots.size(); ++k)
            m_roots[k] = std::polar(1.0, -step * static_cast<double>(k));
    }

    /// How far `late` lies behind `early`.
    double lag(const std::vector<double> &late, const std::vector<double> &early) const
    {
        Signal a = spectrum(late);
        const Signal b = spectrum(early);
        for (std::size_t i = 0; i < a.size(); ++i) {
            const Complex cross = a[i] * std::conj(b[i]);
            const double size = std::abs(cross);
            a[i] = size < kTiny ? Complex() : cross / size;
        }
        transform(a, m_roots, true);
        const auto peak = static_cast<std::size_t>(
            std::max_element(a.begin(), a.end(), [](Complex x, Complex y) { return std::norm(x) < std::norm(y); }) -
            a.begin());
        const std::size_t n = a.size();
        const double middle = std::abs(a[peak]);
        const double left = std::abs(a[(peak + n - 1) % n]);
        const double right = std::abs(a[(peak + 1) % n]);
        const double bend = left - 2.0 * middle + right;
        const double refined = std::abs(bend) > kTiny ? std::clamp(0.5 * (left - right) / bend, -1.0, 1.0) : 0.0;
        const auto whole = static_cast<double>(peak);
        return (peak > n / 2 ? whole - static_cast<double>(n) : whole) + refined;
    }

private:
    Signal spectrum(const std::vector<double> &values) const
    {
        double mean = 0;
        for (const double value : values)
            mean += value / static_cast<double>(values.size());
        Signal signal(2 * m_roots.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            signal[i] = (values[i] - mean) * m_window[i];
        transform(signal, m_roots, false);
        return signal;
    }

    std::vector<double> m_window;
    Signal m_roots;
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double variance(const std::vector<double> &values)
{
    double sum = 0;
    double squares = 0;
    for (const double value : values) {
        sum += value;
        squares += value * value;
    }
    const auto n = static_cast<double>(values.size());
    return squares / n - sum / n * (sum / n);
}

struct Rows
{
    int first = 0;
    int count = 0;
};

/// The longest run of bands that fit what the page has.
Rows longestRun(const std::vector<ScrollBand> &bands)
{
    Rows longest;
    Rows run;
    for (const ScrollBand &band : bands) {
        if (band.kind != ScrollBand::Kind::Ok || band.unseen) {
            run = {};
            continue;
        }
        if (run.count == 0)
            run.first = band.first;
        run.count = band.end - run.first;
        if (run.count > longest.count)
            longest = run;
    }
    return longest;
}

} // namespace

std::optional<float> subPixelShift(const GreyFrame &frame, const ScrollCanvas &canvas, const ScrollBands &bands)
{
    Rows run = longestRun(bands.bands);
    if (run.count < kMinRun)
        return std::nullopt;
    run.count = std::min(run.count, kMaxRun);
    const int canvasFirst = run.first + bands.offset;
    if (!canvas.isFilled(canvasFirst, canvasFirst + run.count))
        return std::nullopt;

    const PhaseCorrelation correlation(static_cast<std::size_t>(run.count));
    std::vector<double> late(static_cast<std::size_t>(run.count));
    std::vector<double> early(late.size());
    std::vector<double> samples;
    std::size_t asked = 0;
    for (int x = 0; x < frame.width() && samples.size() < kMaxSamples; x += kColumnStep) {
        for (int i = 0; i < run.count; ++i) {
            late[static_cast<std::size_t>(i)] = frame.row(run.first + i)[x];
            early[static_cast<std::size_t>(i)] = canvas.row(canvasFirst + i)[x];
        }
        if (variance(late) < kMinVariance)
            continue;
        ++asked;
        // The same column needs no transform; that is every frame of a page that moves by whole rows.
        const double shift = late == early ? 0.0 : correlation.lag(late, early);
        if (std::abs(shift) < 1.0)
            samples.push_back(shift);
    }
    if (samples.size() < kMinSamples || samples.size() * 2 < asked)
        return std::nullopt;
    const double middle = median(samples);
    for (double &sample : samples)
        sample = std::abs(sample - middle);
    if (median(samples) > kMaxSpread)
        return std::nullopt;
    return static_cast<float>(middle);
}

} // namespace tavrel::ui
