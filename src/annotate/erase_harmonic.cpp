#include "annotate/erase_harmonic.h"

#include "base/parallel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavrel::erase {
namespace {

constexpr int kSmallestSide = 5;
constexpr int kBaseFactor = 20;
constexpr int kBaseSweeps = 160;
constexpr float kSettled = 0.25F;
/// Plain sweeps settle so slowly in a wide hole that a small change says little about what is still missing. Coarse
/// levels are swept with the over-relaxation that suits the width, to a bound that shrinks with it from this width on.
constexpr int kWideHole = 8;
constexpr int kMostCoarseUpdates = 3'000'000; ///< of cells, on one level
constexpr int kBandRows = 64;
constexpr int kParallelPixels = 100'000;

using Color = std::array<float, 3>;

/// The masked part of a row; empty when last is below first.
struct Span
{
    int first = 0;
    int last = -1;
};

/// The unknown pixels of one level, ready for sweeping.
class Sweeper final
{
public:
    Sweeper(FloatImage &image, const Mask &mask) : m_image(image), m_mask(mask)
    {
        m_spans.resize(static_cast<std::size_t>(mask.height));
        for (int y = 0; y < mask.height; ++y) {
            const std::uint8_t *row = mask.bytes.data() + mask.index(0, y);
            Span span;
            while (span.first < mask.width && !row[span.first])
                ++span.first;
            if (span.first < mask.width) {
                span.last = mask.width - 1;
                while (!row[span.last])
                    --span.last;
            }
            m_spans[static_cast<std::size_t>(y)] = span;
            m_pixels += span.last - span.first + 1;
        }
        m_bands = m_pixels < kParallelPixels ? 1 : (mask.height + kBandRows - 1) / kBandRows;
        m_changes.resize(static_cast<std::size_t>(m_bands));
        // Pixels of one parity depend on those of the other alone, so that the order within a half sweep is free: whole
        // rows are computed and only what is due is taken.
        for (std::size_t parity = 0; parity < 2; ++parity) {
            m_due[parity].resize(3 * static_cast<std::size_t>(mask.width));
            for (std::size_t i = 0; i < m_due[parity].size(); ++i)
                m_due[parity][i] = i / 3 % 2 == parity ? ~0U : 0U;
        }
    }

    /// Overshoots the means from now on, and returns the change of a sweep below which another one gains nothing.
    float overRelax()
    {
        const QRect hole = m_mask.bounds();
        const int side = std::max(std::min(hole.width(), hole.height()), kWideHole);
        m_factor = 2.0F / (1.0F + std::sin(std::numbers::pi_v<float> / static_cast<float>(side)));
        return kSettled * kWideHole / static_cast<float>(side);
    }

    [[nodiscard]] int pixels() const { return m_pixels; }

    /// Replaces every unknown pixel by the mean of its neighbours. Returns the largest change of a channel.
    float sweep()
    {
        for (int parity = 0; parity < 2; ++parity) {
            inParallel(m_bands, [this, parity](int band) {
                const int first = band * kBandRows;
                const int end = m_bands == 1 ? m_mask.height : std::min(first + kBandRows, m_mask.height);
                float change = parity == 0 ? 0.0F : m_changes[static_cast<std::size_t>(band)];
                std::vector<float> means(3 * static_cast<std::size_t>(m_mask.width));
                for (int y = first; y < end; ++y) {
                    const bool isShared = m_bands > 1 && (y == first || y + 1 == end);
                    change = std::max(change, sweepRow(y, (y + parity) % 2, isShared, means));
                }
                m_changes[static_cast<std::size_t>(band)] = change;
            });
        }
        return *std::max_element(m_changes.begin(), m_changes.end());
    }

private:
    /// isShared  the neighbour's band may be at work beside this row: only what is due may be read for and written
    float sweepRow(int y, int startX, bool isShared, std::vector<float> &means)
    {
        const Span span = m_spans[static_cast<std::size_t>(y)];
        if (span.last < span.first)
            return 0;
        float *row = m_image.row(y);
        const float *above = y > 0 ? m_image.row(y - 1) : nullptr;
        const float *below = y + 1 < m_image.height ? m_image.row(y + 1) : nullptr;
        const int last = m_image.width - 1;
        const int innerFirst = std::max(span.first, 1);
        const int innerLast = std::min(span.last, last - 1);
        if (isShared) {
            for (int x = innerFirst + (innerFirst + startX) % 2; x <= innerLast; x += 2)
                edgeMean(row, above, below, x, means);
        } else if (above && below) {
            for (int i = 3 * innerFirst; i < 3 * innerLast + 3; ++i)
                means[static_cast<std::size_t>(i)] = (row[i - 3] + row[i + 3] + above[i] + below[i]) * 0.25F;
        } else {
            for (int x = innerFirst; x <= innerLast; ++x)
                edgeMean(row, above, below, x, means);
        }
        if (span.first == 0 && startX == 0)
            edgeMean(row, above, below, 0, means);
        if (span.last == last && last % 2 == startX)
            edgeMean(row, above, below, last, means);
        return take(y, span, startX, isShared, means);
    }

    /// A pixel at the edge of the picture has fewer neighbours.
    void edgeMean(const float *row, const float *above, const float *below, int x, std::vector<float> &means) const
    {
        for (int c = 0; c < 3; ++c) {
            float sum = 0;
            int count = 0;
            const auto add = [&](const float *from, int at) {
                sum += from[3 * at + c];
                ++count;
            };
            if (x > 0)
                add(row, x - 1);
            if (x + 1 < m_image.width)
                add(row, x + 1);
            if (above)
                add(above, x);
            if (below)
                add(below, x);
            means.data()[3 * x + c] = count > 0 ? sum / static_cast<float>(count) : row[3 * x + c];
        }
    }

    float take(int y, const Span &span, int startX, bool isShared, const std::vector<float> &means)
    {
        float *row = m_image.row(y);
        const std::uint8_t *masked = m_mask.bytes.data() + m_mask.index(0, y);
        const bool isSolid =
            !isShared && std::all_of(masked + span.first, masked + span.last + 1, [](auto on) { return on != 0; });
        float change = 0;
        if (isSolid) {
            const std::uint32_t *due = m_due[static_cast<std::size_t>(startX)].data();
            const float *mean = means.data();
            const float factor = m_factor;
            for (int i = 3 * span.first; i < 3 * span.last + 3; ++i) {
                const float value = due[i] ? row[i] + (mean[i] - row[i]) * factor : row[i];
                const float moved = std::abs(value - row[i]);
                change = moved > change ? moved : change;
                row[i] = value;
            }
            return change;
        }
        for (int x = span.first + ((span.first + startX) % 2); x <= span.last; x += 2) {
            if (!masked[x])
                continue;
            for (int i = 3 * x; i < 3 * x + 3; ++i) {
                const float move = (means[static_cast<std::size_t>(i)] - row[i]) * m_factor;
                change = std::max(change, std::abs(move));
                row[i] += move;
            }
        }
        return change;
    }

    FloatImage &m_image;
    const Mask &m_mask;
    std::vector<Span> m_spans;
    std::array<std::vector<std::uint32_t>, 2> m_due;
    int m_pixels = 0; ///< from the first to the last unknown one of each row
    int m_bands = 1;
    float m_factor = 1.0F; ///< how far a pixel goes towards the mean of its neighbours
    std::vector<float> m_changes;
};

void relax(FloatImage &image, const Mask &mask, int sweeps, const CancelFlag &cancel)
{
    Sweeper sweeper(image, mask);
    for (int i = 0; i < sweeps && !cancel.isSet(); ++i)
        (void)sweeper.sweep();
}

void relaxUntilSettled(FloatImage &image, const Mask &mask, int sweeps, const CancelFlag &cancel)
{
    Sweeper sweeper(image, mask);
    const float settled = sweeper.overRelax();
    const int most = std::max(kMostCoarseUpdates / std::max(sweeper.pixels(), 1), sweeps);
    float change = settled;
    for (int i = 0; i < most && (i < sweeps || change >= settled) && !cancel.isSet(); ++i)
        change = sweeper.sweep();
}

void setPixel(FloatImage &image, int x, int y, const Color &color)
{
    std::copy(color.begin(), color.end(), image.row(y) + 3 * x);
}

/// The mean of the known pixels; `fallback` without any.
Color knownMean(const FloatImage &image, const Mask &mask, const Color &fallback, bool &isAnyKnown)
{
    std::array<double, 3> sum{};
    double count = 0;
    for (int y = 0; y < image.height; ++y) {
        const float *row = image.row(y);
        const std::uint8_t *masked = mask.bytes.data() + mask.index(0, y);
        for (int x = 0; x < image.width; ++x) {
            if (masked[x])
                continue;
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += static_cast<double>(row[3 * static_cast<std::size_t>(x) + c]);
            count += 1;
        }
    }
    isAnyKnown = count > 0;
    if (!isAnyKnown)
        return fallback;
    Color mean{};
    for (std::size_t c = 0; c < 3; ++c)
        mean[c] = static_cast<float>(sum[c] / count);
    return mean;
}

/// A pixel of half the size is known when all the pixels it covers are.
void halve(const FloatImage &image, const Mask &mask, FloatImage &coarse, Mask &coarseMask)
{
    for (int y = 0; y < coarse.height; ++y) {
        for (int x = 0; x < coarse.width; ++x) {
            Color sum{};
            int count = 0;
            bool isKnown = true;
            for (int sy = 2 * y; sy < std::min(2 * y + 2, image.height); ++sy) {
                for (int sx = 2 * x; sx < std::min(2 * x + 2, image.width); ++sx) {
                    isKnown = isKnown && !mask.has(sx, sy);
                    for (std::size_t c = 0; c < 3; ++c)
                        sum[c] += image.row(sy)[3 * static_cast<std::size_t>(sx) + c];
                    ++count;
                }
            }
            if (!isKnown || count == 0)
                continue;
            for (float &channel : sum)
                channel /= static_cast<float>(count);
            setPixel(coarse, x, y, sum);
            coarseMask.bytes[coarseMask.index(x, y)] = 0;
        }
    }
}

void solve(FloatImage &image, const Mask &mask, int sweeps, const Color &fallback, bool isFinest,
           const CancelFlag &cancel)
{
    bool isAnyKnown = false;
    const Color mean = knownMean(image, mask, fallback, isAnyKnown);
    if (cancel.isSet() || mask.bounds().isEmpty())
        return;
    const auto eachUnknown = [&](const auto &colorOf) {
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x) {
                if (mask.has(x, y))
                    setPixel(image, x, y, colorOf(x, y));
            }
        }
    };
    if (image.width < kSmallestSide || image.height < kSmallestSide || !isAnyKnown) {
        eachUnknown([&mean](int, int) { return mean; });
        relax(image, mask, std::max(sweeps * kBaseFactor, kBaseSweeps), cancel);
        return;
    }
    FloatImage coarse(std::max((image.width + 1) / 2, 1), std::max((image.height + 1) / 2, 1));
    for (std::size_t i = 0; i < coarse.values.size(); ++i)
        coarse.values[i] = mean[i % 3];
    Mask coarseMask(coarse.width, coarse.height, 255);
    halve(image, mask, coarse, coarseMask);
    solve(coarse, coarseMask, sweeps, mean, false, cancel);
    eachUnknown([&coarse](int x, int y) { return sampleHalf(coarse, x, y); });
    if (isFinest)
        relax(image, mask, sweeps, cancel);
    else
        relaxUntilSettled(image, mask, sweeps, cancel);
}

} // namespace

void harmonicFill(PixelBuffer &buffer, const Mask &mask, int iterations, const CancelFlag &cancel)
{
    if (buffer.isEmpty() || mask.width != buffer.width || mask.height != buffer.height)
        return;
    if (std::all_of(mask.bytes.begin(), mask.bytes.end(), [](auto on) { return on != 0; }))
        return;
    FloatImage image(buffer.width, buffer.height);
    std::copy(buffer.bytes.begin(), buffer.bytes.end(), image.values.begin());
    solve(image, mask, std::max(iterations, 1), {}, true, cancel);
    std::transform(image.values.begin(), image.values.end(), buffer.bytes.begin(),
                   [](float value) { return static_cast<std::uint8_t>(std::clamp(std::lroundf(value), 0L, 255L)); });
}

} // namespace tavrel::erase
