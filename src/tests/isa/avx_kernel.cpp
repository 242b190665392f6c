#include <immintrin.h>

#include "tests/isa/avx_kernels.h"
#include "tests/isa/opaque.h"

namespace vorn {

namespace {

__attribute__((target("avx"))) double sumOfLanes(__m256d vector) {
    std::array<double, 4> lanes{};
    _mm256_storeu_pd(lanes.data(), vector);
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

}  // namespace

__attribute__((noinline, target("avx"))) void avxKernel(const double* a, const double* b,
                                                        KernelSlots& slots) {
    constexpr std::size_t lanes = 4;
    __m256d ascendingSums = _mm256_setzero_pd();
    __m256d descendingSums = _mm256_setzero_pd();
    std::size_t ascending = 0;
    std::size_t descending = kernelArraySize - lanes;
    for (std::size_t i = 0; i < kernelArraySize / 2; i += lanes) {
        const __m256d factors = opaque(_mm256_load_pd(b + i));
        const __m256d straight = opaque(_mm256_load_pd(a + ascending));
        const __m256d reversed = opaque(_mm256_load_pd(a + descending));
        const __m256d halvesSwapped = _mm256_permute2f128_pd(reversed, reversed, 1);
        const __m256d turned = _mm256_permute_pd(halvesSwapped, 5);
        ascendingSums = _mm256_add_pd(ascendingSums, _mm256_mul_pd(factors, straight));
        descendingSums = _mm256_add_pd(descendingSums, _mm256_mul_pd(factors, turned));
        ascending = (ascending + lanes) & (kernelArraySize - 1);
        descending = (descending - lanes) & (kernelArraySize - 1);
    }
    slots[0] = sumOfLanes(ascendingSums);
    slots[1] = sumOfLanes(descendingSums);
}

}  // namespace vorn
