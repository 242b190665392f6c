// The references stand alone because their file is compiled without vectorisation: a processor
// whose packed arithmetic is at fault must not compute what it is compared with.
#include <cstdlib>

#include "tests/isa/mmx_sse_execution.h"

namespace vorn {

float scalarDotProduct(const FloatVector& first, const FloatVector& second) {
    float sum = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        sum += first[i] * second[i];
    }
    return sum;
}

Complex scalarComplexProduct(const Complex& first, const Complex& second) {
    return {first[0] * second[0] - first[1] * second[1],
            first[0] * second[1] + first[1] * second[0]};
}

std::uint16_t scalarSad(const ByteVector& first, const ByteVector& second, std::size_t offset) {
    int sum = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        sum += std::abs(first.at(4 + offset + k) - second.at(4 + k));
    }
    return static_cast<std::uint16_t>(sum);
}

}  // namespace vorn
