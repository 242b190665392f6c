// How tests judge a measured value by a tolerance in percent.
#pragma once

#include <cmath>

namespace vorn {

/// Whether `detected` deviates from `expected` by at most `percent` of it, the bound included. A
/// deviation that is not a number (of 0 from 0) is not within anything.
inline bool isWithinPercent(double detected, double expected, double percent) {
    // Rounding must not put a deviation of exactly the bound beyond it.
    constexpr double roundingSlack = 1.0 + 1e-9;
    return std::abs(detected - expected) / expected * 100.0 <= percent * roundingSlack;
}

}  // namespace vorn
