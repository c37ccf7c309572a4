#include "annotate/erase_patch_fill.h"

#include "annotate/erase_harmonic.h"
#include "base/parallel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::erase {
namespace {

constexpr int kRadius = 3;
constexpr int kSide = 2 * kRadius + 1;
constexpr int kRowBytes = 4 * kSide;
constexpr int kPaddedRow = 32; ///< what the comparison of a row of a patch reads
constexpr int kUnlimited = 0x40000000;
constexpr int kMostLevels = 5;
constexpr int kSmallestHole = 28;
constexpr int kSmallestPicture = 56;
constexpr int kCoarseSweeps = 8;
constexpr int kLargeHole = 120'001; ///< pixels at full size from which on one iteration is enough
constexpr std::size_t kBandedTargets = 20'000;
constexpr int kBandRows = 48;

class Random final
{
public:
    explicit Random(std::uint32_t seed) : m_state(seed) {}
    [[nodiscard]] std::uint32_t next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }
    /// 0 to n - 1; 0 for n below 1.
    [[nodiscard]] int below(int n) { return n < 1 ? 0 : static_cast<int>(next() % static_cast<std::uint32_t>(n)); }

private:
    std::uint32_t m_state;
};

/// The middle of a patch; x is -1 for none.
struct Place
{
    int x = -1;
    int y = -1;
    friend bool operator==(const Place &, const Place &) = default;
};

/// One size of the picture. A pixel is R, G, B and a 1 that counts votes; some bytes follow the last one so that every
/// row of a patch can be read as kPaddedRow bytes.
struct Level
{
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
    Mask mask;
    std::vector<Place> matches; ///< per pixel; empty before the first pass

    [[nodiscard]] std::size_t index(int x, int y) const { return mask.index(x, y); }
    [[nodiscard]] const std::uint8_t *pixel(int x, int y) const { return pixels.data() + 4 * index(x, y); }
    [[nodiscard]] std::uint8_t *pixel(int x, int y) { return pixels.data() + 4 * index(x, y); }
};

Level levelOf(const PixelBuffer &buffer, const Mask &mask)
{
    Level level{buffer.width, buffer.height, {}, mask, {}};
    level.pixels.assign(4 * mask.bytes.size() + kPaddedRow, 1);
    for (std::size_t i = 0; i < mask.bytes.size(); ++i)
        std::copy_n(buffer.bytes.data() + 3 * i, 3, level.pixels.data() + 4 * i);
    return level;
}

void copyColors(const Level &from, PixelBuffer &to)
{
    for (std::size_t i = 0; i < from.mask.bytes.size(); ++i)
        std::copy_n(from.pixels.data() + 4 * i, 3, to.bytes.data() + 3 * i);
}

/// Half the size: the mean of the known pixels of each block, or of all where none is known.
void halve(const PixelBuffer &buffer, const Mask &mask, PixelBuffer &half, Mask &halfMask)
{
    half = PixelBuffer((buffer.width + 1) / 2, (buffer.height + 1) / 2);
    halfMask = Mask(half.width, half.height);
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            Rgb known;
            Rgb all;
            int count = 0;
            for (int i = 0; i < 4; ++i) {
                const int sx = std::min(2 * x + i % 2, buffer.width - 1);
                const int sy = std::min(2 * y + i / 2, buffer.height - 1);
                const Rgb color = buffer.at(sx, sy);
                all = {all.r + color.r, all.g + color.g, all.b + color.b};
                if (mask.has(sx, sy))
                    continue;
                known = {known.r + color.r, known.g + color.g, known.b + color.b};
                ++count;
            }
            const Rgb &sum = count > 0 ? known : all;
            const int share = count > 0 ? count : 4;
            half.set(x, y, {sum.r / share, sum.g / share, sum.b / share});
            halfMask.bytes[halfMask.index(x, y)] = count < 4 ? 255 : 0;
        }
    }
}

constexpr std::array<std::int16_t, kPaddedRow> kRowWeights = [] {
    std::array<std::int16_t, kPaddedRow> weights{};
    for (std::size_t i = 0; i < kRowBytes; ++i)
        weights[i] = 1;
    return weights;
}();

/// Sum of squared differences of one row of two patches.
inline int rowDistance(const std::uint8_t *a, const std::uint8_t *b)
{
    int sum = 0;
    for (std::size_t i = 0; i < kPaddedRow; ++i) {
        const auto d = static_cast<std::int16_t>((a[i] - b[i]) * kRowWeights[i]);
        sum += d * d;
    }
    return sum;
}

/// The search for the best known patch of every patch that reaches into the hole, on one level.
class Matcher final
{
public:
    Matcher(Level &level, Random &random, const CancelFlag &cancel) : m_level(level), m_random(random), m_cancel(cancel)
    {}

    void run(int iterations)
    {
        if (m_level.width < kSide + 2 || m_level.height < kSide + 2)
            return;
        classify();
        if (m_targets.empty() || m_sources.empty())
            return;
        start();
        for (int i = 0; i < iterations && !m_cancel.isSet(); ++i) {
            measureAll();
            search(i % 2 == 0);
            vote();
        }
    }

private:
    enum Kind : std::uint8_t { Neither, Target, Source };

    /// Tells by an integral image which patches lie over the hole and which are wholly known.
    void classify()
    {
        const int w = m_level.width;
        const int h = m_level.height;
        const std::size_t stride = static_cast<std::size_t>(w) + 1;
        std::vector<int> integral(stride * (static_cast<std::size_t>(h) + 1));
        for (int y = 0; y < h; ++y) {
            int sum = 0;
            const std::size_t row = stride * (static_cast<std::size_t>(y) + 1);
            for (int x = 0; x < w; ++x) {
                sum += m_level.mask.has(x, y) ? 1 : 0;
                const std::size_t at = row + static_cast<std::size_t>(x) + 1;
                integral[at] = integral[at - stride] + sum;
            }
        }
        m_kinds.assign(m_level.mask.bytes.size(), Neither);
        m_rows.assign(static_cast<std::size_t>(h) + 1, 0);
        for (int y = 0; y < h; ++y) {
            m_rows[static_cast<std::size_t>(y)] = m_targets.size();
            if (y < kRadius || y >= h - kRadius)
                continue;
            const std::size_t upper = stride * static_cast<std::size_t>(y - kRadius);
            const std::size_t lower = upper + stride * kSide;
            for (int x = kRadius; x < w - kRadius; ++x) {
                const auto left = static_cast<std::size_t>(x - kRadius);
                const std::size_t right = left + kSide;
                const bool isOver = integral[lower + right] - integral[lower + left] - integral[upper + right] +
                                        integral[upper + left] >
                                    0;
                m_kinds[m_level.index(x, y)] = isOver ? Target : Source;
                (isOver ? m_targets : m_sources).push_back({x, y});
            }
        }
        m_rows[static_cast<std::size_t>(h)] = m_targets.size();
    }

    [[nodiscard]] bool isSource(int x, int y) const
    {
        return x >= kRadius && y >= kRadius && x < m_level.width - kRadius && y < m_level.height - kRadius &&
               m_kinds[m_level.index(x, y)] == Source;
    }

    void start()
    {
        if (m_level.matches.size() != m_kinds.size())
            m_level.matches.assign(m_kinds.size(), {});
        m_costs.resize(m_kinds.size());
        for (const Place &target : m_targets) {
            Place &match = m_level.matches[m_level.index(target.x, target.y)];
            if (!isSource(match.x, match.y))
                match = m_sources[static_cast<std::size_t>(m_random.below(static_cast<int>(m_sources.size())))];
        }
        m_firstRow = m_targets.front().y;
        m_endRow = m_targets.back().y + 1;
        m_bandRows = m_targets.size() < kBandedTargets ? m_endRow - m_firstRow : kBandRows;
        m_bands = (m_endRow - m_firstRow + m_bandRows - 1) / m_bandRows;
    }

    [[nodiscard]] int patchDistance(const Place &a, const Place &b, int limit) const
    {
        const std::size_t stride = 4 * static_cast<std::size_t>(m_level.width);
        const std::uint8_t *rowA = m_level.pixel(a.x - kRadius, a.y - kRadius);
        const std::uint8_t *rowB = m_level.pixel(b.x - kRadius, b.y - kRadius);
        int sum = 0;
        for (int i = 0; i < kSide; ++i, rowA += stride, rowB += stride) {
            sum += rowDistance(rowA, rowB);
            if (sum >= limit)
                break;
        }
        return sum;
    }

    /// Calls job(first row, end row) for each band of target rows.
    template <typename Job>
    void eachBand(const Job &job)
    {
        inParallel(m_bands, [&](int band) {
            const int first = m_firstRow + band * m_bandRows;
            job(band, first, std::min(first + m_bandRows, m_endRow));
        });
    }

    void measureAll()
    {
        eachBand([this](int, int first, int end) {
            for (std::size_t i = rowStart(first); i < rowStart(end) && !m_cancel.isSet(); ++i) {
                const std::size_t at = m_level.index(m_targets[i].x, m_targets[i].y);
                m_costs[at] = patchDistance(m_targets[i], m_level.matches[at], kUnlimited);
            }
        });
    }

    [[nodiscard]] std::size_t rowStart(int y) const { return m_rows[static_cast<std::size_t>(y)]; }

    /// One round over all targets. Bands look at each other's last row as it was before the round.
    void search(bool isForward)
    {
        std::vector<std::uint32_t> seeds(static_cast<std::size_t>(m_bands));
        std::vector<std::vector<Place>> borders(seeds.size());
        for (int band = 0; band < m_bands && m_bands > 1; ++band) {
            const auto i = static_cast<std::size_t>(band);
            seeds[i] = m_random.next();
            const int first = m_firstRow + band * m_bandRows;
            const int row = isForward ? first - 1 : std::min(first + m_bandRows, m_endRow);
            if (row < 0 || row >= m_level.height)
                continue;
            const auto begin = m_level.matches.begin() + static_cast<std::ptrdiff_t>(m_level.index(0, row));
            borders[i].assign(begin, begin + m_level.width);
        }
        eachBand([&](int band, int first, int end) {
            const auto i = static_cast<std::size_t>(band);
            Random own(seeds[i]);
            searchBand(m_bands > 1 ? own : m_random, borders[i], isForward, first, end);
        });
    }

    void searchBand(Random &random, const std::vector<Place> &border, bool isForward, int first, int end)
    {
        const int back = isForward ? -1 : 1;
        const std::size_t begin = rowStart(first);
        const std::size_t count = rowStart(end) - begin;
        const int reach = std::max(m_level.width, m_level.height) / 2;
        for (std::size_t n = 0; n < count; ++n) {
            const Place target = m_targets[isForward ? begin + n : begin + count - 1 - n];
            if (target.x % 16 == 0 && m_cancel.isSet())
                return;
            const std::size_t at = m_level.index(target.x, target.y);
            Best best{m_level.matches[at], m_costs[at]};
            if (isTarget(target.x + back, target.y)) {
                const Place &beside = m_level.matches[m_level.index(target.x + back, target.y)];
                tryPlace(target, {beside.x - back, beside.y}, best);
            }
            if (const int row = target.y + back; isTarget(target.x, row)) {
                const bool isOutside = row < first || row >= end;
                const Place &beyond = isOutside && !border.empty() ? border[static_cast<std::size_t>(target.x)]
                                                                   : m_level.matches[m_level.index(target.x, row)];
                tryPlace(target, {beyond.x, beyond.y - back}, best);
            }
            for (int r = reach; r >= 1; r /= 2) {
                const int x = best.place.x + random.below(2 * r + 1) - r;
                const int y = best.place.y + random.below(2 * r + 1) - r;
                tryPlace(target, {x, y}, best);
            }
            m_level.matches[at] = best.place;
            m_costs[at] = best.cost;
        }
    }

    struct Best
    {
        Place place;
        int cost = 0;
    };

    [[nodiscard]] bool isTarget(int x, int y) const
    {
        return m_kinds[m_level.index(x, y)] == Target; // targets keep 3 pixels from every edge
    }

    void tryPlace(const Place &target, const Place &candidate, Best &best) const
    {
        if (!isSource(candidate.x, candidate.y) || candidate == best.place)
            return;
        const int cost = patchDistance(target, candidate, best.cost);
        if (cost < best.cost)
            best = {candidate, cost};
    }

    /// Every masked pixel becomes the mean of what the patches over it have found for it.
    void vote()
    {
        const int firstRow = m_firstRow - kRadius;
        const int endRow = m_endRow + kRadius;
        const int rows = m_bands == 1 ? endRow - firstRow : kBandRows;
        inParallel((endRow - firstRow + rows - 1) / rows, [&](int band) {
            const int first = firstRow + band * rows;
            if (!m_cancel.isSet())
                voteRows(first, std::min(first + rows, endRow));
        });
    }

    void voteRows(int first, int end)
    {
        const std::size_t stride = 4 * static_cast<std::size_t>(m_level.width);
        // A sum of 49 bytes fits 16 bits; the fourth of a pixel counts.
        std::vector<std::uint16_t> sums(stride * static_cast<std::size_t>(end - first));
        const std::size_t begin = rowStart(std::max(first - kRadius, 0));
        const std::size_t stop = rowStart(std::min(end + kRadius, m_level.height));
        for (std::size_t i = begin; i < stop; ++i) {
            const Place target = m_targets[i];
            const Place match = m_level.matches[m_level.index(target.x, target.y)];
            const int top = std::max(target.y - kRadius, first);
            const int bottom = std::min(target.y + kRadius, end - 1);
            const std::uint8_t *from = m_level.pixel(match.x - kRadius, match.y + top - target.y);
            std::uint16_t *to = sums.data() + stride * static_cast<std::size_t>(top - first) +
                                4 * static_cast<std::size_t>(target.x - kRadius);
            for (int y = top; y <= bottom; ++y, from += stride, to += stride) {
                for (std::size_t k = 0; k < kRowBytes; ++k)
                    to[k] = static_cast<std::uint16_t>(to[k] + from[k]);
            }
        }
        for (int y = first; y < end; ++y) {
            const std::uint16_t *sum = sums.data() + stride * static_cast<std::size_t>(y - first);
            std::uint8_t *to = m_level.pixel(0, y);
            for (int x = 0; x < m_level.width; ++x, sum += 4, to += 4) {
                const int count = sum[3];
                if (count == 0 || !m_level.mask.has(x, y))
                    continue;
                for (std::size_t c = 0; c < 3; ++c)
                    to[c] = static_cast<std::uint8_t>((sum[c] + count / 2) / count);
            }
        }
    }

    Level &m_level;
    Random &m_random;
    const CancelFlag &m_cancel;
    std::vector<Kind> m_kinds;
    std::vector<Place> m_targets; ///< row by row
    std::vector<Place> m_sources;
    std::vector<std::size_t> m_rows; ///< per row: its first target
    std::vector<int> m_costs;
    int m_firstRow = 0;
    int m_endRow = 0;
    int m_bandRows = 1;
    int m_bands = 1;
};

/// Starts a level from what the coarser one has found.
void carryUp(const Level &coarse, Level &level)
{
    FloatImage colors(coarse.width, coarse.height);
    for (std::size_t i = 0; i < coarse.mask.bytes.size(); ++i)
        std::copy_n(coarse.pixels.data() + 4 * i, 3, colors.values.data() + 3 * i);
    level.matches.assign(level.mask.bytes.size(), {});
    for (int y = 0; y < level.height; ++y) {
        for (int x = 0; x < level.width; ++x) {
            if (level.mask.has(x, y)) {
                const auto sample = sampleHalf(colors, x, y);
                std::uint8_t *pixel = level.pixel(x, y);
                for (std::size_t c = 0; c < 3; ++c)
                    pixel[c] = static_cast<std::uint8_t>(std::lroundf(sample[c]));
            }
            if (coarse.matches.empty())
                continue;
            const int parentX = std::min(x / 2, coarse.width - 1);
            const int parentY = std::min(y / 2, coarse.height - 1);
            const Place parent = coarse.matches[coarse.index(parentX, parentY)];
            if (parent.x >= 0)
                level.matches[level.index(x, y)] = {2 * parent.x + x % 2, 2 * parent.y + y % 2};
        }
    }
}

int levelCount(const Mask &mask)
{
    const QRect hole = mask.bounds();
    int holeSide = std::max(1, std::min(hole.width(), hole.height()));
    int side = std::min(mask.width, mask.height);
    int levels = 1;
    while (levels < kMostLevels && holeSide >= kSmallestHole && side >= kSmallestPicture) {
        holeSide /= 2;
        side /= 2;
        ++levels;
    }
    return levels;
}

} // namespace

void patchFill(PixelBuffer &buffer, const Mask &mask, const CancelFlag &cancel)
{
    if (mask.width != buffer.width || mask.height != buffer.height || mask.bounds().isEmpty())
        return;
    const int count = levelCount(mask);
    std::vector<Level> levels{levelOf(buffer, mask)};
    PixelBuffer pixels = buffer;
    Mask holes = mask;
    while (static_cast<int>(levels.size()) < count) {
        PixelBuffer half;
        Mask halfHoles;
        halve(pixels, holes, half, halfHoles);
        pixels = std::move(half);
        holes = std::move(halfHoles);
        levels.push_back(levelOf(pixels, holes));
    }
    harmonicFill(pixels, holes, kCoarseSweeps, cancel);
    levels.back() = levelOf(pixels, holes);

    Random random(0x9e3779b9U);
    for (int i = count - 1; i >= 0 && !cancel.isSet(); --i) {
        Level &level = levels[static_cast<std::size_t>(i)];
        const bool isCoarsest = i == count - 1;
        if (!isCoarsest)
            carryUp(levels[static_cast<std::size_t>(i) + 1], level);
        int iterations = isCoarsest ? 6 : 4;
        if (i == 0 && !isCoarsest)
            iterations = 2;
        if (i == 0 && mask.count() >= kLargeHole)
            iterations = 1;
        Matcher(level, random, cancel).run(iterations);
    }
    copyColors(levels.front(), buffer);
}

} // namespace tavrel::erase
