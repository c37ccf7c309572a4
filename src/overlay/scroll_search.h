#pragma once

#include "overlay/scroll_canvas.h"

#include <limits>
#include <optional>

namespace tavrel::ui {

/// How far apart rows of a frame and of the canvas lie, in grey levels.
struct FineScore
{
    double score = 0.0; ///< mean over the best two thirds of the rows, so that a third may move
    double mean = 0.0;  ///< over all rows; decides between equal scores
};

/// Compares a frame with a stretch of the canvas: coarsely by sums over blocks of columns, finely row by row.
/// Offsets are those of the frame on the page.
class ScrollSearch final
{
public:
    /// Looks no further than the canvas rows [first, end). Refers to both, which must outlive it.
    ScrollSearch(const GreyFrame &frame, const ScrollCanvas &canvas, int first, int end);

    /// The canvas has been cut since: what it lost counts no more.
    void shrinkToCanvas();

    /// Sum of block differences of the frame rows [y, y + rows) at an offset, and the rows that it covers. Nothing when
    /// fewer than `minOverlap` rows meet the canvas or one of these is a hole.
    struct Coarse
    {
        std::int32_t difference = 0;
        int overlap = 0;
    };
    [[nodiscard]] std::optional<Coarse> coarse(int y, int rows, int offset, int minOverlap) const;
    [[nodiscard]] std::optional<FineScore> fine(int y, int rows, int offset, int minOverlap) const;
    /// Rows of [y, y + rows) that meet the canvas.
    [[nodiscard]] int overlap(int y, int rows, int offset) const;

    [[nodiscard]] const GreyFrame &frame() const noexcept { return m_frame; }
    [[nodiscard]] const ScrollCanvas &canvas() const noexcept { return m_canvas; }

private:
    const GreyFrame &m_frame;
    const ScrollCanvas &m_canvas;
    int m_first = 0;
    int m_end = 0;
    int m_base = 0;                   ///< the canvas row that m_sums begin with
    std::vector<std::int32_t> m_sums; ///< running sums of the blocks
};

/// An offset and how well it fits. Better is a lower score, then a lower mean, then nearer to `reference`.
struct ScoredOffset
{
    int offset = 0;
    FineScore score{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};

    [[nodiscard]] bool isBetterThan(const ScoredOffset &other, int reference) const;
};

} // namespace tavrel::ui
