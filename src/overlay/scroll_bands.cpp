#include "overlay/scroll_bands.h"

#include <algorithm>
#include <cstdlib>

namespace tavrel::ui {

namespace {

constexpr int kBandRows = 48;
constexpr int kReach = 48; // offsets around the frame's
constexpr int kMinOverlap = 16;
constexpr int kCandidates = 8;
constexpr double kMinTexture = 4.0;
constexpr double kMinConfidence = 0.35;
constexpr int kFollows = 3;
constexpr int kAgree = 2;
constexpr double kSame = 0.000000001;

struct CoarseOffset
{
    int offset = 0;
    double difference = 0;
};

std::vector<int> candidates(const ScrollSearch &search, int y, int rows, int offset, int minOverlap)
{
    std::vector<CoarseOffset> found;
    for (int at = offset - kReach; at <= offset + kReach; ++at) {
        if (const auto coarse = search.coarse(y, rows, at, minOverlap))
            found.push_back({at, static_cast<double>(coarse->difference) / coarse->overlap});
    }
    const auto kept = std::min<std::ptrdiff_t>(kCandidates, static_cast<std::ptrdiff_t>(found.size()));
    std::partial_sort(found.begin(), found.begin() + kept, found.end(),
                      [](const CoarseOffset &a, const CoarseOffset &b) { return a.difference < b.difference; });
    std::vector<int> offsets;
    for (auto entry = found.begin(); entry != found.begin() + kept; ++entry)
        offsets.push_back(entry->offset);
    if (std::find(offsets.begin(), offsets.end(), offset) == offsets.end())
        offsets.push_back(offset);
    return offsets;
}

void look(const ScrollSearch &search, const ScrollMatch &match, ScrollBand &band)
{
    const int rows = band.end - band.first;
    const int met = search.overlap(band.first, rows, match.offset);
    ScoredOffset best;
    bool any = false;
    if (met >= kMinOverlap) {
        const int minOverlap = std::max(3 * met / 4, kMinOverlap);
        for (const int offset : candidates(search, band.first, rows, match.offset, minOverlap)) {
            const auto score = search.fine(band.first, rows, offset, kMinOverlap);
            if (score && (!any || ScoredOffset{offset, *score}.isBetterThan(best, match.offset))) {
                best = {offset, *score};
                any = true;
            }
        }
    }
    band.unseen = !any;
    band.offset = any ? best.offset : match.offset;
    band.mean = any ? best.score.mean : 0.0;
    band.confidence = any ? std::clamp(1.0 - best.score.score / 32.0, 0.0, 1.0) : match.quality;
}

/// The offset that most bands agree on, by confidence.
int consensus(const std::vector<ScrollBand> &bands, int offset)
{
    std::vector<const ScrollBand *> voters;
    for (const ScrollBand &band : bands) {
        if (band.texture >= kMinTexture && band.confidence >= kMinConfidence)
            voters.push_back(&band);
    }
    std::stable_sort(voters.begin(), voters.end(),
                     [](const ScrollBand *a, const ScrollBand *b) { return a->offset < b->offset; });
    double most = 0;
    int winner = offset;
    for (const ScrollBand *own : voters) {
        double sum = 0;
        for (const ScrollBand *other : voters)
            sum += std::abs(other->offset - own->offset) < kAgree ? other->confidence : 0.0;
        // Neighbours count for each other, so two of them often have the same sum.
        const bool nearer = std::abs(own->offset - offset) < std::abs(winner - offset);
        if (sum > most + kSame || (sum > most - kSame && nearer)) {
            most = std::max(most, sum);
            winner = own->offset;
        }
    }
    return winner;
}

ScrollBand::Kind kindOf(const ScrollBand &band, int offset)
{
    if (band.unseen)
        return ScrollBand::Kind::Ok;
    if (band.texture < kMinTexture)
        return ScrollBand::Kind::Flat;
    if (band.confidence < kMinConfidence)
        return ScrollBand::Kind::Failed;
    return std::abs(band.offset - offset) > kFollows ? ScrollBand::Kind::Moving : ScrollBand::Kind::Ok;
}

} // namespace

ScrollBands readBands(const ScrollSearch &search, const ScrollMatch &match, bool certain)
{
    const GreyFrame &frame = search.frame();
    ScrollBands result;
    for (int y = 0; y < frame.height(); y += kBandRows) {
        ScrollBand band;
        band.first = y;
        band.end = std::min(y + kBandRows, frame.height());
        band.texture = static_cast<double>(frame.activity(band.first, band.end)) /
                       std::max((band.end - band.first) * frame.width(), 1);
        look(search, match, band);
        result.bands.push_back(band);
    }
    result.offset = certain ? match.offset : consensus(result.bands, match.offset);
    for (ScrollBand &band : result.bands) {
        if (band.unseen)
            band.offset = result.offset;
        band.kind = kindOf(band, result.offset);
        if (certain && band.kind == ScrollBand::Kind::Ok)
            band.offset = result.offset;
    }
    return result;
}

} // namespace tavrel::ui
