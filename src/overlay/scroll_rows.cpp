#include "overlay/scroll_rows.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavrel::ui::scroll_rows {

namespace {

/// A step that the compiler knows turns the division into a multiplication.
template <int Step>
int averageWhole(const std::uint16_t *weighed, int whole, std::uint8_t *grey)
{
    constexpr std::uint32_t kDivisor = Step * 256U;
    for (int i = 0; i < whole; ++i) {
        std::uint32_t sum = Step * 128U;
        for (int k = 0; k < Step; ++k)
            sum += weighed[i * Step + k];
        grey[i] = static_cast<std::uint8_t>(sum / kDivisor);
    }
    return whole;
}

int averageWhole(const std::uint16_t *weighed, int whole, int step, std::uint8_t *grey)
{
    switch (step) {
    case 1:
        return averageWhole<1>(weighed, whole, grey);
    case 2:
        return averageWhole<2>(weighed, whole, grey);
    case 3:
        return averageWhole<3>(weighed, whole, grey);
    case 4:
        return averageWhole<4>(weighed, whole, grey);
    case 5:
        return averageWhole<5>(weighed, whole, grey);
    case 6:
        return averageWhole<6>(weighed, whole, grey);
    case 7:
        return averageWhole<7>(weighed, whole, grey);
    case 8:
        return averageWhole<8>(weighed, whole, grey);
    default:
        return 0;
    }
}

} // namespace

void weigh(const std::uint32_t *pixels, std::uint16_t *weighed, int count)
{
    for (int i = 0; i < count; ++i) {
        const std::uint32_t p = pixels[i];
        const auto red = static_cast<std::uint16_t>((p >> 16) & 0xffU);
        const auto green = static_cast<std::uint16_t>((p >> 8) & 0xffU);
        const auto blue = static_cast<std::uint16_t>(p & 0xffU);
        weighed[i] = static_cast<std::uint16_t>(red * 77 + green * 150 + blue * 29);
    }
}

void average(const std::uint16_t *weighed, int count, int step, std::uint8_t *grey)
{
    for (int i = averageWhole(weighed, count / step, step, grey); i * step < count; ++i) {
        const int end = std::min((i + 1) * step, count);
        const auto pixels = static_cast<std::uint32_t>(end - i * step);
        std::uint32_t sum = pixels * 128U;
        for (int x = i * step; x < end; ++x)
            sum += weighed[x];
        grey[i] = static_cast<std::uint8_t>(sum / (pixels * 256U));
    }
}

std::int32_t difference(const std::uint8_t *a, const std::uint8_t *b, int count)
{
    std::int32_t sum = 0;
    for (int i = 0; i < count; ++i)
        sum += std::abs(a[i] - b[i]);
    return sum;
}

std::uint64_t signature(const std::uint8_t *grey, int count)
{
    constexpr std::uint64_t kOdd = 0x9e3779b97f4a7c15U;
    std::uint64_t hash = kOdd;
    int x = 0;
    for (std::uint64_t eight = 0; x + 8 <= count; x += 8) {
        std::memcpy(&eight, grey + x, sizeof eight);
        hash = (hash ^ eight) * kOdd;
        hash ^= hash >> 29;
    }
    for (; x < count; ++x)
        hash = (hash ^ grey[x]) * kOdd;
    return hash ^ (hash >> 32);
}

void addBlocks(const std::uint8_t *grey, int count, const std::int32_t *sums, std::int32_t *next)
{
    const int whole = count / 4;
    for (int i = 0; i < whole; ++i)
        next[i] = sums[i] + grey[4 * i] + grey[4 * i + 1] + grey[4 * i + 2] + grey[4 * i + 3];
    if (whole * 4 < count) {
        next[whole] = sums[whole];
        for (int x = whole * 4; x < count; ++x)
            next[whole] += grey[x];
    }
}

std::int32_t blockDifference(const std::int32_t *aFirst, const std::int32_t *aEnd, const std::int32_t *bFirst,
                             const std::int32_t *bEnd, int blocks)
{
    std::int32_t sum = 0;
    for (int i = 0; i < blocks; ++i)
        sum += std::abs((aEnd[i] - aFirst[i]) - (bEnd[i] - bFirst[i]));
    return sum;
}

void addCells(const std::uint32_t *pixels, int count, int cell, std::uint32_t *sums)
{
    for (int first = 0; first < count; first += cell, sums += 3) {
        const int end = std::min(first + cell, count);
        std::uint32_t redBlue = 0; // two sums in one: a cell is at most 256 pixels wide
        std::uint32_t green = 0;
        for (int x = first; x < end; ++x) {
            redBlue += pixels[x] & 0xff00ffU;
            green += (pixels[x] >> 8) & 0xffU;
        }
        sums[0] += redBlue >> 16;
        sums[1] += green;
        sums[2] += redBlue & 0xffffU;
    }
}

} // namespace tavrel::ui::scroll_rows
