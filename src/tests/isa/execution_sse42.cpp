#include <nmmintrin.h>

#include "tests/isa/lanes.h"
#include "tests/isa/mmx_sse_execution.h"

namespace vorn {

namespace {

// Immediate byte of the string comparisons, as the architecture manual numbers its bits: unsigned
// words (bits 1..0 = 1), equal each (bits 3..2 = 2), positive polarity, least significant index or
// bit mask as output.
constexpr int control = _SIDD_UWORD_OPS | _SIDD_CMP_EQUAL_EACH;
static_assert(control == 0x09);

using Word = std::uint16_t;

}  // namespace

// The operands pass a barrier before every comparison: the comparisons differ only in the flag that
// they read, and the compiler would let one execution answer several.
__attribute__((noinline, target("sse4.2"))) Actual sse42StringCompare() {
    Actual actual;
    // In the explicit-length comparisons only the magnitude of a length counts.
    const int eight = opaqueInteger(8);
    const int minusEight = opaqueInteger(-8);
    const int seven = opaqueInteger(7);
    __m128i a = operandOf<Word>({0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC, 0xCCCC});
    __m128i b = operandOf<char>(
        {'3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3', '3'});
    addInteger(actual, _mm_cmpestra(opaque(a), eight, opaque(b), minusEight, control));
    addInteger(actual, _mm_cmpestrc(opaque(a), eight, opaque(b), minusEight, control));
    a = withLane<Word>(a, 5, 0x3333);
    a = withLane<Word>(a, 7, 0x3333);
    addInteger(actual, _mm_cmpestri(opaque(a), eight, opaque(b), minusEight, control));
    addLanes<std::int64_t>(actual, _mm_cmpestrm(opaque(a), eight, opaque(b), minusEight, control));
    addInteger(actual, _mm_cmpestro(opaque(a), eight, opaque(b), minusEight, control));
    a = withLane<Word>(a, 0, 0x3333);
    addInteger(actual, _mm_cmpestro(opaque(a), eight, opaque(b), minusEight, control));
    addInteger(actual, _mm_cmpestrs(opaque(a), eight, opaque(b), eight, control));
    addInteger(actual, _mm_cmpestrs(opaque(a), seven, opaque(b), eight, control));
    addInteger(actual, _mm_cmpestrz(opaque(a), eight, opaque(b), eight, control));
    addInteger(actual, _mm_cmpestrz(opaque(a), eight, opaque(b), seven, control));

    a = operandOf<Word>({0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF});
    b = operandOf<Word>({1, 1, 1, 1, 1, 1, 1, 1});
    addInteger(actual, _mm_cmpistra(opaque(a), opaque(b), control));
    b = withLane<Word>(b, 4, 0);
    addInteger(actual, _mm_cmpistra(opaque(a), opaque(b), control));
    b = withLane<Word>(b, 5, 0xFFFF);
    addInteger(actual, _mm_cmpistrc(opaque(a), opaque(b), control));
    b = withLane<Word>(b, 4, 1);
    addInteger(actual, _mm_cmpistrc(opaque(a), opaque(b), control));
    addInteger(actual, _mm_cmpistri(opaque(a), opaque(b), control));
    b = withLane<Word>(b, 0, 0xFFFF);
    addLanes<std::int64_t>(actual, _mm_cmpistrm(opaque(a), opaque(b), control));
    addInteger(actual, _mm_cmpistro(opaque(a), opaque(b), control));
    addInteger(actual, _mm_cmpistrs(opaque(a), opaque(b), control));
    a = withLane<Word>(a, 7, 0);
    addInteger(actual, _mm_cmpistrs(opaque(a), opaque(b), control));
    addInteger(actual, _mm_cmpistrz(opaque(a), opaque(b), control));
    b = withLane<Word>(b, 7, 0);
    addInteger(actual, _mm_cmpistrz(opaque(a), opaque(b), control));
    return actual;
}

__attribute__((noinline, target("sse4.2,popcnt"))) Actual sse42PopulationCount() {
    Actual actual;
    addInteger(actual, _mm_popcnt_u32(opaqueInteger(0x2F63A150U)));
    addInteger(actual, static_cast<std::int64_t>(
                           _mm_popcnt_u64(opaqueInteger(std::uint64_t{0x123456789ABCDEF0}))));
    return actual;
}

__attribute__((noinline, target("sse4.2"))) Actual sse42Crc() {
    Actual actual;
    const std::uint32_t initial = opaqueInteger(1U);
    addInteger(actual, _mm_crc32_u8(initial, opaqueInteger(static_cast<unsigned char>(100))));
    addInteger(actual, _mm_crc32_u16(initial, opaqueInteger(static_cast<unsigned short>(1000))));
    addInteger(actual, _mm_crc32_u32(initial, opaqueInteger(50000U)));
    addInteger(actual, static_cast<std::uint64_t>(
                           _mm_crc32_u64(opaqueInteger(std::uint64_t{0x11115555AAAA}),
                                         opaqueInteger(std::uint64_t{0x88889999EEEE3333}))));
    return actual;
}

}  // namespace vorn
