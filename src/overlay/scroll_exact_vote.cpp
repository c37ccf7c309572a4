#include "overlay/scroll_exact_vote.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tavrel::ui {

namespace {

constexpr int kMinRows = 24;        // lively rows that have to be the same
constexpr double kMinShare = 0.35;  // of the lively rows that the canvas has at that offset
constexpr double kSomeShare = 0.25; // enough to doubt any other place
constexpr double kRival = 0.8;      // of the winner's share; a rival as good as this makes it a guess
constexpr int kApart = 3;           // offsets
constexpr int kProofRows = 48;      // lively rows that are the same,
constexpr double kProofShare = 0.9; // out of those that the canvas has,
constexpr int kProofPart = 4;       // on a quarter of the frame's height

struct Rows
{
    int first = 0;
    int end = 0;
};

/// The lively rows of the frame by their signatures.
std::vector<std::pair<std::uint64_t, int>> livelyRows(const GreyFrame &frame, Rows asked)
{
    std::vector<std::pair<std::uint64_t, int>> rows;
    for (int y = asked.first; y < asked.end; ++y) {
        if (frame.isLively(y))
            rows.emplace_back(frame.signature(y), y);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

/// How many lively rows are the same at each offset, from lastOffset - radius on.
std::vector<int> countVotes(const ScrollSearch &search, Rows asked, int lowest, int count)
{
    const GreyFrame &frame = search.frame();
    const ScrollCanvas &canvas = search.canvas();
    const auto rows = livelyRows(frame, asked);
    std::vector<int> votes(static_cast<std::size_t>(count));
    const int first = std::max(canvas.top(), lowest);
    const int end = std::min(canvas.end(), lowest + count + frame.height());
    for (int y = first; y < end; ++y) {
        if (!canvas.isFilled(y))
            continue;
        const std::uint64_t signature = canvas.signature(y);
        for (auto row = std::lower_bound(rows.begin(), rows.end(), std::pair{signature, 0});
             row != rows.end() && row->first == signature; ++row) {
            const int at = y - row->second - lowest;
            if (at >= 0 && at < count)
                ++votes[static_cast<std::size_t>(at)];
        }
    }
    return votes;
}

double shareOf(const ScrollSearch &search, Rows asked, int offset, int votes)
{
    int seen = 0;
    for (int y = asked.first; y < asked.end; ++y)
        seen += search.frame().isLively(y) && search.canvas().isFilled(y + offset) ? 1 : 0;
    return seen > 0 ? static_cast<double>(votes) / seen : 0.0;
}

} // namespace

ExactVote voteExactly(const ScrollSearch &search, int lastOffset, int radius, int first, int end)
{
    const Rows asked{first, end};
    const int lowest = lastOffset - radius;
    const std::vector<int> votes = countVotes(search, asked, lowest, 2 * radius + 1);
    // The most rows, not the largest share: a page that repeats itself fits best where it hardly overlaps.
    const auto most = std::max_element(votes.begin(), votes.end());
    if (*most < kMinRows)
        return {};
    ExactVote result;
    result.offset = lowest + static_cast<int>(most - votes.begin());
    const double best = shareOf(search, asked, result.offset, *most);
    if (best < kSomeShare)
        return {};
    result.anywhere = true;
    bool rivalled = false;
    for (int i = 0; i < static_cast<int>(votes.size()) && !rivalled; ++i) {
        const int count = votes[static_cast<std::size_t>(i)];
        const int offset = lowest + i;
        rivalled = count >= kMinRows && std::abs(offset - result.offset) > kApart &&
                   shareOf(search, asked, offset, count) >= kRival * best;
    }
    if (rivalled)
        result.kind = ExactVote::Ambiguous;
    else if (best >= kMinShare)
        result.kind = ExactVote::Certain;
    result.isProof = result.kind == ExactVote::Certain && *most >= kProofRows && best >= kProofShare &&
                     search.overlap(first, end - first, result.offset) * kProofPart >= search.frame().height();
    return result;
}

} // namespace tavrel::ui
