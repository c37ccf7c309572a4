#include "overlay/scroll_locator.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <vector>

namespace tavrel::ui {

namespace {

constexpr int kLongestSearch = 24'000; // rows
constexpr int kMinOverlap = 32;
constexpr int kMinStrip = 32;
constexpr std::array kStripHeights{128, 96, 64};
constexpr double kMinActivity = 3.0; // grey levels from row to row; less is too flat to be found again
constexpr int kApart = 24;           // offsets nearer than this are the same place
constexpr int kCandidates = 32;
constexpr int kRefined = 4;
constexpr int kRefineReach = 4;
constexpr double kWorstScore = 25.0;
constexpr double kMinContrast = 0.1;
constexpr double kDoubtfulScore = 5.0; // from here on the contrast has to be
constexpr double kClearContrast = 0.5;
constexpr int kVerifyRows = 96;
constexpr int kMinVerifyRows = 48;
constexpr double kVerifiedScore = 8.0;
constexpr int kAgree = 4;

struct Window
{
    int first = 0;
    int end = 0;
};

struct Strip
{
    int y = 0;
    int height = 0;
    friend bool operator==(const Strip &, const Strip &) = default;
};

struct Probe
{
    Strip strip;
    int offset = 0;
    double score = 0;
    double contrast = 0;
    double lead = 0;
    double quality = 0;
    double weight = 0;
};

struct CoarseOffset
{
    int offset = 0;
    double difference = 0;
};

/// The position of the liveliest `height` rows among those that begin in [first, last], the first among equals.
int liveliest(const GreyFrame &frame, int first, int last, int height)
{
    int best = first;
    for (int y = first + 1; y <= last; ++y) {
        if (frame.activity(y, y + height) > frame.activity(best, best + height))
            best = y;
    }
    return best;
}

std::optional<Strip> stripOf(const GreyFrame &frame, Window window, int height)
{
    height = std::min(height, frame.height());
    if (height < kMinStrip)
        return std::nullopt;
    if (window.end - window.first < height)
        window = {0, frame.height()};
    const int y = liveliest(frame, window.first, window.end - height, height);
    if (static_cast<double>(frame.activity(y, y + height)) < kMinActivity * frame.width() * height)
        return std::nullopt;
    return Strip{y, height};
}

std::vector<CoarseOffset> coarseSearch(const ScrollSearch &search, const Strip &strip, int low, int high)
{
    std::vector<CoarseOffset> found;
    found.reserve(static_cast<std::size_t>(high - low + 1));
    for (int offset = low; offset <= high; ++offset) {
        if (const auto coarse = search.coarse(strip.y, strip.height, offset, kMinOverlap))
            found.push_back({offset, static_cast<double>(coarse->difference) * strip.height / coarse->overlap});
    }
    return found;
}

double coarseContrast(const std::vector<CoarseOffset> &found, const CoarseOffset &best, double cells)
{
    double second = 255.0;
    bool any = false;
    for (const CoarseOffset &entry : found) {
        if (std::abs(entry.offset - best.offset) > kApart) {
            const double difference = entry.difference / cells;
            second = any ? std::min(second, difference) : difference;
            any = true;
        }
    }
    return (second - best.difference / cells) / std::max(second, 0.000001);
}

/// The places that deserve a closer look: local minima, the lowest first, none close to another.
std::vector<CoarseOffset> candidatesOf(const std::vector<CoarseOffset> &found, const CoarseOffset &best)
{
    std::vector<CoarseOffset> minima{best};
    for (std::size_t i = 0; i < found.size(); ++i) {
        const bool lowLeft =
            i == 0 || found[i - 1].offset != found[i].offset - 1 || found[i].difference <= found[i - 1].difference;
        const bool lowRight = i + 1 == found.size() || found[i + 1].offset != found[i].offset + 1 ||
                              found[i].difference <= found[i + 1].difference;
        if (lowLeft && lowRight)
            minima.push_back(found[i]);
    }
    std::stable_sort(minima.begin(), minima.end(),
                     [](const CoarseOffset &a, const CoarseOffset &b) { return a.difference < b.difference; });
    std::vector<CoarseOffset> kept;
    for (const CoarseOffset &entry : minima) {
        const bool near = std::any_of(kept.begin(), kept.end(), [&](const CoarseOffset &other) {
            return std::abs(other.offset - entry.offset) <= kApart;
        });
        if (!near)
            kept.push_back(entry);
        if (kept.size() == kCandidates)
            break;
    }
    return kept;
}

/// Other rows of the frame have to fit at the offset as well.
bool isVerified(const ScrollSearch &search, const Strip &strip, int offset)
{
    const GreyFrame &frame = search.frame();
    const ScrollCanvas &canvas = search.canvas();
    const int first = std::max(0, canvas.top() - offset);
    const int end = std::min(canvas.end() - offset, frame.height());
    if (end - first < kMinVerifyRows)
        return true; // too little to ask
    const int height = std::min(end - first, kVerifyRows);
    std::vector<int> positions;
    const std::array windows{Window{strip.y + strip.height, end - height}, Window{first, strip.y - height},
                             Window{first, end - height}};
    for (const Window &window : windows) {
        const int low = std::max(window.first, first);
        const int high = std::min(window.end, end - height);
        if (low > high)
            continue;
        positions.insert(positions.end(), {liveliest(frame, low, high, height), low, high});
    }
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    return std::any_of(positions.begin(), positions.end(), [&](int y) {
        const auto score = search.fine(y, height, offset, height);
        return score && score->score <= kVerifiedScore;
    });
}

double leadOf(const ScoredOffset &winner, const std::vector<ScoredOffset> &scored)
{
    double lead = 1.0;
    for (const ScoredOffset &other : scored) {
        if (std::abs(other.offset - winner.offset) <= kApart)
            continue;
        const double rival = other.score.mean;
        lead = std::min(lead, rival > 0 ? (rival - winner.score.mean) / rival : 0.0);
    }
    return lead;
}

std::optional<Probe> probeStrip(const ScrollSearch &search, const Strip &strip, int lastOffset, int radius)
{
    const auto found = coarseSearch(search, strip, lastOffset - radius, lastOffset + radius);
    if (found.empty())
        return std::nullopt;
    const auto best = *std::min_element(found.begin(), found.end(), [](const CoarseOffset &a, const CoarseOffset &b) {
        return a.difference < b.difference;
    });
    double contrast = coarseContrast(found, best, static_cast<double>(search.frame().blocks()) * strip.height);

    std::vector<ScoredOffset> scored;
    for (const CoarseOffset &candidate : candidatesOf(found, best)) {
        if (const auto score = search.fine(strip.y, strip.height, candidate.offset, kMinOverlap))
            scored.push_back({candidate.offset, *score});
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [&](const ScoredOffset &a, const ScoredOffset &b) { return a.isBetterThan(b, lastOffset); });
    ScoredOffset winner;
    for (std::size_t i = 0; i < std::min<std::size_t>(scored.size(), kRefined); ++i) {
        for (int step = -kRefineReach; step <= kRefineReach; ++step) {
            const int offset = scored[i].offset + step;
            const auto score = search.fine(strip.y, strip.height, offset, kMinOverlap);
            if (score && ScoredOffset{offset, *score}.isBetterThan(winner, lastOffset))
                winner = {offset, *score};
        }
    }
    if (winner.score.score > kWorstScore)
        return std::nullopt;
    const auto rival = std::find_if(scored.begin(), scored.end(), [&](const ScoredOffset &other) {
        return std::abs(other.offset - winner.offset) > kApart;
    });
    if (rival == scored.end())
        contrast = 1.0;
    else
        contrast = rival->score.score > 0 ? (rival->score.score - winner.score.score) / rival->score.score : 0.0;
    if (contrast < kMinContrast || (winner.score.score > kDoubtfulScore && contrast < kClearContrast))
        return std::nullopt;
    if (!isVerified(search, strip, winner.offset))
        return std::nullopt;
    Probe probe{strip, winner.offset, winner.score.score, contrast, leadOf(winner, scored), 0, 0};
    probe.quality = std::max(0.0, 1.0 - probe.score / 64.0);
    probe.weight = std::max(0.05, std::max(0.0, 1.0 - probe.score / 5.0)) * std::max(contrast, 0.05);
    return probe;
}

std::vector<Probe> probeWindows(const ScrollSearch &search, int lastOffset, int radius)
{
    const int height = search.frame().height();
    constexpr int kMinThird = 128;
    const Window whole{0, height};
    const std::array windows{whole, height / 3 > kMinThird ? Window{0, height / 3} : whole,
                             Window{2 * height / 3, height}};
    std::vector<Probe> probes;
    for (const Window &window : windows) {
        for (const int stripHeight : kStripHeights) {
            const auto strip = stripOf(search.frame(), window, stripHeight);
            const bool known = strip && std::any_of(probes.begin(), probes.end(),
                                                    [&](const Probe &probe) { return probe.strip == *strip; });
            if (!strip || known)
                continue;
            if (const auto probe = probeStrip(search, *strip, lastOffset, radius)) {
                probes.push_back(*probe);
                break;
            }
        }
    }
    return probes;
}

} // namespace

std::optional<int> searchRadius(int height, int misses)
{
    int radius = std::max(height - 96, 96) << std::min(misses, 3);
    if (2 * radius + height + 98 > kLongestSearch)
        radius = (kLongestSearch - height - 98) / 2;
    if (radius < 97)
        return std::nullopt;
    return radius;
}

std::optional<ScrollMatch> locate(const ScrollSearch &search, int lastOffset, int radius)
{
    const std::vector<Probe> probes = probeWindows(search, lastOffset, radius);
    if (probes.empty())
        return std::nullopt;
    const auto support = [&](const Probe &own) {
        double sum = 0;
        for (const Probe &other : probes)
            sum += std::abs(other.offset - own.offset) < kAgree ? other.weight : 0.0;
        return sum;
    };
    const auto winner = std::max_element(probes.begin(), probes.end(),
                                         [&](const Probe &a, const Probe &b) { return support(a) < support(b); });
    std::vector<int> offsets;
    ScrollMatch match;
    for (const Probe &probe : probes) {
        if (std::abs(probe.offset - winner->offset) >= kAgree)
            continue;
        offsets.push_back(probe.offset);
        match.contrast = std::max(match.contrast, probe.contrast);
        match.lead = std::max(match.lead, probe.lead);
        match.quality = std::max(match.quality, probe.quality);
        match.score += probe.score;
    }
    std::sort(offsets.begin(), offsets.end());
    match.offset = offsets[offsets.size() / 2];
    match.probes = static_cast<int>(offsets.size());
    match.score /= match.probes;
    return match;
}

} // namespace tavrel::ui
