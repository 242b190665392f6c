// Execution of the MMX and SSE family: runs the instructions of each group and returns the actual
// lanes. Each function executes the extension that it is named after and must only be called on a
// processor that reports it. None is inlined, so that each is found by its name in the library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "tests/isa/check.h"

namespace vorn {

using WordVector = std::array<std::array<std::int16_t, 4>, 3>;  ///< twelve words, three groups
using FloatVector = std::array<float, 12>;
using ByteVector = std::array<std::uint8_t, 16>;
using Complex = std::array<double, 2>;  ///< real part, imaginary part

/// What the products of the constant operands are.
inline constexpr float knownDotProduct = 506;
inline constexpr Complex knownComplexProduct{23, -2};

/// The references, in scalar arithmetic that no packed instruction takes part in. The sum of
/// absolute differences is that of four bytes of `first` from 4 + `offset` on and bytes 4 to 7 of
/// `second`; `offset` is 0 to 7.
float scalarDotProduct(const FloatVector& first, const FloatVector& second);
Complex scalarComplexProduct(const Complex& first, const Complex& second);
std::uint16_t scalarSad(const ByteVector& first, const ByteVector& second, std::size_t offset);

/// The kernels that are repeated.
std::int16_t mmxDotProduct(const WordVector& first, const WordVector& second);
float sseDotProduct(const FloatVector& first, const FloatVector& second);
Complex sse2ComplexProduct(const Complex& first, const Complex& second);
Complex sse3ComplexProduct(const Complex& first, const Complex& second);

/// The reference, then the last repetition's result; repeated while it is the known product.
Actual mmxDotProducts();
Actual sseDotProducts();
Actual sse2ComplexProducts();
Actual sse3ComplexProducts();

Actual ssse3AbsoluteValues();
Actual ssse3Arithmetic();
Actual ssse3DotProduct();

Actual sse41Blend();
Actual sse41MinMax();
Actual sse41Insert();
Actual sse41Extract();
Actual sse41BitwiseComparison();
Actual sse41DotProduct();
Actual sse41Arithmetic();
Actual sse41BitConversion();
Actual sse41BitCompare();

Actual sse42StringCompare();
Actual sse42PopulationCount();
Actual sse42Crc();

}  // namespace vorn
