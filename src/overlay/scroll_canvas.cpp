#include "overlay/scroll_canvas.h"

#include <algorithm>

namespace tavrel::ui {

ScrollCanvas::ScrollCanvas(const GreyFrame &first) : m_width(first.width()), m_origin(-kSpare)
{
    const auto capacity = static_cast<std::size_t>(first.height() + 2 * kSpare);
    m_grey.resize(capacity * static_cast<std::size_t>(m_width));
    m_filled.resize(capacity);
    m_signatures.resize(capacity);
    m_height = first.height();
    take(first, {{0, 0, first.height()}});
}

void ScrollCanvas::countFilled()
{
    m_filledBefore.resize(m_filled.size() + 1);
    m_filledBefore[0] = 0;
    for (std::size_t i = 0; i < m_filled.size(); ++i)
        m_filledBefore[i + 1] = m_filledBefore[i] + m_filled[i];
}

bool ScrollCanvas::isFilled(int first, int end) const noexcept
{
    if (first >= end)
        return true;
    if (first < m_top || end > this->end())
        return false;
    return m_filledBefore[static_cast<std::size_t>(end - m_origin)] -
               m_filledBefore[static_cast<std::size_t>(first - m_origin)] ==
           end - first;
}

void ScrollCanvas::include(int first, int end)
{
    first = std::min(first, m_top);
    end = std::max(end, this->end());
    const int stored = static_cast<int>(m_filled.size());
    const int before = first < m_origin ? m_origin - first + kSpare : 0;
    const int after = end > m_origin + stored ? end - m_origin - stored + kSpare : 0;
    if (before > 0) {
        m_grey.insert(m_grey.begin(), static_cast<std::size_t>(before) * static_cast<std::size_t>(m_width), 0);
        m_filled.insert(m_filled.begin(), static_cast<std::size_t>(before), 0);
        m_signatures.insert(m_signatures.begin(), static_cast<std::size_t>(before), 0);
        m_origin -= before;
    }
    m_filled.resize(m_filled.size() + static_cast<std::size_t>(after));
    m_signatures.resize(m_filled.size());
    m_grey.resize(m_filled.size() * static_cast<std::size_t>(m_width));
    m_top = first;
    m_height = end - first;
}

void ScrollCanvas::take(const GreyFrame &frame, const std::vector<ScrollRun> &runs)
{
    for (const ScrollRun &run : runs) {
        include(run.pageRow, run.pageRow + run.rows);
        std::copy_n(frame.row(run.frameRow), static_cast<std::ptrdiff_t>(run.rows) * m_width,
                    m_grey.begin() + static_cast<std::ptrdiff_t>(run.pageRow - m_origin) * m_width);
        for (int row = 0; row < run.rows; ++row)
            m_signatures[static_cast<std::size_t>(run.pageRow + row - m_origin)] = frame.signature(run.frameRow + row);
        std::fill_n(m_filled.begin() + (run.pageRow - m_origin), run.rows, std::uint8_t{1});
    }
    countFilled();
}

void ScrollCanvas::cut(int first, int end)
{
    first = std::max(first, m_top);
    end = std::min(end, this->end());
    std::fill(m_filled.begin(), m_filled.begin() + (first - m_origin), std::uint8_t{0});
    std::fill(m_filled.begin() + (end - m_origin), m_filled.end(), std::uint8_t{0});
    m_top = first;
    m_height = end - first;
    countFilled();
}

} // namespace tavrel::ui
