#pragma once

#include <QImage>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tavrel::ui {

/// The colour rows of a page that grows at both ends. Row numbers are those of the page: 0 is the first frame's first
/// row, rows above it are negative. Rows lie in blocks, so growing never moves what is there.
class ScrollPage final
{
public:
    static constexpr float kWholeRows = 0.05F; ///< a shift below this is none

    /// Rows [first, end).
    struct Range
    {
        int first = 0;
        int end = 0;
        friend bool operator==(const Range &, const Range &) = default;
    };

    explicit ScrollPage(int width) : m_width(width) {}

    /// Copies rows in.
    ///
    /// y         the page row of the first of them
    /// pixels    32 bits each, BGRA in memory, `width` of `stride` in a row
    /// subPixel  below 0.05 the rows are copied; else row i is read between the rows at i + subPixel (Catmull-Rom)
    void write(int y, const quint32 *pixels, qsizetype stride, int rows, float subPixel = 0.0F);
    /// Forgets the rows outside [first, end).
    void cutTo(int first, int end);

    [[nodiscard]] int width() const noexcept { return m_width; }
    [[nodiscard]] int top() const noexcept { return m_rows.first; }
    [[nodiscard]] int end() const noexcept { return m_rows.end; }
    [[nodiscard]] int height() const noexcept { return m_rows.end - m_rows.first; }
    /// Null for a row that nothing has been written to.
    [[nodiscard]] const quint32 *row(int y) const;
    /// The rows that writing or cutting has touched since the last call; cut rows are included.
    [[nodiscard]] std::optional<Range> takeChanges();

    /// All rows as one picture; rows that nothing was written to repeat the row above (the first one the next).
    /// release   give each block back as soon as it is copied; the page is empty afterwards
    /// filled    receives the number of those rows
    [[nodiscard]] QImage compose(bool release, int *filled);

private:
    static constexpr int kBlockRows = 256;
    struct Block
    {
        std::unique_ptr<quint32[]> pixels;
        std::vector<std::uint8_t> written;
    };

    Block &ensureBlock(int index);
    void noteChange(int first, int end);

    int m_width = 0;
    Range m_rows;
    int m_firstBlock = 0; ///< the block that holds row 0 is block 0
    std::vector<Block> m_blocks;
    std::optional<Range> m_changes;
};

} // namespace tavrel::ui
