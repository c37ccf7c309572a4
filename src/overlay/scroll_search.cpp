#include "overlay/scroll_search.h"

#include "overlay/scroll_rows.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace tavrel::ui {

ScrollSearch::ScrollSearch(const GreyFrame &frame, const ScrollCanvas &canvas, int first, int end)
    : m_frame(frame),
      m_canvas(canvas),
      m_first(std::max(first, canvas.top())),
      m_end(std::min(end, canvas.end()))
{
    m_end = std::max(m_end, m_first);
    m_base = m_first;
    const auto blocks = static_cast<std::size_t>(frame.blocks());
    m_sums.resize((static_cast<std::size_t>(m_end - m_first) + 1) * blocks);
    std::int32_t *sums = m_sums.data();
    for (int y = m_first; y < m_end; ++y, sums += blocks) {
        if (canvas.isFilled(y))
            scroll_rows::addBlocks(canvas.row(y), canvas.width(), sums, sums + blocks);
        else
            std::copy_n(sums, blocks, sums + blocks);
    }
}

void ScrollSearch::shrinkToCanvas()
{
    m_first = std::max(m_first, m_canvas.top());
    m_end = std::max(std::min(m_end, m_canvas.end()), m_first);
}

int ScrollSearch::overlap(int y, int rows, int offset) const
{
    return std::max(0, std::min(y + offset + rows, m_end) - std::max(y + offset, m_first));
}

std::optional<ScrollSearch::Coarse> ScrollSearch::coarse(int y, int rows, int offset, int minOverlap) const
{
    const int first = std::max(y + offset, m_first);
    const int end = std::min(y + offset + rows, m_end);
    if (end - first < minOverlap || !m_canvas.isFilled(first, end))
        return std::nullopt;
    const std::ptrdiff_t blocks = m_frame.blocks();
    const std::int32_t *sums = m_sums.data();
    return Coarse{scroll_rows::blockDifference(m_frame.sumsTo(first - offset), m_frame.sumsTo(end - offset),
                                               sums + (first - m_base) * blocks, sums + (end - m_base) * blocks,
                                               m_frame.blocks()),
                  end - first};
}

std::optional<FineScore> ScrollSearch::fine(int y, int rows, int offset, int minOverlap) const
{
    const int first = std::max(y + offset, m_first);
    const int end = std::min(y + offset + rows, m_end);
    if (end - first < minOverlap || end <= first || !m_canvas.isFilled(first, end))
        return std::nullopt;
    const int width = m_canvas.width();
    std::vector<std::int32_t> differences(static_cast<std::size_t>(end - first));
    for (int c = first; c < end; ++c) {
        differences[static_cast<std::size_t>(c - first)] =
            scroll_rows::difference(m_frame.row(c - offset), m_canvas.row(c), width);
    }
    const int kept = std::max(1, (end - first) * 2 / 3);
    const auto all = std::accumulate(differences.begin(), differences.end(), std::int64_t{0});
    std::nth_element(differences.begin(), differences.begin() + (kept - 1), differences.end());
    const auto best = std::accumulate(differences.begin(), differences.begin() + kept, std::int64_t{0});
    return FineScore{static_cast<double>(best) / kept / width, static_cast<double>(all) / (end - first) / width};
}

bool ScoredOffset::isBetterThan(const ScoredOffset &other, int reference) const
{
    if (score.score != other.score.score)
        return score.score < other.score.score;
    if (score.mean != other.score.mean)
        return score.mean < other.score.mean;
    return std::abs(offset - reference) < std::abs(other.offset - reference);
}

} // namespace tavrel::ui
