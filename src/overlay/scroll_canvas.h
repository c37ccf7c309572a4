#pragma once

#include "overlay/scroll_grey_frame.h"

namespace tavrel::ui {

/// Rows of a frame that the page takes.
struct ScrollRun
{
    int frameRow = 0;
    int pageRow = 0;
    int rows = 0;
    friend bool operator==(const ScrollRun &, const ScrollRun &) = default;
};

/// The grey rows that are known of a page; it grows at both ends and may have holes. Row numbers are those of the page:
/// row y of a frame at offset o is row y + o.
class ScrollCanvas final
{
public:
    /// Begins with a frame at offset 0.
    explicit ScrollCanvas(const GreyFrame &first);

    [[nodiscard]] int width() const noexcept { return m_width; }
    [[nodiscard]] int top() const noexcept { return m_top; }
    [[nodiscard]] int height() const noexcept { return m_height; }
    [[nodiscard]] int end() const noexcept { return m_top + m_height; }
    [[nodiscard]] const std::uint8_t *row(int y) const noexcept
    {
        return m_grey.data() + static_cast<std::ptrdiff_t>(y - m_origin) * m_width;
    }
    /// Of a filled row.
    [[nodiscard]] std::uint64_t signature(int y) const noexcept
    {
        return m_signatures[static_cast<std::size_t>(y - m_origin)];
    }
    [[nodiscard]] bool isFilled(int y) const noexcept
    {
        return y >= m_top && y < end() && m_filled[static_cast<std::size_t>(y - m_origin)] != 0;
    }
    /// Every row of [first, end) has content. True for an empty range.
    [[nodiscard]] bool isFilled(int first, int end) const noexcept;

    /// Grows as far as the runs reach, with holes between them, and copies their rows in.
    void take(const GreyFrame &frame, const std::vector<ScrollRun> &runs);
    /// Forgets the rows outside [first, end).
    void cut(int first, int end);

private:
    static constexpr int kSpare = 2048; ///< rows that growing takes beyond what is needed

    void include(int first, int end);
    void countFilled();

    int m_width = 0;
    int m_origin = 0; ///< page row of the first stored row
    int m_top = 0;
    int m_height = 0;
    std::vector<std::uint8_t> m_grey;
    std::vector<std::uint64_t> m_signatures;  ///< one per stored row
    std::vector<std::uint8_t> m_filled;       ///< one per stored row
    std::vector<std::int32_t> m_filledBefore; ///< running count over m_filled
};

} // namespace tavrel::ui
