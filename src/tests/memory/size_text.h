// Sizes and numbers as the configuration spells them.
#pragma once

#include <cstdint>
#include <string>

namespace vorn {

/// `value` cut to a whole number; the nearest 64-bit number when it does not fit, 0 for what is not
/// a number.
std::int64_t truncatedToInteger(double value);

/// Bytes of a size in upper case that may have a fraction: the number before "GB", "MB" or "KB",
/// else a whole number of bytes. Sizes that do not fit are the nearest 64-bit number.
std::int64_t bytesOfFractionalSize(const std::string& size);

/// Bytes of a size in upper case whose number is whole, with the same units.
std::int64_t bytesOfWholeSize(const std::string& size);

}  // namespace vorn
