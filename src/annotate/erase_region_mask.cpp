#include "annotate/erase_region_mask.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace tavrel::erase {
namespace {

constexpr int kForeign = 48;
constexpr int kCleanDifference = 12;
constexpr int kLowestThreshold = 12;
constexpr int kHighestThreshold = 96;
constexpr int kFullPercent = 35;
constexpr int kSubjectGrowth = 2;

/// What one side of the ring says about the background: a colour for each position along the side.
using Side = std::vector<Rgb>;

/// The ring of pixels around the margin of a box. A side that does not lie wholly in the buffer is empty.
class Ring final
{
public:
    Ring(const PixelBuffer &buffer, const QRect &box) : m_buffer(buffer), m_box(box)
    {
        const RegionSizes sizes = regionSizes(box.size());
        m_width = sizes.ringWidth;
        const int reach = sizes.margin + sizes.ringWidth;
        const bool hasTop = box.top() - reach >= 0;
        const bool hasBottom = box.bottom() + reach < buffer.height;
        const bool hasLeft = box.left() - reach >= 0;
        const bool hasRight = box.right() + reach < buffer.width;
        const QPoint right(1, 0);
        const QPoint down(0, 1);
        const auto strip = [this](bool isThere, const QPoint &first, const QPoint &along, const QPoint &across) {
            return Strip{first, along, across, !isThere ? 0 : along.x() != 0 ? m_box.width() : m_box.height()};
        };
        m_strips = {strip(hasTop, {box.left(), box.top() - reach}, right, down),
                    strip(hasBottom, {box.left(), box.bottom() + sizes.margin + 1}, right, down),
                    strip(hasLeft, {box.left() - reach, box.top()}, down, right),
                    strip(hasRight, {box.right() + sizes.margin + 1, box.top()}, down, right)};
        findMedian();
        for (std::size_t i = 0; i < m_strips.size(); ++i)
            m_sides[i] = represent(m_strips[i]);
    }

    [[nodiscard]] const Side &top() const { return m_sides[0]; }
    [[nodiscard]] const Side &bottom() const { return m_sides[1]; }
    [[nodiscard]] const Side &left() const { return m_sides[2]; }
    [[nodiscard]] const Side &right() const { return m_sides[3]; }
    [[nodiscard]] double noise() { return m_differences.empty() ? 0 : median(m_differences); }

private:
    struct Strip
    {
        QPoint first;
        QPoint along;
        QPoint across;
        int length = 0;
    };

    [[nodiscard]] Rgb pixel(const Strip &strip, int position, int depth) const
    {
        const QPoint at = strip.first + strip.along * position + strip.across * depth;
        return m_buffer.at(at.x(), at.y());
    }

    template <typename T>
    static T median(std::vector<T> &values)
    {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }

    void findMedian()
    {
        std::array<std::vector<int>, 3> channels;
        for (const Strip &strip : m_strips) {
            for (int i = 0; i < strip.length; ++i) {
                for (int d = 0; d < m_width; ++d) {
                    const Rgb color = pixel(strip, i, d);
                    channels[0].push_back(color.r);
                    channels[1].push_back(color.g);
                    channels[2].push_back(color.b);
                }
            }
        }
        if (!channels[0].empty())
            m_median = {median(channels[0]), median(channels[1]), median(channels[2])};
    }

    /// The pixel of each position that is nearest to the median; the median itself where something foreign crosses.
    Side represent(const Strip &strip)
    {
        Side side;
        side.reserve(static_cast<std::size_t>(strip.length));
        for (int i = 0; i < strip.length; ++i) {
            Rgb best = pixel(strip, i, 0);
            for (int d = 1; d < m_width; ++d) {
                const Rgb color = pixel(strip, i, d);
                if (distance(color, m_median) < distance(best, m_median))
                    best = color;
            }
            if (distance(best, m_median) > kForeign)
                best = m_median;
            for (int d = 0; d < m_width; ++d)
                m_differences.push_back(distance(pixel(strip, i, d), best));
            side.push_back(best);
        }
        return side;
    }

    const PixelBuffer &m_buffer;
    QRect m_box;
    int m_width = 0;
    std::array<Strip, 4> m_strips;
    std::array<Side, 4> m_sides;
    Rgb m_median;
    std::vector<int> m_differences;
};

/// Weighted sum of colours.
struct Blend
{
    double r = 0;
    double g = 0;
    double b = 0;
    double total = 0;

    void add(const Side &side, int i, double weight)
    {
        if (side.empty())
            return;
        const Rgb &color = side[static_cast<std::size_t>(i)];
        r += color.r * weight;
        g += color.g * weight;
        b += color.b * weight;
        total += weight;
    }
    [[nodiscard]] Rgb color() const
    {
        const auto rounded = [this](double sum) { return static_cast<int>(std::lround(sum / total)); };
        return {rounded(r), rounded(g), rounded(b)};
    }
};

/// The colour outside the box: that of the side which the pixel lies behind.
std::optional<Rgb> outerPrediction(const Ring &ring, const QRect &box, int x, int y, int ix, int iy)
{
    const auto at = [](const Side &side, int i) { return side[static_cast<std::size_t>(i)]; };
    if (y < box.top() && !ring.top().empty())
        return at(ring.top(), ix);
    if (y > box.bottom() && !ring.bottom().empty())
        return at(ring.bottom(), ix);
    if (x < box.left() && !ring.left().empty())
        return at(ring.left(), iy);
    if (x > box.right() && !ring.right().empty())
        return at(ring.right(), iy);
    if (!ring.top().empty())
        return at(ring.top(), ix);
    if (!ring.left().empty())
        return at(ring.left(), iy);
    return {};
}

PixelBuffer predict(const PixelBuffer &buffer, const QRect &box, const Ring &ring)
{
    std::vector<double> weights(static_cast<std::size_t>(std::max(box.width(), box.height())));
    for (std::size_t i = 0; i < weights.size(); ++i)
        weights[i] = 1.0 / static_cast<double>(i + 1);
    const auto weight = [&weights](int steps) { return weights[static_cast<std::size_t>(steps)]; };
    PixelBuffer predicted = buffer;
    for (int y = 0; y < buffer.height; ++y) {
        const int iy = std::clamp(y - box.top(), 0, box.height() - 1);
        const bool isRowInside = y >= box.top() && y <= box.bottom();
        for (int x = 0; x < buffer.width; ++x) {
            const int ix = std::clamp(x - box.left(), 0, box.width() - 1);
            if (!isRowInside || x < box.left() || x > box.right()) {
                if (const auto color = outerPrediction(ring, box, x, y, ix, iy))
                    predicted.set(x, y, *color);
                continue;
            }
            Blend blend;
            blend.add(ring.top(), ix, weight(iy));
            blend.add(ring.bottom(), ix, weight(box.height() - 1 - iy));
            blend.add(ring.left(), iy, weight(ix));
            blend.add(ring.right(), iy, weight(box.width() - 1 - ix));
            if (blend.total > 0)
                predicted.set(x, y, blend.color());
        }
    }
    return predicted;
}

/// 255 where the picture is farther than `threshold` from what is expected there.
std::vector<std::uint8_t> differences(const PixelBuffer &buffer, const PixelBuffer &background, int threshold)
{
    std::vector<std::uint8_t> differs;
    differs.reserve(static_cast<std::size_t>(buffer.width) * static_cast<std::size_t>(buffer.height));
    for (int y = 0; y < buffer.height; ++y) {
        for (int x = 0; x < buffer.width; ++x)
            differs.push_back(distance(buffer.at(x, y), background.at(x, y)) > threshold ? 255 : 0);
    }
    return differs;
}

/// Takes the background for what strays from it outside the mask.
void cleanOutside(PixelBuffer &buffer, const Mask &mask, const PixelBuffer &background)
{
    for (int y = 0; y < buffer.height; ++y) {
        for (int x = 0; x < buffer.width; ++x) {
            const Rgb expected = background.at(x, y);
            if (!mask.has(x, y) && distance(buffer.at(x, y), expected) > kCleanDifference)
                buffer.set(x, y, expected);
        }
    }
}

/// Follows the object from the mask over the edge of the box.
void grow(Mask &mask, const QRect &limits, const std::vector<std::uint8_t> &differs)
{
    Mask seen = mask;
    std::vector<QPoint> queue;
    const auto visit = [&](int x, int y) {
        if (!limits.contains(x, y) || seen.has(x, y))
            return;
        seen.bytes[seen.index(x, y)] = 255;
        queue.emplace_back(x, y);
    };
    const auto visitAround = [&visit](int x, int y) {
        visit(x - 1, y);
        visit(x + 1, y);
        visit(x, y - 1);
        visit(x, y + 1);
    };
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < mask.width; ++x) {
            if (mask.has(x, y))
                visitAround(x, y);
        }
    }
    for (std::size_t next = 0; next < queue.size(); ++next) {
        const QPoint at = queue[next];
        const std::size_t i = mask.index(at.x(), at.y());
        if (!differs[i])
            continue;
        mask.bytes[i] = 255;
        visitAround(at.x(), at.y());
    }
}

} // namespace

Mask buildRegionMask(const PixelBuffer &buffer, const QRect &wanted, RegionMaskStats *stats, PixelBuffer *cleaned,
                     PixelBuffer *predicted)
{
    Mask mask(buffer.width, buffer.height);
    const QRect box = wanted.intersected(buffer.rect());
    if (cleaned)
        *cleaned = buffer;
    if (predicted)
        *predicted = buffer;
    if (stats)
        *stats = {};
    if (buffer.isEmpty() || wanted.isEmpty() || box.isEmpty())
        return mask;

    const RegionSizes sizes = regionSizes(box.size());
    Ring ring(buffer, box);
    RegionMaskStats found;
    found.noise = ring.noise();
    found.threshold = std::clamp(static_cast<int>(std::lround(2.0 * found.noise)), kLowestThreshold, kHighestThreshold);
    const PixelBuffer background = predict(buffer, box, ring);

    const std::vector<std::uint8_t> differs = differences(buffer, background, found.threshold);
    for (int y = box.top(); y <= box.bottom(); ++y) {
        const auto from = differs.begin() + static_cast<std::ptrdiff_t>(mask.index(box.left(), y));
        const auto to = mask.bytes.begin() + static_cast<std::ptrdiff_t>(mask.index(box.left(), y));
        std::copy_n(from, box.width(), to);
    }
    found.subjectPixels = mask.count();
    const qint64 total = qint64{box.width()} * box.height();
    found.fellBack = found.subjectPixels == 0 || qint64{found.subjectPixels} * 100 >= total * kFullPercent;
    if (found.fellBack)
        mask.fill(box.adjusted(-sizes.margin, -sizes.margin, sizes.margin, sizes.margin));
    else
        dilate(mask, kSubjectGrowth);
    const QRect limits =
        box.adjusted(-sizes.growReach, -sizes.growReach, sizes.growReach, sizes.growReach).intersected(buffer.rect());
    grow(mask, limits, differs);
    found.maskPixels = mask.count();

    if (cleaned)
        cleanOutside(*cleaned, mask, background);
    if (stats)
        *stats = found;
    if (predicted)
        *predicted = background;
    return mask;
}

} // namespace tavrel::erase
