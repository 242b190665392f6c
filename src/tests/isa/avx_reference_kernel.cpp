// The scalar form stands alone because its file is compiled without vectorisation.
#include "tests/isa/avx_kernels.h"

namespace vorn {

__attribute__((noinline)) void referenceKernel(const double* a, const double* b,
                                               KernelSlots& slots) {
    constexpr std::size_t last = kernelArraySize - 1;
    double descendingSum = 0;
    double ascendingSum = 0;
    std::size_t descending = last;
    std::size_t ascending = 0;
    for (std::size_t i = 0; i < kernelArraySize / 2; ++i) {
        descendingSum += b[i] * a[descending];
        ascendingSum += b[i] * a[ascending];
        // Two sums side by side are two lanes of a vector to a compiler that looks for them.
        asm volatile("" : "+x"(descendingSum), "+x"(ascendingSum));
        descending = (descending - 1) & last;
        ascending = (ascending + 1) & last;
    }
    slots[0] = descendingSum;
    slots[1] = ascendingSum;
}

}  // namespace vorn
