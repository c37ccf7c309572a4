#pragma once

#include <algorithm>
#include <cmath>

namespace tavrel {

/// No stored coordinate or size is larger, so that no painting can hang on one.
inline constexpr double kLargestStoredLength = 1'000'000;

/// A length brought into the range that is stored; what is no number is 0.
[[nodiscard]] inline double storedLength(double value)
{
    return std::isnan(value) ? 0.0 : std::clamp(value, -kLargestStoredLength, kLargestStoredLength);
}

} // namespace tavrel
