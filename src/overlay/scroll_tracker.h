#pragma once

#include "overlay/scroll_bands.h"
#include "overlay/scroll_exact_vote.h"
#include "overlay/stitch_decision.h"

#include <memory>
#include <optional>
#include <vector>

namespace tavrel::ui {

/// Decides frame by frame what of it the page takes. Knows grey rows only.
class ScrollTracker final
{
public:
    /// maxRows  the page does not grow beyond
    explicit ScrollTracker(int maxRows) : m_maxRows(maxRows) {}

    /// The frame before the next begin() or place(), to be read into; its buffers are reused.
    [[nodiscard]] GreyFrame &frame() noexcept { return m_frame; }
    /// Starts the page with the frame, at offset 0.
    void begin();
    /// Places the frame. Its rows are runs(); the rows that the page has afterwards are those of canvas().
    StitchDecision place();

    [[nodiscard]] const std::vector<ScrollRun> &runs() const noexcept { return m_runs; }
    /// The rows [first, end) of the page before the last frame's came in; less than it had when a bar went.
    [[nodiscard]] int keptFirst() const noexcept { return m_keptFirst; }
    [[nodiscard]] int keptEnd() const noexcept { return m_keptEnd; }
    [[nodiscard]] const ScrollCanvas &canvas() const noexcept { return *m_canvas; }

private:
    /// Rows at the edges of a frame that stayed where they were while the page moved: a header, a footer.
    struct Bars
    {
        int top = 0;
        int bottom = 0;
    };

    struct Place
    {
        ScrollBands bands;
        bool isProven = false; ///< row by row; no step is too far then
    };

    StitchDecision dropped(StitchOutcome outcome, int offset);
    [[nodiscard]] bool isAtRest() const;
    [[nodiscard]] int steady(int offset) const;
    [[nodiscard]] bool isJump(int offset) const;
    [[nodiscard]] ExactVote vote(const ScrollSearch &search, const Bars &standing, int radius) const;
    [[nodiscard]] bool restsByItsBars(const Bars &standing) const;
    [[nodiscard]] std::optional<Place> findPlace(ScrollSearch &search, int radius);
    void findBars(int offset);
    void dropBars(int offset);
    void noteSureRows(int offset, bool grewAtTop, bool grewAtEnd);
    [[nodiscard]] std::vector<ScrollRun> newRuns(const ScrollBands &bands) const;
    [[nodiscard]] int cutTail(int offset, bool grewAtTop);

    int m_maxRows = 0;
    GreyFrame m_frame;
    GreyFrame m_last;   ///< the last accepted frame
    GreyFrame m_placed; ///< the one with which the page came to where it is; it may creep away from that unnoticed
    std::unique_ptr<ScrollCanvas> m_canvas;
    std::vector<ScrollRun> m_runs;
    int m_keptFirst = 0;
    int m_keptEnd = 0;
    int m_lastOffset = 0;
    std::optional<int> m_lastStep; ///< never 0
    int m_misses = 0;
    std::optional<int> m_tailCandidate; ///< where the page would end, seen once
    Bars m_bars;
    Bars m_besideBars;   ///< with the rows beside them that stood as well
    int m_rested = 0;    ///< frames since the page moved in which these stayed as they were
    int m_sureFirst = 0; ///< the rows [first, end) of the page that no bar can have hidden a part of
    int m_sureEnd = 0;
    float m_subPixel = 0.0F; ///< of the last frame
    int m_slip = 0;          ///< of the last frame: rows beside the offset that it counts as being at
    bool m_tailTrimmed = false;
    bool m_tailHeld = false;
    bool m_headerKept = true; ///< the page still begins with the first frame's header, if it has one
    bool m_footerKept = true; ///< and ends with its footer
};

} // namespace tavrel::ui
