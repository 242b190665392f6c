// The two forms of one floating-point kernel that race against each other.
#pragma once

#include <array>
#include <cstddef>

namespace vorn {

/// Elements of each array.
inline constexpr std::size_t kernelArraySize = 1024;
/// Alignment of the arrays in bytes, one 256-bit vector.
inline constexpr std::size_t kernelAlignment = 32;

using KernelSlots = std::array<double, 2>;

/// Both forms compute two sums over i = 0 ... 511: of b[i] * a[1023 - i], the descending sum, and
/// of b[i] * a[i], the ascending sum. The arrays have kernelArraySize elements and are aligned. The
/// two forms keep their sums in opposite slots.

/// One product and one sum an element, in scalar code: slot 0 descending, slot 1 ascending.
void referenceKernel(const double* a, const double* b, KernelSlots& slots);

/// Four elements at a time with 256-bit operations: slot 0 ascending, slot 1 descending. Only for a
/// processor and an operating system with AVX.
void avxKernel(const double* a, const double* b, KernelSlots& slots);

}  // namespace vorn
