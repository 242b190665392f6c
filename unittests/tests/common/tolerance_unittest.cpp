#include "tests/common/tolerance.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

TEST(IsWithinPercent, IncludesTheBoundWhateverTheRounding) {
    for (const double expected : {5.6, 6.4, 7.2, 8.0, 9.6, 100.0, 133.33}) {
        EXPECT_TRUE(isWithinPercent(expected / 100 * 105, expected, 5));
        EXPECT_TRUE(isWithinPercent(expected / 100 * 95, expected, 5));
        EXPECT_FALSE(isWithinPercent(expected * 1.05000001, expected, 5));
        EXPECT_FALSE(isWithinPercent(expected * 0.94999999, expected, 5));
        EXPECT_TRUE(isWithinPercent(expected, expected, 0));
        EXPECT_FALSE(isWithinPercent(expected * (1 + 1e-15), expected, 0));
        EXPECT_FALSE(isWithinPercent(expected, expected, -1));
    }
    EXPECT_FALSE(isWithinPercent(0, 0, 1000)) << "not a number";
}

}  // namespace
}  // namespace vorn
