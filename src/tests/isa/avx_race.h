// The AVX timing compare: the same kernel in scalar code and in 256-bit operations, which must give
// the same sums and must not be slower.
#pragma once

#include <cstddef>
#include <functional>

#include "tests/isa/avx_kernels.h"
#include "tests/isa/repetition.h"

namespace vorn {

/// The sums of the most recent timed runs; zero before the first.
struct KernelResults {
    KernelSlots reference{};
    KernelSlots avx{};
};

/// Who races, and where the sums go.
struct AvxRace {
    using Kernel = std::function<void(const double* a, const double* b, KernelSlots& slots)>;

    KernelResults& results;  ///< compared before the timed runs, overwritten by them
    Kernel reference = referenceKernel;
    Kernel avx = avxKernel;
    int times = repetitions;
    /// Memory of so many bytes aligned to kernelAlignment, or null; given back with `release`.
    std::function<void*(std::size_t bytes)> allocate = allocateAligned;
    std::function<void(void* memory)> release = releaseAligned;

    static void* allocateAligned(std::size_t bytes);
    static void releaseAligned(void* memory);
};

/// Runs the race and prints its report. The accuracy check compares what the previous race left in
/// the results, so that a mismatch, which returns before the timed runs, stays. Whether the sums
/// agree and the AVX form took no longer than the reference; false when there is no memory for the
/// arrays.
bool runAvxRace(const AvxRace& race);

}  // namespace vorn
