#include "annotate/erase_segment.h"

#include "annotate/erase_color_mixture.h"
#include "annotate/erase_max_flow.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel::erase {
namespace {

constexpr int kSmallestSide = 8;
constexpr int kMostCells = 112;
constexpr std::size_t kLeastRingSamples = 8;
constexpr std::size_t kLeastForeground = 12;
constexpr int kMostRounds = 5;
constexpr double kSmoothness = 50.0;
constexpr double kPrior = 3.0;
constexpr double kPriorSpread = 0.1568;
constexpr double kRingQuantile = 0.995;
constexpr double kRingSlack = 1.5;
constexpr double kSureBackground = 2.5;
constexpr double kLeastFraction = 0.005;
constexpr double kGreatestFraction = 0.97;

struct Offset
{
    int x = 0;
    int y = 0;
    double length = 1;
};
constexpr std::array kOffsets{Offset{1, 0, 1}, Offset{0, 1, 1}, Offset{1, 1, 1.4142135}, Offset{-1, 1, 1.4142135}};

double squaredDistance(const Color &a, const Color &b)
{
    double sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const auto d = static_cast<double>(a[c] - b[c]);
        sum += d * d;
    }
    return sum;
}

Color colorAt(const PixelBuffer &buffer, int x, int y)
{
    const Rgb color = buffer.at(x, y);
    return {static_cast<float>(color.r), static_cast<float>(color.g), static_cast<float>(color.b)};
}

using Labels = std::vector<std::uint8_t>;

/// The box as cells, what is known about them, and the cut through them.
class SubjectGrid final
{
public:
    SubjectGrid(const PixelBuffer &buffer, const QRect &box)
        : m_buffer(buffer),
          m_box(box),
          m_step(std::max(1, (std::max(box.width(), box.height()) + kMostCells - 1) / kMostCells)),
          m_width((box.width() + m_step - 1) / m_step),
          m_height((box.height() + m_step - 1) / m_step)
    {
        averageCells();
        sampleRing();
        findBeta();
        linkBorder();
    }

    [[nodiscard]] int step() const { return m_step; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] bool hasRing() const { return m_ring.size() >= kLeastRingSamples; }

    /// 1 where a cell may belong to the subject, 0 where it surely does not.
    std::vector<float> softLabels(int &iterations, const CancelFlag &cancel)
    {
        const ColorMixture background = ColorMixture::fit(m_ring);
        ColorMixture foreground = ColorMixture::fit(middleSamples());
        m_background = likelihoods(background);
        Labels labels(m_cells.size(), 0);
        for (int round = 0; round < kMostRounds && !cancel.isSet(); ++round) {
            m_foreground = likelihoods(foreground);
            const Labels cutLabels = cut();
            std::size_t changed = 0;
            for (std::size_t i = 0; i < labels.size(); ++i)
                changed += labels[i] != cutLabels[i] ? 1 : 0;
            labels = cutLabels;
            ++iterations;
            if (round > 0 && changed * 200 < m_cells.size())
                break;
            std::vector<Color> samples;
            for (std::size_t i = 0; i < labels.size(); ++i) {
                if (labels[i])
                    samples.push_back(m_cells[i]);
            }
            if (samples.size() < kLeastForeground)
                break;
            foreground = ColorMixture::fit(std::move(samples));
        }
        return soften(labels, background, foreground);
    }

private:
    [[nodiscard]] std::size_t index(int gx, int gy) const
    {
        return static_cast<std::size_t>(gy) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(gx);
    }

    void averageCells()
    {
        m_cells.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
        for (int gy = 0; gy < m_height; ++gy) {
            for (int gx = 0; gx < m_width; ++gx) {
                const QRect cell = QRect(m_box.left() + gx * m_step, m_box.top() + gy * m_step, m_step, m_step) & m_box;
                Color sum{};
                for (int y = cell.top(); y <= cell.bottom(); ++y) {
                    for (int x = cell.left(); x <= cell.right(); ++x) {
                        const Color color = colorAt(m_buffer, x, y);
                        for (std::size_t c = 0; c < 3; ++c)
                            sum[c] += color[c];
                    }
                }
                for (float &channel : sum)
                    channel /= static_cast<float>(cell.width() * cell.height());
                m_cells[index(gx, gy)] = sum;
            }
        }
    }

    void sampleRing()
    {
        const int reach = std::clamp(3 * m_step, 4, 24);
        const QRect outer = m_box.adjusted(-reach, -reach, reach, reach);
        for (int y = outer.top(); y <= outer.bottom(); y += m_step) {
            for (int x = outer.left(); x <= outer.right(); x += m_step) {
                if (!m_box.contains(x, y) && m_buffer.rect().contains(x, y))
                    m_ring.push_back(colorAt(m_buffer, x, y));
            }
        }
    }

    template <typename Visit>
    void eachPair(const Visit &visit) const
    {
        for (int gy = 0; gy < m_height; ++gy) {
            for (int gx = 0; gx < m_width; ++gx) {
                for (const Offset &offset : kOffsets) {
                    const int nx = gx + offset.x;
                    const int ny = gy + offset.y;
                    if (nx >= 0 && nx < m_width && ny < m_height)
                        visit(index(gx, gy), index(nx, ny), offset.length);
                }
            }
        }
    }

    void findBeta()
    {
        double sum = 0;
        double count = 0;
        eachPair([&](std::size_t a, std::size_t b, double) {
            sum += squaredDistance(m_cells[a], m_cells[b]);
            count += 1;
        });
        m_beta = count > 0 && sum > 0.001 ? count / (2 * sum) : 0;
    }

    /// Ties each cell on the border of the grid to the background as far as it looks like the pixel beside it.
    void linkBorder()
    {
        m_links.resize(m_cells.size());
        const auto link = [this](int gx, int gy, int x, int y) {
            if (m_buffer.rect().contains(x, y)) {
                const double far = squaredDistance(m_cells[index(gx, gy)], colorAt(m_buffer, x, y));
                m_links[index(gx, gy)] += kSmoothness * std::exp(-m_beta * far);
            }
        };
        for (int gy = 0; gy < m_height; ++gy) {
            const int y = m_box.top() + gy * m_step + m_step / 2;
            link(0, gy, m_box.left() - 1, y);
            link(m_width - 1, gy, m_box.right() + 1, y);
        }
        for (int gx = 0; gx < m_width; ++gx) {
            const int x = m_box.left() + gx * m_step + m_step / 2;
            link(gx, 0, x, m_box.top() - 1);
            link(gx, m_height - 1, x, m_box.bottom() + 1);
        }
    }

    [[nodiscard]] std::vector<Color> middleSamples() const
    {
        const auto isInMiddle = [](int g, int count) { return g >= 0.2 * count && g < 0.8 * count; };
        std::vector<Color> samples;
        for (int gy = 0; gy < m_height; ++gy) {
            for (int gx = 0; gx < m_width; ++gx) {
                if (isInMiddle(gx, m_width) && isInMiddle(gy, m_height))
                    samples.push_back(m_cells[index(gx, gy)]);
            }
        }
        return samples.size() < kLeastForeground ? m_cells : samples;
    }

    [[nodiscard]] std::vector<double> likelihoods(const ColorMixture &mixture) const
    {
        std::vector<double> result(m_cells.size());
        std::transform(m_cells.begin(), m_cells.end(), result.begin(),
                       [&mixture](const Color &cell) { return mixture.negativeLogLikelihood(cell); });
        return result;
    }

    [[nodiscard]] Labels cut() const
    {
        const auto cells = static_cast<int>(m_cells.size());
        const int source = cells;
        const int sink = cells + 1;
        MaxFlow graph(cells + 2);
        graph.reserveEdges(m_cells.size() * (2 + kOffsets.size()));
        for (int gy = 0; gy < m_height; ++gy) {
            for (int gx = 0; gx < m_width; ++gx) {
                const std::size_t i = index(gx, gy);
                const double u = (gx + 0.5) / m_width - 0.5;
                const double v = (gy + 0.5) / m_height - 0.5;
                const double prior = std::exp(-(u * u + v * v) / kPriorSpread);
                const double fromSource = std::max(0.0, m_background[i]) + kPrior * prior;
                const double toSink = std::max(0.0, m_foreground[i]) + kPrior * (1 - prior) + m_links[i];
                graph.addEdge(source, static_cast<int>(i), static_cast<float>(fromSource));
                graph.addEdge(static_cast<int>(i), sink, static_cast<float>(toSink));
            }
        }
        eachPair([&](std::size_t a, std::size_t b, double length) {
            const double far = squaredDistance(m_cells[a], m_cells[b]);
            const auto capacity = static_cast<float>(kSmoothness / length * std::exp(-m_beta * far));
            graph.addEdge(static_cast<int>(a), static_cast<int>(b), capacity, capacity);
        });
        graph.run(source, sink);
        Labels labels = graph.sourceSide(source);
        labels.resize(m_cells.size());
        return labels;
    }

    /// Only what is confidently background stays background.
    [[nodiscard]] std::vector<float> soften(const Labels &labels, const ColorMixture &background,
                                            const ColorMixture &foreground) const
    {
        std::vector<double> scores(m_ring.size());
        std::transform(m_ring.begin(), m_ring.end(), scores.begin(),
                       [&background](const Color &color) { return background.negativeLogLikelihood(color); });
        std::sort(scores.begin(), scores.end());
        const auto quantile = static_cast<std::size_t>(kRingQuantile * static_cast<double>(scores.size()));
        const double highest = scores[std::min(quantile, scores.size() - 1)] + kRingSlack;
        std::vector<float> soft(m_cells.size(), 1.0F);
        for (std::size_t i = 0; i < soft.size(); ++i) {
            const double asForeground = foreground.negativeLogLikelihood(m_cells[i]);
            if (!labels[i] && asForeground - m_background[i] > kSureBackground && m_background[i] <= highest)
                soft[i] = 0.0F;
        }
        return soft;
    }

    const PixelBuffer &m_buffer;
    QRect m_box;
    int m_step = 1;
    int m_width = 0;
    int m_height = 0;
    double m_beta = 0;
    std::vector<Color> m_cells;
    std::vector<Color> m_ring;
    std::vector<double> m_links; ///< to the background
    std::vector<double> m_background;
    std::vector<double> m_foreground;
};

/// Soft labels of cells as a mask of pixels.
Mask spread(const std::vector<float> &soft, const SubjectGrid &grid, const QSize &size)
{
    Mask mask(size.width(), size.height());
    const auto place = [&grid](int at, int cells) {
        const double exact = (at + 0.5) / grid.step() - 0.5;
        return std::clamp(exact, 0.0, static_cast<double>(cells - 1));
    };
    for (int y = 0; y < mask.height; ++y) {
        const double sy = place(y, grid.height());
        const int y0 = static_cast<int>(sy);
        const float *upper = soft.data() + static_cast<std::ptrdiff_t>(y0) * grid.width();
        const float *lower =
            soft.data() + static_cast<std::ptrdiff_t>(std::min(y0 + 1, grid.height() - 1)) * grid.width();
        const auto fy = static_cast<float>(sy - y0);
        for (int x = 0; x < mask.width; ++x) {
            const double sx = place(x, grid.width());
            const int x0 = static_cast<int>(sx);
            const int x1 = std::min(x0 + 1, grid.width() - 1);
            const auto fx = static_cast<float>(sx - x0);
            const float top = upper[x0] * (1 - fx) + upper[x1] * fx;
            const float bottom = lower[x0] * (1 - fx) + lower[x1] * fx;
            mask.bytes[mask.index(x, y)] = top * (1 - fy) + bottom * fy > 0.5F ? 255 : 0;
        }
    }
    return mask;
}

/// Turns over the 4-connected patches of `value` that have fewer than `least` pixels. Patches that touch the edge of
/// the mask stay when `edgeCounts` says so.
void removeSpecks(Mask &mask, bool value, int least, bool edgeCounts)
{
    std::vector<std::uint8_t> seen(mask.bytes.size(), 0);
    std::vector<QPoint> patch;
    for (int startY = 0; startY < mask.height; ++startY) {
        for (int startX = 0; startX < mask.width; ++startX) {
            if (mask.has(startX, startY) != value || seen[mask.index(startX, startY)])
                continue;
            patch.clear();
            bool touchesEdge = false;
            const auto visit = [&](int x, int y) {
                if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) {
                    touchesEdge = true;
                    return;
                }
                const std::size_t i = mask.index(x, y);
                if (seen[i] || (mask.bytes[i] != 0) != value)
                    return;
                seen[i] = 1;
                patch.emplace_back(x, y);
            };
            visit(startX, startY);
            for (std::size_t next = 0; next < patch.size(); ++next) {
                const QPoint at = patch[next];
                visit(at.x() - 1, at.y());
                visit(at.x() + 1, at.y());
                visit(at.x(), at.y() - 1);
                visit(at.x(), at.y() + 1);
            }
            if (patch.size() >= static_cast<std::size_t>(least) || (edgeCounts && touchesEdge))
                continue;
            for (const QPoint &at : patch)
                mask.bytes[mask.index(at.x(), at.y())] = value ? 0 : 255;
        }
    }
}

} // namespace

Mask segmentSubject(const PixelBuffer &buffer, const QRect &wanted, SubjectStats *stats, const CancelFlag &cancel)
{
    SubjectStats found;
    if (stats)
        *stats = found;
    const QRect box = wanted.intersected(buffer.rect());
    Mask whole(buffer.width, buffer.height);
    whole.fill(box);
    if (box.width() < kSmallestSide || box.height() < kSmallestSide)
        return whole;
    SubjectGrid grid(buffer, box);
    found.step = grid.step();
    if (stats)
        *stats = found;
    if (!grid.hasRing())
        return whole;

    Mask subject = spread(grid.softLabels(found.iterations, cancel), grid, box.size());
    const int area = box.width() * box.height();
    removeSpecks(subject, true, std::max(16, area / 400), false);
    removeSpecks(subject, false, std::max(16, area / 300), true);
    found.fraction = static_cast<double>(subject.count()) / area;
    found.ok = found.fraction >= kLeastFraction && found.fraction <= kGreatestFraction;
    if (stats)
        *stats = found;
    if (!found.ok)
        return whole;
    Mask result(buffer.width, buffer.height);
    for (int y = 0; y < subject.height; ++y)
        std::copy_n(subject.bytes.data() + subject.index(0, y), subject.width,
                    result.bytes.data() + result.index(box.left(), box.top() + y));
    return result;
}

} // namespace tavrel::erase
