#include "tests/memory/size_text.h"

#include <array>
#include <cmath>
#include <limits>

#include "report/text.h"

namespace vorn {

namespace {

struct SizeUnit {
    const char* name;
    std::int64_t bytes;
};

constexpr SizeUnit singleBytes{"", 1};
constexpr std::array<SizeUnit, 3> sizeUnits{{
    {"GB", std::int64_t{1} << 30U},
    {"MB", std::int64_t{1} << 20U},
    {"KB", std::int64_t{1} << 10U},
}};

/// Takes the unit and what follows it off the size; singleBytes when it holds none.
SizeUnit takeUnit(std::string& size) {
    for (const SizeUnit& unit : sizeUnits) {
        const std::size_t place = size.find(unit.name);
        if (place != std::string::npos) {
            size.resize(place);
            return unit;
        }
    }
    return singleBytes;
}

}  // namespace

std::int64_t truncatedToInteger(double value) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return value < -limit ? std::numeric_limits<std::int64_t>::min()
                          : static_cast<std::int64_t>(value);
}

std::int64_t bytesOfFractionalSize(const std::string& size) {
    std::string number = size;
    const SizeUnit unit = takeUnit(number);
    if (unit.bytes == 1) {
        return leadingInteger64(number);
    }
    return truncatedToInteger(leadingDouble(number) * static_cast<double>(unit.bytes));
}

std::int64_t bytesOfWholeSize(const std::string& size) {
    std::string number = size;
    const SizeUnit unit = takeUnit(number);
    const std::int64_t count = leadingInteger64(number);
    std::int64_t bytes = 0;
    if (__builtin_mul_overflow(count, unit.bytes, &bytes)) {
        return count < 0 ? std::numeric_limits<std::int64_t>::min()
                         : std::numeric_limits<std::int64_t>::max();
    }
    return bytes;
}

}  // namespace vorn
