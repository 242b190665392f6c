// The compiler barriers of the instruction tests.
//
// The tests run instructions on constants and compare with constants: a compiler that sees both
// computes everything while it compiles, merges two executions into one, or takes a cheaper
// instruction for the lanes that are looked at, and the processor is never asked. An empty assembly
// statement that claims to change a value costs nothing and hides it: behind the barrier the value
// is unknown, and before it the whole register must have been computed. Operands and results both
// need one. A barrier on memory serves where the instruction is to load its operand itself.
#pragma once

#include <immintrin.h>

namespace vorn {

/// The same vector, unknown to the compiler and whole in a vector register.
__attribute__((always_inline)) inline __m128i opaque(__m128i value) {
    asm volatile("" : "+x"(value));
    return value;
}

__attribute__((always_inline)) inline __m128 opaque(__m128 value) {
    asm volatile("" : "+x"(value));
    return value;
}

__attribute__((always_inline)) inline __m128d opaque(__m128d value) {
    asm volatile("" : "+x"(value));
    return value;
}

__attribute__((always_inline, target("avx"))) inline __m256d opaque(__m256d value) {
    asm volatile("" : "+x"(value));
    return value;
}

/// The same integer, unknown to the compiler and in a general register.
template <typename Integer>
__attribute__((always_inline)) inline Integer opaqueInteger(Integer value) {
    asm volatile("" : "+r"(value));
    return value;
}

/// Makes what `object` holds unknown to the compiler, in its place in memory.
template <typename Object>
__attribute__((always_inline)) inline void makeOpaque(Object& object) {
    asm volatile("" : "+m"(object));
}

}  // namespace vorn
