#include <emmintrin.h>
#include <pmmintrin.h>

#include <cstddef>

#include "tests/isa/mmx_sse_execution.h"
#include "tests/isa/opaque.h"
#include "tests/isa/repetition.h"

namespace vorn {

namespace {

const WordVector wordOperand{{{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}}};
const FloatVector floatOperand{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
const Complex firstFactor{3, 2};
const Complex secondFactor{5, -4};

// Compilers translate the MMX intrinsics into SSE2 code, so each instruction is written out; the
// constraint "y" is an MMX register.

__attribute__((always_inline)) inline __m64 mmxLoad(const std::array<std::int16_t, 4>& words) {
    __m64 vector;
    asm volatile("movq %1, %0" : "=y"(vector) : "m"(words));
    return vector;
}

__attribute__((always_inline)) inline __m64 mmxMultiplyAdd(__m64 first, __m64 second) {
    asm volatile("pmaddwd %1, %0" : "+y"(first) : "y"(second));
    return first;
}

__attribute__((always_inline)) inline __m64 mmxAdd(__m64 first, __m64 second) {
    asm volatile("paddd %1, %0" : "+y"(first) : "y"(second));
    return first;
}

__attribute__((always_inline)) inline __m64 mmxHighHalf(__m64 vector) {
    asm volatile("psrlq $32, %0" : "+y"(vector));
    return vector;
}

__attribute__((always_inline)) inline std::uint32_t mmxLowHalf(__m64 vector) {
    std::uint32_t half = 0;
    asm volatile("movd %1, %0" : "=r"(half) : "y"(vector));
    return half;
}

}  // namespace

__attribute__((noinline)) std::int16_t mmxDotProduct(const WordVector& first,
                                                     const WordVector& second) {
    const __m64 product0 = mmxMultiplyAdd(mmxLoad(first[0]), mmxLoad(second[0]));
    const __m64 product1 = mmxMultiplyAdd(mmxLoad(first[1]), mmxLoad(second[1]));
    const __m64 product2 = mmxMultiplyAdd(mmxLoad(first[2]), mmxLoad(second[2]));
    const __m64 sums = mmxAdd(mmxAdd(product0, product1), product2);
    const std::uint32_t sum = mmxLowHalf(mmxAdd(sums, mmxHighHalf(sums)));
    asm volatile("emms");  // gives the registers back to the floating-point unit
    return static_cast<std::int16_t>(sum);
}

__attribute__((noinline)) float sseDotProduct(const FloatVector& first, const FloatVector& second) {
    __m128 sums = opaque(_mm_setzero_ps());
    for (std::size_t group = 0; group < first.size(); group += 4) {
        const __m128 product = _mm_mul_ps(opaque(_mm_loadu_ps(first.data() + group)),
                                          opaque(_mm_loadu_ps(second.data() + group)));
        sums = opaque(_mm_add_ps(sums, opaque(product)));
    }
    const __m128 pairs = opaque(_mm_add_ps(sums, opaque(_mm_movehl_ps(sums, sums))));
    const __m128 odd = opaque(_mm_shuffle_ps(pairs, pairs, _MM_SHUFFLE(1, 1, 1, 1)));
    return _mm_cvtss_f32(opaque(_mm_add_ps(pairs, odd)));
}

__attribute__((noinline)) Complex sse2ComplexProduct(const Complex& first, const Complex& second) {
    const __m128d parts = opaque(_mm_loadu_pd(first.data()));
    const __m128d straight = opaque(_mm_loadu_pd(second.data()));
    const __m128d swapped = opaque(_mm_shuffle_pd(straight, straight, 1));
    const __m128d real = opaque(_mm_unpacklo_pd(parts, parts));
    const __m128d imaginary = opaque(_mm_unpackhi_pd(parts, parts));
    const __m128d byReal = opaque(_mm_mul_pd(real, straight));
    const __m128d byImaginary = opaque(_mm_mul_pd(imaginary, swapped));
    const __m128d difference = opaque(_mm_sub_pd(byReal, byImaginary));
    const __m128d sum = opaque(_mm_add_pd(byReal, byImaginary));
    const __m128d highOfSum = opaque(_mm_unpackhi_pd(sum, sum));
    const __m128d product = opaque(_mm_unpacklo_pd(difference, highOfSum));
    Complex result{};
    _mm_storeu_pd(result.data(), product);
    return result;
}

__attribute__((noinline, target("sse3"))) Complex sse3ComplexProduct(const Complex& first,
                                                                     const Complex& second) {
    // The duplicating load must load: from a register it would become another instruction.
    Complex parts = first;
    makeOpaque(parts);
    const __m128d real = opaque(_mm_loaddup_pd(&parts[0]));
    const __m128d imaginary = opaque(_mm_loaddup_pd(&parts[1]));
    const __m128d straight = opaque(_mm_loadu_pd(second.data()));
    const __m128d swapped = opaque(_mm_shuffle_pd(straight, straight, 1));
    const __m128d byReal = opaque(_mm_mul_pd(real, straight));
    const __m128d byImaginary = opaque(_mm_mul_pd(imaginary, swapped));
    const __m128d product = opaque(_mm_addsub_pd(byReal, byImaginary));
    Complex result{};
    _mm_storeu_pd(result.data(), product);
    return result;
}

namespace {

template <typename Kernel>
Actual repeatDotProduct(const Kernel& kernel) {
    const float reference = scalarDotProduct(floatOperand, floatOperand);
    const Repeated<float> repeated = repeatWhileEqual(knownDotProduct, kernel);
    return {{reference, repeated.result}, repeated.everyRepetition};
}

Actual repeatComplexProduct(Complex (*kernel)(const Complex&, const Complex&)) {
    const Complex reference = scalarComplexProduct(firstFactor, secondFactor);
    const Repeated<Complex> repeated = repeatWhileEqual(
        knownComplexProduct, [kernel] { return kernel(firstFactor, secondFactor); });
    return {{reference[0], reference[1], repeated.result[0], repeated.result[1]},
            repeated.everyRepetition};
}

}  // namespace

Actual mmxDotProducts() {
    return repeatDotProduct(
        [] { return static_cast<float>(mmxDotProduct(wordOperand, wordOperand)); });
}

Actual sseDotProducts() {
    return repeatDotProduct([] { return sseDotProduct(floatOperand, floatOperand); });
}

Actual sse2ComplexProducts() {
    return repeatComplexProduct(sse2ComplexProduct);
}

Actual sse3ComplexProducts() {
    return repeatComplexProduct(sse3ComplexProduct);
}

}  // namespace vorn
