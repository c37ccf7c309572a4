#pragma once

#include <cstdint>

namespace tavrel::ui::scroll_rows {

/// The loops over pixels and block sums that placing a frame spends its time in. Compiled for speed in every build.

/// 77 R + 150 G + 29 B of `count` pixels, BGRA in memory; 65,280 at most.
void weigh(const std::uint32_t *pixels, std::uint16_t *weighed, int count);
/// Averages `step` weighed pixels into one grey value, fewer at the end.
void average(const std::uint16_t *weighed, int count, int step, std::uint8_t *grey);
/// The sum of |a - b|.
[[nodiscard]] std::int32_t difference(const std::uint8_t *a, const std::uint8_t *b, int count);
/// A number that equal rows share and others hardly ever do.
[[nodiscard]] std::uint64_t signature(const std::uint8_t *grey, int count);
/// next[i] = sums[i] + the sum of the i-th four grey values; the last block may be narrower.
void addBlocks(const std::uint8_t *grey, int count, const std::int32_t *sums, std::int32_t *next);
/// The sum of |(aEnd - aFirst) - (bEnd - bFirst)| over the blocks.
[[nodiscard]] std::int32_t blockDifference(const std::int32_t *aFirst, const std::int32_t *aEnd,
                                           const std::int32_t *bFirst, const std::int32_t *bEnd, int blocks);
/// Adds up the channels of `cell` pixels into three sums per cell, fewer at the end.
void addCells(const std::uint32_t *pixels, int count, int cell, std::uint32_t *sums);

} // namespace tavrel::ui::scroll_rows
