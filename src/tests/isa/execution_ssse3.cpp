#include <tmmintrin.h>

#include "tests/isa/lanes.h"
#include "tests/isa/mmx_sse_execution.h"

namespace vorn {

__attribute__((noinline, target("ssse3"))) Actual ssse3AbsoluteValues() {
    Actual actual;
    const __m128i bytes = operandOf<std::int8_t>({127, -127});
    const __m128i words = operandOf<std::int16_t>({128, -128});
    const __m128i dwords = operandOf<std::int32_t>({123456789, -123456789});
    addLanes<std::int8_t>(actual, _mm_abs_epi8(bytes), 0, 2);
    addLanes<std::int16_t>(actual, _mm_abs_epi16(words), 0, 2);
    addLanes<std::int32_t>(actual, _mm_abs_epi32(dwords), 0, 2);
    return actual;
}

__attribute__((noinline, target("ssse3"))) Actual ssse3Arithmetic() {
    Actual actual;
    const __m128i words = operandOf<std::int16_t>({-1, 1, 0, 8, -8, 0, 2, 2});
    const __m128i otherWords = operandOf<std::int16_t>({-2, -2, 1000, 2000, 128, 32, 81, -21});
    addLanes<std::int16_t>(actual, _mm_hadd_epi16(words, otherWords));
    addLanes<std::int16_t>(actual, _mm_hsub_epi16(words, otherWords));

    const __m128i dwords = operandOf<std::int32_t>({-1, 1, 0, 65535});
    const __m128i otherDwords = operandOf<std::int32_t>({-65535, 0, 128, -32});
    addLanes<std::int32_t>(actual, _mm_hadd_epi32(dwords, otherDwords));
    addLanes<std::int32_t>(actual, _mm_hsub_epi32(dwords, otherDwords));

    const __m128i factors =
        operandOf<std::int16_t>({-23790, 261, 15785, -32767, 32767, 4369, -8605, -7612});
    const __m128i otherFactors =
        operandOf<std::int16_t>({16384, -20746, 8349, -32767, 0, 8738, 4135, 31471});
    addLanes<std::int16_t>(actual, _mm_mulhrs_epi16(factors, otherFactors));
    return actual;
}

__attribute__((noinline, target("ssse3"))) Actual ssse3DotProduct() {
    Actual actual;
    const __m128i unsignedBytes = operandOf<std::uint8_t>({14, 15});
    const __m128i signedBytes = operandOf<std::int8_t>({14, 15});
    addLanes<std::int16_t>(actual, _mm_maddubs_epi16(unsignedBytes, signedBytes), 0, 1);
    return actual;
}

}  // namespace vorn
