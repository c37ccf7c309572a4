#pragma once

#include <QImage>
#include <QRect>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavrel::ui {

/// A frame as matching sees it: every row, in grey, with several columns averaged into one.
///
/// 2400 x 1300 take about 4 ms on one core; reading another frame of the same size allocates nothing.
class GreyFrame final
{
public:
    static constexpr int kMaxWidth = 480;
    static constexpr int kBlock = 4; ///< grey columns that are summed up for the coarse search

    /// Takes a part of a picture. `image` has 32 bits a pixel, BGRA in memory, and contains `crop`.
    void read(const QImage &image, const QRect &crop);

    [[nodiscard]] int width() const noexcept { return m_width; } ///< grey columns
    [[nodiscard]] int height() const noexcept { return m_height; }
    [[nodiscard]] int blocks() const noexcept { return (m_width + kBlock - 1) / kBlock; }
    [[nodiscard]] const std::uint8_t *row(int y) const noexcept
    {
        return m_grey.data() + static_cast<std::ptrdiff_t>(y) * m_width;
    }
    /// How much the rows [from, to) differ from those above them: the sum of all differences.
    [[nodiscard]] std::int64_t activity(int from, int to) const noexcept
    {
        return m_activity[static_cast<std::size_t>(to)] - m_activity[static_cast<std::size_t>(from)];
    }
    /// Something happens from the row above to this one: it can be told from others.
    [[nodiscard]] bool isLively(int y) const noexcept { return activity(y, y + 1) > m_width; }
    [[nodiscard]] std::uint64_t signature(int y) const noexcept { return m_signatures[static_cast<std::size_t>(y)]; }
    /// Sums of the blocks over the rows [0, y), blocks() in a row.
    [[nodiscard]] const std::int32_t *sumsTo(int y) const noexcept
    {
        return m_sums.data() + static_cast<std::ptrdiff_t>(y) * blocks();
    }

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<std::uint8_t> m_grey;
    std::vector<std::int64_t> m_activity; ///< running
    std::vector<std::int32_t> m_sums;     ///< running
    std::vector<std::uint64_t> m_signatures;
    std::vector<std::uint16_t> m_weighed; ///< one row
};

} // namespace tavrel::ui
