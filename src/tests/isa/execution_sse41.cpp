#include <smmintrin.h>

#include <cstdlib>

#include "tests/isa/lanes.h"
#include "tests/isa/mmx_sse_execution.h"

namespace vorn {

namespace {

// Written out, because some compilers take another instruction for a blend or an extraction whose
// immediate they know.

/// _mm_blend_epi16(first, second, 0xF0)
__attribute__((always_inline)) inline __m128i blendHighWords(__m128i first, __m128i second) {
    asm volatile("pblendw $0xF0, %1, %0" : "+x"(first) : "x"(second));
    return first;
}

/// _mm_blend_pd(first, second, 2)
__attribute__((always_inline)) inline __m128i blendHighDouble(__m128i first, __m128i second) {
    asm volatile("blendpd $2, %1, %0" : "+x"(first) : "x"(second));
    return first;
}

/// _mm_extract_epi32(vector, lane)
template <int lane>
__attribute__((always_inline)) inline std::int32_t extractDword(__m128i vector) {
    std::int32_t value = 0;
    asm volatile("pextrd %2, %1, %0" : "=r"(value) : "x"(vector), "i"(lane));
    return value;
}

constexpr ByteVector sadFirst{0x0f, 0x3c, 0x37, 0x1f, 0x00, 0x01, 0x02, 0x04,
                              0x08, 0x10, 0x20, 0x40, 0x80, 0xff, 0x01, 0x11};
constexpr ByteVector sadSecond{0x02, 0x04, 0x08, 0x40, 0xff, 0x00, 0x01, 0x10,
                               0x20, 0x40, 0x80, 0xff, 0x4b, 0x1f, 0x2a, 0x0b};

}  // namespace

__attribute__((noinline, target("sse4.1"))) Actual sse41Blend() {
    Actual actual;
    const __m128i bytes = operandOf<std::uint8_t>({0x88, 0x88, 0x99, 0x99, 0xaa, 0xaa, 0xbb, 0xbb,
                                                   0xcc, 0xcc, 0xdd, 0xdd, 0xee, 0xee, 0xff, 0xff});
    const __m128i qwords = operandOf<std::uint64_t>({0x0123456789ABCDEF, 0xFEDCBA9876543210});
    addLanes<std::uint64_t>(actual, blendHighWords(bytes, qwords));

    // Pairs of single-precision numbers, moved as one double each.
    const __m128i pair = operandOf<float>({-3.14159F, -10.5F});
    const __m128i otherPair = operandOf<float>({2.19F, 500.25F});
    addLanes<float>(actual, blendHighDouble(pair, otherPair), 0, 2);
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41MinMax() {
    Actual actual;
    const __m128i byte = operandOf<std::int8_t>({1});
    const __m128i otherByte = operandOf<std::int8_t>({127});
    addLanes<std::int8_t>(actual, _mm_max_epi8(byte, otherByte), 0, 1);
    addLanes<std::int8_t>(actual, _mm_min_epi8(byte, otherByte), 0, 1);

    const __m128i dword = operandOf<std::int32_t>({32000});
    const __m128i otherDword = operandOf<std::int32_t>({2000});
    addLanes<std::int32_t>(actual, _mm_max_epi32(dword, otherDword), 0, 1);
    addLanes<std::int32_t>(actual, _mm_min_epi32(dword, otherDword), 0, 1);

    const __m128i unsignedWord = operandOf<std::uint16_t>({65535});
    const __m128i otherUnsignedWord = operandOf<std::uint16_t>({65534});
    addLanes<std::uint16_t>(actual, _mm_max_epu16(unsignedWord, otherUnsignedWord), 0, 1);
    addLanes<std::uint16_t>(actual, _mm_min_epu16(unsignedWord, otherUnsignedWord), 0, 1);

    const __m128i unsignedDword = operandOf<std::uint32_t>({65000});
    const __m128i otherUnsignedDword = operandOf<std::uint32_t>({70000});
    addLanes<std::uint32_t>(actual, _mm_max_epu32(unsignedDword, otherUnsignedDword), 0, 1);
    addLanes<std::uint32_t>(actual, _mm_min_epu32(unsignedDword, otherUnsignedDword), 0, 1);
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41Insert() {
    Actual actual;
    const __m128i bytes =
        operandOf<std::uint8_t>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    const __m128i dwords = operandOf<std::int32_t>({0, 11, 2222, 333333});
    addLanes<std::int8_t>(actual, _mm_insert_epi8(bytes, opaqueInteger(-32), 7), 7, 1);
    addLanes<std::int32_t>(actual, _mm_insert_epi32(dwords, opaqueInteger(-65536), 2), 2, 1);
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41Extract() {
    Actual actual;
    const __m128i bytes = operandOf<std::uint8_t>({0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x7f,
                                                   0xff, 0xfe, 0xfc, 0xf8, 0xf0, 0xe0, 0xc0, 0x80});
    const __m128i dwords = operandOf<std::int32_t>({0, 65535, -320000000, 128});
    addInteger(actual, _mm_extract_epi8(bytes, 4));
    addInteger(actual, _mm_extract_epi8(bytes, 13));
    addInteger(actual, extractDword<1>(dwords));
    addInteger(actual, extractDword<2>(dwords));
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41BitwiseComparison() {
    Actual actual;
    __m128i first = operandOf<std::uint64_t>({0xAAAA55551111FFFF, 0xFEDCBA9876543210});
    __m128i second = operandOf<std::uint64_t>({0xAAAA55551111FFFF, 0xFEDCBA9876543210});
    addInteger(actual, _mm_testc_si128(first, second));
    first = withLane<std::uint64_t>(first, 0, 0xAAAA55551011FFFF);
    addInteger(actual, _mm_testc_si128(first, second));

    first = operandOf<std::uint64_t>({0, 0});
    second = operandOf<std::uint64_t>({0x0FFFFFFFFFFFFFFF, 0});
    addInteger(actual, _mm_testnzc_si128(first, second));
    first = withLane<std::uint64_t>(first, 0, 1);
    addInteger(actual, _mm_testnzc_si128(first, second));

    first = operandOf<std::uint64_t>({0x55550000BBBB9999, 0x0123456789ABCDEF});
    second = operandOf<std::uint64_t>({0xAAAAFFFF44446666, 0xFEDCBA9876543210});
    addInteger(actual, _mm_testz_si128(first, second));
    first = withLane<std::uint64_t>(first, 0, 0x55550000BBCB9999);
    addInteger(actual, _mm_testz_si128(first, second));
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41DotProduct() {
    Actual actual;
    const __m128i first = operandOf<float>({1.5F, 10.25F, -11.0625F, 81.0F});
    const __m128i second = operandOf<float>({-1.5F, 3.125F, -50.5F, 100.0F});
    const __m128 product = _mm_dp_ps(_mm_castsi128_ps(first), _mm_castsi128_ps(second), 0x55);
    addLanes<float>(actual, _mm_castps_si128(product));
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41Arithmetic() {
    Actual actual;
    const __m128i sad =
        _mm_mpsadbw_epu8(operandOf<std::uint8_t>(sadFirst), operandOf<std::uint8_t>(sadSecond), 5);
    const VectorLanes<std::uint16_t> sums = lanesOf<std::uint16_t>(sad);
    for (std::size_t lane = 0; lane < sums.size(); ++lane) {
        actual.lanes.push_back(laneValue(scalarSad(sadFirst, sadSecond, lane)));
        actual.lanes.push_back(laneValue(sums.at(lane)));
    }

    const __m128i factors = operandOf<std::int32_t>({65000, 0, 24000000, 0});
    const __m128i otherFactors = operandOf<std::int32_t>({-320000, 0, 56400000, 0});
    addLanes<std::int64_t>(actual, _mm_mul_epi32(factors, otherFactors));

    const __m128i lowFactors = operandOf<std::int32_t>({65535, -512, 77910, 0});
    const __m128i otherLowFactors = operandOf<std::int32_t>({2, 4431, -7969, 240000000});
    addLanes<std::int32_t>(actual, _mm_mullo_epi32(lowFactors, otherLowFactors));
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41BitConversion() {
    Actual actual;
    const __m128i signedBytes = operandOf<std::int8_t>({100, -100});
    const __m128i unsignedBytes = operandOf<std::uint8_t>({100, 200});
    addLanes<std::int16_t>(actual, _mm_cvtepi8_epi16(signedBytes), 0, 2);
    addLanes<std::int16_t>(actual, _mm_cvtepu8_epi16(unsignedBytes), 0, 2);
    addLanes<std::int32_t>(actual, _mm_cvtepi8_epi32(signedBytes), 0, 2);
    addLanes<std::int32_t>(actual, _mm_cvtepu8_epi32(unsignedBytes), 0, 2);

    const __m128i words = operandOf<std::int16_t>({32767, -32768});
    addLanes<std::int32_t>(actual, _mm_cvtepi16_epi32(words), 0, 2);
    addLanes<std::int32_t>(actual, _mm_cvtepu16_epi32(words), 0, 2);

    const __m128i dwords = operandOf<std::int32_t>({0, -1, 70000, 128});
    const __m128i otherDwords = operandOf<std::int32_t>({-512, 5200, 32768, 65536});
    addLanes<std::uint16_t>(actual, _mm_packus_epi32(dwords, otherDwords));
    return actual;
}

__attribute__((noinline, target("sse4.1"))) Actual sse41BitCompare() {
    Actual actual;
    const __m128i first = operandOf<std::uint64_t>({0xA0A0A0A0A0A0A0A0, 0xA0A0A0A0A0A0A0A0});
    const __m128i second = operandOf<std::uint64_t>({0xA0A0A0A0A0A0A0A1, 0xA0A0A0A0A0A0A0A0});
    addLanes<std::int64_t>(actual, _mm_cmpeq_epi64(first, second));
    return actual;
}

}  // namespace vorn
