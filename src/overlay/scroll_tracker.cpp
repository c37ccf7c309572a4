#include "overlay/scroll_tracker.h"

#include "overlay/scroll_exact_vote.h"
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
constexpr int kTailSlack = 4;     // rows
constexpr int kTailReturn = 8;    // rows
constexpr int kSearchMargin = 48; // rows that bands look beyond the frame's offset

ScrollMatch certainMatch(int offset)
{
    return {.offset = offset, .probes = 1, .contrast = 1.0, .score = 0.0, .quality = 1.0};
}

/// Most of what the bands know has to speak for the frame's place. Blank rows fit everywhere, and a strip of a page
/// with few lines finds something like it on every other. `likeness` is what a band may differ, in parts of its
/// texture.
bool isBelievable(const ScrollBands &bands, double likeness)
{
    constexpr int kMinRows = 48;
    int known = 0;
    int agreeing = 0;
    for (const ScrollBand &band : bands.bands) {
        if (band.unseen || band.kind == ScrollBand::Kind::Flat)
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

/// Frame rows that count as standing still although the page moved, from an edge inwards: up to the last one with
/// something on it, since an empty row looks the same everywhere.
int standingRows(const GreyFrame &now, const GreyFrame &before, bool fromTop)
{
    constexpr int kLowestBar = 12; // less is chance: the end of a line, a rule
    const int height = now.height();
    int bar = 0;
    for (int i = 0; i < height; ++i) {
        const int y = fromTop ? i : height - 1 - i;
        if (now.signature(y) != before.signature(y))
            break;
        if (now.isLively(fromTop ? y : std::min(y + 1, height - 1)))
            bar = i + 1;
    }
    return bar >= kLowestBar && bar < height ? bar : 0;
}

} // namespace

void ScrollTracker::begin()
{
    m_canvas = std::make_unique<ScrollCanvas>(m_frame);
    m_last = m_frame;
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

/// A page that stands still says nothing about its bars: they are where they were.
ScrollTracker::Bars ScrollTracker::findBars(int offset) const
{
    if (offset == m_lastOffset)
        return m_bars;
    return {standingRows(m_frame, m_last, true), standingRows(m_frame, m_last, false)};
}

/// The page may not keep a bar in its middle: what the first frame showed of it goes when the page grows past it.
void ScrollTracker::dropFirstBars(int offset)
{
    const int height = m_frame.height();
    if (m_footerKept && m_bars.bottom > 0 && offset > 0 && m_canvas->end() == height) {
        m_canvas->cut(m_canvas->top(), height - m_bars.bottom);
        m_footerKept = false;
    }
    if (m_headerKept && m_bars.top > 0 && offset < 0 && m_canvas->top() == 0) {
        m_canvas->cut(m_bars.top, m_canvas->end());
        m_headerKept = false;
    }
}

std::vector<ScrollRun> ScrollTracker::newRuns(const ScrollBands &bands) const
{
    std::vector<ScrollRun> runs;
    bool open = false;
    for (const ScrollBand &band : bands.bands) {
        const bool flat = band.kind == ScrollBand::Kind::Flat;
        const bool taken = flat || band.kind == ScrollBand::Kind::Ok;
        const int offset = flat ? bands.offset : band.offset;
        for (int y = band.first; y < band.end; ++y) {
            const bool bar = y < m_bars.top || y >= m_frame.height() - m_bars.bottom;
            const bool wanted = taken && !bar && !m_canvas->isFilled(y + offset);
            if (wanted)
                appendRow(runs, open, y, y + offset);
            open = wanted;
        }
    }
    if (runs.size() > kMaxRuns) {
        std::vector<int> sizes;
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

/// Where the frame lies, judged by all there is to see. Nothing for what cannot be told for certain.
std::optional<ScrollBands> ScrollTracker::findPlace(ScrollSearch &search, int radius)
{
    const bool resting = isAtRest();
    const ExactVote vote = resting ? ExactVote() : voteExactly(search, m_lastOffset, radius);
    m_subPixel = 0.0F;
    if (resting || vote.kind == ExactVote::Certain) {
        const int offset = steady(resting ? m_lastOffset : vote.offset);
        // Bars of the first frame would be taken for bands that do not fit.
        if (!isJump(offset)) {
            m_bars = findBars(offset);
            dropFirstBars(offset);
            search.shrinkToCanvas();
        }
        return readBands(search, certainMatch(offset), true);
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
    if (!isBelievable(bands, whole ? 0.2 : 1.0))
        return std::nullopt;
    m_subPixel = *shift;
    bands.offset = steady(bands.offset);
    for (ScrollBand &band : bands.bands) {
        if (band.kind == ScrollBand::Kind::Ok)
            band.offset = steady(band.offset);
    }
    if (!isJump(bands.offset)) {
        m_bars = findBars(bands.offset);
        dropFirstBars(bands.offset);
    }
    return bands;
}

StitchDecision ScrollTracker::place()
{
    m_runs.clear();
    m_keptFirst = m_canvas->top();
    m_keptEnd = m_canvas->end();
    const int height = m_frame.height();
    const auto radius = searchRadius(height, m_misses);
    if (height < ScrollStitcher::kMinHeight || m_frame.width() != m_canvas->width() || !radius)
        return dropped(StitchOutcome::NoMatch, m_lastOffset);
    ScrollSearch search(m_frame, *m_canvas, m_lastOffset - *radius - kSearchMargin,
                        m_lastOffset + *radius + height + kSearchMargin + 1);
    const int top = m_canvas->top();
    const auto bands = findPlace(search, *radius);
    if (!bands)
        return dropped(StitchOutcome::NoMatch, m_lastOffset);
    if (isJump(bands->offset)) {
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
    m_misses = 0;
    if (bands->offset != m_lastOffset)
        m_lastStep = bands->offset - m_lastOffset;
    m_lastOffset = bands->offset;
    decision.rowsCut = cutTail(bands->offset, m_canvas->top() < top);
    std::swap(m_last, m_frame);
    return decision;
}

} // namespace tavrel::ui
