#pragma once

#include <QImage>
#include <QSize>

#include <vector>

namespace tavrel::ui {

class ScrollPage;

/// A small picture of a growing page. Each step reads only the rows that are new, so it costs the same at 40,000 rows
/// as at 4,000. Budget for 400 new rows 2400 wide: 5 ms (bench_overlay_stitch).
///
/// A pixel is the mean of a square of page pixels, whose side doubles whenever the picture would become higher than
/// twice the space it is shown in.
class ScrollPreview final
{
public:
    /// space  device pixels that the picture is shown in at most, at least 1 x 1
    explicit ScrollPreview(const QSize &space) : m_space(space.expandedTo(QSize(1, 1))) {}

    /// Takes over what has changed since the last call.
    void update(ScrollPage &page);
    /// Format_RGB32, not wider than twice and not higher than about twice the space. Null before the first update.
    [[nodiscard]] QImage image() const;
    /// Page pixels that one pixel stands for along each side.
    [[nodiscard]] int cell() const noexcept { return m_cell; }

private:
    void start(const ScrollPage &page, int cell);
    void halve();
    void stretch(int first, int end);
    void readRow(const ScrollPage &page, int cellRow);
    [[nodiscard]] int firstRow(const ScrollPage &page) const;
    [[nodiscard]] int endRow(const ScrollPage &page) const;

    QSize m_space;
    int m_cell = 0;
    int m_width = 0;
    int m_first = 0; ///< cell row of the first stored row
    int m_rows = 0;
    std::vector<quint32> m_pixels;
    std::vector<quint32> m_sums; ///< three per cell, while a row is read
};

} // namespace tavrel::ui
