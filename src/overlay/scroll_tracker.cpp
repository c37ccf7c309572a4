#include "overlay/scroll_tracker.h"

#include "overlay/scroll_page.h"
#include "overlay/scroll_sub_pixel.h"

#include <algorithm>
#include <cstdlib>

namespace tavrel::ui {

namespace {

constexpr int kMaxMisses = 3;
constexpr double kMinLead = 0.3;
constexpr int kJitter = 5;        // steps back below this are none
constexpr int kMinTolerance = 96; // rows
constexpr int kMinStep = 32;      // rows
constexpr std::size_t kMaxRuns = 64;
constexpr int kTailSlack = 4;  // rows
constexpr int kTailReturn = 8; // rows
// Frames, a quarter of a second. A program may move what it has painted first, and paint what has come into view later.
constexpr int kRest = 8;
constexpr int kSearchMargin = 48; // rows that bands look beyond the frame's offset

ScrollMatch certainMatch(int offset)
{
    return {.offset = offset, .probes = 1, .contrast = 1.0, .score = 0.0, .quality = 1.0};
}

/// Most of what the bands know has to speak for the frame's place. Blank rows fit everywhere, and a strip of a page
/// with few lines finds something like it on every other. Nor do bands count outside the rows [first, end), in bars.
/// `likeness` is what a band may differ, in parts of its texture.
bool isBelievable(const ScrollBands &bands, int first, int end, double likeness)
{
    constexpr int kMinRows = 48;
    int known = 0;
    int agreeing = 0;
    for (const ScrollBand &band : bands.bands) {
        const int middle = (band.first + band.end) / 2;
        if (band.unseen || band.kind == ScrollBand::Kind::Flat || middle < first || middle >= end)
            continue;
        known += band.end - band.first;
        agreeing +=
            band.kind == ScrollBand::Kind::Ok && band.mean <= likeness * band.texture ? band.end - band.first : 0;
    }
    return agreeing >= kMinRows && agreeing * 5 >= known * 3;
}

/// Appends a row to the runs, or to the last of them when it goes on there.
void appendRow(std::vector<ScrollRun> &runs, bool open, int frameRow, int pageRow)
{
    if (open && !runs.empty()) {
        ScrollRun &last = runs.back();
        if (last.frameRow + last.rows == frameRow && last.pageRow + last.rows == pageRow) {
            ++last.rows;
            return;
        }
    }
    runs.push_back({frameRow, pageRow, 1});
}

/// Whether a row looks like none of the rows [from, to).
bool isUnique(const GreyFrame &frame, int y, int from, int to)
{
    for (int other = from; other < to; ++other) {
        if (frame.signature(other) == frame.signature(y))
            return false;
    }
    return true;
}

/// Rows from an edge on that are as they were.
int sameRows(const GreyFrame &now, const GreyFrame &before, bool fromTop)
{
    const int height = now.height();
    int rows = 0;
    for (int y = fromTop ? 0 : height - 1; rows < height && now.signature(y) == before.signature(y);
         y += fromTop ? 1 : -1)
        ++rows;
    return rows;
}

/// Rows at an edge of a frame that stood still although the page moved.
struct Standing
{
    int bar = 0;  ///< a header, a footer
    int rows = 0; ///< with those beside it: the page's, what a bar hides of it, or what is yet to be painted anew
};

/// What stood still while the page moved by `step`. Rows that are also found where the page's have gone are the page's.
Standing standingRows(const GreyFrame &now, const GreyFrame &before, int step, bool fromTop)
{
    constexpr int kMoved = 8;      // rows; less may be a part of the bar that repeats itself
    constexpr int kLowestBar = 12; // of nothing but such rows; less is chance: the end of a line, a rule
    const int height = now.height();
    const auto at = [&](int i) { return fromTop ? i : height - 1 - i; };
    const int run = sameRows(now, before, fromTop);
    if (run == 0 || run == height)
        return {};
    const int otherRun = sameRows(now, before, !fromTop);
    int bar = 0;
    int moved = 0;
    int lastLively = 0;
    for (int i = 0; i < run; ++i) {
        const int y = at(i);
        if (!now.isLively(fromTop ? y + 1 : y))
            continue;
        // Empty rows end where the page's next line begins, the bar's where the bar does.
        if (i + 1 == run && !isUnique(now, y, fromTop ? run : otherRun, height - (fromTop ? otherRun : run)))
            continue;
        lastLively = i + 1;
        const int to = y - step;
        if (step != 0 && to >= 0 && to < height && now.signature(to) == before.signature(y)) {
            ++moved;
        } else {
            bar = i + 1;
            moved = 0;
        }
    }
    if (moved < kMoved)
        bar = bar > 0 || lastLively >= kLowestBar ? lastLively : 0;
    return {bar, run};
}

} // namespace

void ScrollTracker::begin()
{
    m_canvas = std::make_unique<ScrollCanvas>(m_frame);
    m_last = m_frame;
    m_placed = m_frame;
    m_sureEnd = m_frame.height();
    m_runs.clear();
}

StitchDecision ScrollTracker::dropped(StitchOutcome outcome, int offset)
{
    m_misses = std::min(m_misses + 1, kMaxMisses);
    m_tailCandidate.reset();
    return {outcome, offset};
}

/// The frame is the last one once more; that needs no texture.
bool ScrollTracker::isAtRest() const
{
    for (int y = 0; y < m_frame.height(); ++y) {
        if (m_frame.signature(y) != m_last.signature(y))
            return false;
    }
    return true;
}

/// A page at rest may jitter by a few rows.
int ScrollTracker::steady(int offset) const
{
    const bool slipped = offset < m_lastOffset && offset > m_lastOffset - kJitter;
    return m_lastStep.value_or(0) >= 1 && slipped ? m_lastOffset : offset;
}

bool ScrollTracker::isJump(int offset) const
{
    if (!m_lastStep)
        return false;
    const int tolerance = std::max(std::max(kMinStep, std::abs(*m_lastStep)) * 3, kMinTolerance);
    return std::abs(offset - m_lastOffset - *m_lastStep) > tolerance;
}

/// A page that stands still says nothing about its bars: they are where they were. What is beside them is the page's
/// when it stays as it is.
void ScrollTracker::findBars(int offset)
{
    if (offset == m_lastOffset) {
        const bool asItWas = sameRows(m_frame, m_last, true) >= m_besideBars.top &&
                             sameRows(m_frame, m_last, false) >= m_besideBars.bottom;
        m_rested = asItWas ? m_rested + 1 : 0;
        return;
    }
    const Standing top = standingRows(m_frame, m_last, offset - m_lastOffset, true);
    const Standing bottom = standingRows(m_frame, m_last, offset - m_lastOffset, false);
    m_bars = {top.bar, bottom.bar};
    m_besideBars = {top.rows, bottom.rows};
    m_rested = 0;
}

/// The page may not keep a bar in its middle, nor what a bar may have hidden: it goes when the page grows past it.
void ScrollTracker::dropBars(int offset)
{
    const int height = m_frame.height();
    if (m_footerKept && m_bars.bottom > 0 && offset > 0 && m_canvas->end() == height) {
        m_canvas->cut(m_canvas->top(), height - m_besideBars.bottom);
        m_footerKept = false;
    } else if (m_canvas->end() > m_sureEnd && offset + height - m_besideBars.bottom > m_sureEnd) {
        m_canvas->cut(m_canvas->top(), m_sureEnd);
    }
    if (m_headerKept && m_bars.top > 0 && offset < 0 && m_canvas->top() == 0) {
        m_canvas->cut(m_besideBars.top, m_canvas->end());
        m_headerKept = false;
    } else if (m_canvas->top() < m_sureFirst && offset + m_besideBars.top < m_sureFirst) {
        m_canvas->cut(m_sureFirst, m_canvas->end());
    }
}

/// The rows that the frame added beside its bars are only kept as long as they are the page's last ones.
void ScrollTracker::noteSureRows(int offset, bool grewAtTop, bool grewAtEnd)
{
    const int first = m_canvas->top();
    const int end = m_canvas->end();
    m_sureFirst = grewAtTop ? std::max(first, offset + m_besideBars.top) : std::max(first, m_sureFirst);
    m_sureEnd = grewAtEnd ? std::min(end, offset + m_frame.height() - m_besideBars.bottom) : std::min(end, m_sureEnd);
}

std::vector<ScrollRun> ScrollTracker::newRuns(const ScrollBands &bands) const
{
    std::vector<ScrollRun> runs;
    if (m_slip != 0)
        return {}; // it is not quite there
    const Bars &bars = m_rested >= kRest ? m_bars : m_besideBars;
    bool open = false;
    for (const ScrollBand &band : bands.bands) {
        const bool flat = band.kind == ScrollBand::Kind::Flat;
        const bool taken = flat || band.kind == ScrollBand::Kind::Ok;
        const int offset = flat ? bands.offset : band.offset;
        for (int y = band.first; y < band.end; ++y) {
            const bool bar = y < bars.top || y >= m_frame.height() - bars.bottom;
            const bool wanted = taken && !bar && !m_canvas->isFilled(y + offset);
            if (wanted)
                appendRow(runs, open, y, y + offset);
            open = wanted;
        }
    }
    if (runs.size() > kMaxRuns) {
        std::vector<int> sizes;
        sizes.reserve(runs.size());
        for (const ScrollRun &run : runs)
            sizes.push_back(run.rows);
        std::nth_element(sizes.begin(), sizes.begin() + kMaxRuns, sizes.end(), std::greater<>());
        const int least = sizes[kMaxRuns - 1] > sizes[kMaxRuns] ? sizes[kMaxRuns - 1] : sizes[kMaxRuns] + 1;
        std::erase_if(runs, [&](const ScrollRun &run) { return run.rows < least; });
    }
    return runs;
}

/// Who scrolls back over what was taken and stays there ends the page there; only the second sight of it counts.
int ScrollTracker::cutTail(int offset, bool grewAtTop)
{
    const int frameEnd = offset + m_frame.height();
    const int pageEnd = m_canvas->end();
    const bool atEnd = frameEnd >= pageEnd - kTailSlack;
    // Who has gone above the start is not on the way back; nothing goes until the end has been seen again.
    m_tailHeld = grewAtTop || (m_tailHeld && !atEnd);
    if (m_tailHeld || atEnd) {
        m_tailCandidate.reset();
        m_tailTrimmed = false;
        return 0;
    }
    if (!m_tailTrimmed && (!m_tailCandidate || frameEnd > *m_tailCandidate + kTailReturn)) {
        m_tailCandidate = frameEnd;
        return 0;
    }
    m_tailTrimmed = true;
    m_tailCandidate.reset();
    const int cut = std::min(pageEnd - frameEnd, m_canvas->height() - m_frame.height());
    if (cut <= 0)
        return 0;
    m_canvas->cut(m_canvas->top(), pageEnd - cut);
    return cut;
}

/// What stands at the edges has no say in how far the page between has moved: on a page with few lines a footer
/// would outvote them.
ExactVote ScrollTracker::vote(const ScrollSearch &search, const Bars &standing, int radius) const
{
    const int height = m_frame.height();
    if (standing.top + standing.bottom > 0) {
        const ExactVote between = voteExactly(search, m_lastOffset, radius, standing.top, height - standing.bottom);
        if (between.kind == ExactVote::Certain)
            return between;
    }
    return voteExactly(search, m_lastOffset, radius, 0, height);
}

/// Bars stand wherever the page is, so they are no sign of a page at rest when the rest of the frame has changed.
bool ScrollTracker::restsByItsBars(const Bars &standing) const
{
    constexpr int kMinRows = 8; // less between the bars says nothing
    int lively = 0;
    int same = 0;
    for (int y = standing.top; y < m_frame.height() - standing.bottom; ++y) {
        if (!m_frame.isLively(y) && !m_placed.isLively(y))
            continue;
        ++lively;
        same += m_frame.signature(y) == m_placed.signature(y) ? 1 : 0;
    }
    return standing.top + standing.bottom > 0 && lively >= kMinRows && same * 4 < lively;
}

/// Where the frame lies, judged by all there is to see. Nothing for what cannot be told for certain.
std::optional<ScrollTracker::Place> ScrollTracker::findPlace(ScrollSearch &search, int radius)
{
    const bool resting = isAtRest();
    Bars standing{standingRows(m_frame, m_last, 0, true).bar, standingRows(m_frame, m_last, 0, false).bar};
    if ((standing.top + standing.bottom) * 3 > m_frame.height())
        standing = {}; // too much for bars: a page at rest on which something moves
    const ExactVote vote = resting ? ExactVote() : this->vote(search, standing, radius);
    m_subPixel = 0.0F;
    if (!resting && vote.kind == ExactVote::Certain && vote.offset == m_lastOffset && restsByItsBars(standing))
        return std::nullopt;
    if (resting || vote.kind == ExactVote::Certain) {
        const int offset = steady(resting ? m_lastOffset : vote.offset);
        m_slip = resting ? m_slip : vote.offset - offset;
        // Bars of the first frame would be taken for bands that do not fit.
        if (vote.isProof || !isJump(offset)) {
            findBars(offset);
            dropBars(offset);
            search.shrinkToCanvas();
        }
        return Place{readBands(search, certainMatch(offset), true), vote.isProof};
    }
    if (vote.kind == ExactVote::Ambiguous)
        return std::nullopt;
    const auto match = locate(search, m_lastOffset, radius);

    if (!match || match->lead < kMinLead)
        return std::nullopt;
    ScrollBands bands = readBands(search, *match, false);
    const auto shift = subPixelShift(m_frame, *m_canvas, bands);
    if (!shift || !vote.allows(bands.offset))
        return std::nullopt;
    // Half a row beside the page's rows comes to half the texture or a little more. A whole row beside nothing should
    // have been found exactly, but for a little noise.
    const bool whole = std::abs(*shift) < ScrollPage::kWholeRows && !vote.anywhere;
    const int last = m_frame.height() - standing.bottom;
    if (!isBelievable(bands, standing.top, last, whole ? 0.2 : 1.0) ||
        (bands.offset == m_lastOffset && restsByItsBars(standing)))
        return std::nullopt;
    m_subPixel = *shift;
    const int offset = steady(bands.offset);
    m_slip = bands.offset - offset;
    bands.offset = offset;
    for (ScrollBand &band : bands.bands) {
        if (band.kind == ScrollBand::Kind::Ok)
            band.offset = steady(band.offset);
    }
    if (!isJump(bands.offset)) {
        findBars(bands.offset);
        dropBars(bands.offset);
    }
    return Place{std::move(bands), false};
}

StitchDecision ScrollTracker::place()
{
    m_runs.clear();
    m_keptFirst = m_canvas->top();
    m_keptEnd = m_canvas->end();
    const int height = m_frame.height();
    const auto radius = searchRadius(height, m_misses);
    if (height < kLeastStitchRows || m_frame.width() != m_canvas->width() || !radius)
        return dropped(StitchOutcome::NoMatch, m_lastOffset);
    ScrollSearch search(m_frame, *m_canvas, m_lastOffset - *radius - kSearchMargin,
                        m_lastOffset + *radius + height + kSearchMargin + 1);
    const int top = m_canvas->top();
    const auto found = findPlace(search, *radius);
    if (!found)
        return dropped(StitchOutcome::NoMatch, m_lastOffset);
    const ScrollBands *bands = &found->bands;
    if (!found->isProven && isJump(bands->offset)) {
        m_lastStep.reset(); // if the next frame lies there too, the page really went there
        return dropped(StitchOutcome::Jumped, bands->offset);
    }

    m_keptFirst = m_canvas->top();
    m_keptEnd = m_canvas->end();
    m_runs = newRuns(*bands);
    int first = m_keptFirst;
    int end = m_keptEnd;
    StitchDecision decision{StitchOutcome::Accepted, bands->offset};
    for (const ScrollRun &run : m_runs) {
        first = std::min(first, run.pageRow);
        end = std::max(end, run.pageRow + run.rows);
        decision.rowsAdded += run.rows;
    }
    if (end - first > m_maxRows) {
        m_runs.clear();
        return {StitchOutcome::Full, bands->offset};
    }
    if (!m_runs.empty()) {
        decision.subPixel = m_subPixel;
        m_canvas->take(m_frame, m_runs);
    }
    noteSureRows(bands->offset, m_canvas->top() < m_keptFirst, m_canvas->end() > m_keptEnd);
    m_misses = 0;
    if (bands->offset != m_lastOffset) {
        m_lastStep = bands->offset - m_lastOffset;
        m_placed = m_frame;
    }
    m_lastOffset = bands->offset;
    decision.rowsCut = cutTail(bands->offset, m_canvas->top() < top);
    std::swap(m_last, m_frame);
    return decision;
}

} // namespace tavrel::ui
