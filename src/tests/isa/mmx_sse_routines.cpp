#include "tests/isa/mmx_sse_routines.h"

#include "tests/isa/mmx_sse_execution.h"

// Expected values of the string comparisons follow from their definition in the architecture's
// instruction set reference, PCMPESTRI and PCMPISTRI with imm8 = 0x09: words of one place are equal
// when both are valid and the same or both are invalid; CF tells of any such pair, ZF and SF of a
// second and a first operand shorter than eight words, OF is the bit of place 0, "above" is CF = 0
// and ZF = 0. The CRC values are those of the polynomial 0x11EDC6F41 of RFC 3720 (CRC-32C), bit
// reflected, without inversion before or after.

namespace vorn {

namespace {

Routine mmxRoutine() {
    return {"Testing MMX",
            {{mmxDotProducts,
              Shown::always,
              {{{"Dot Product computed using C code = ", knownDotProduct},
                {"Dot Product computed using MMX intrinsics = ", knownDotProduct}}},
              "MMX Dot Product Computation Test Passed",
              "MMX Dot Product Computation Test Failed"}},
            "Passed MMX Test",
            "Failed MMX Test"};
}

Routine sseRoutine() {
    return {"Testing SSE",
            {{sseDotProducts,
              Shown::always,
              {{{"Dot Product computed using C code = ", knownDotProduct},
                {"Dot Product computed using SSE intrinsics = ", knownDotProduct}}},
              "SSE Dot Product Computation Test Passed",
              "SSE Dot Product Computation Test Failed"}},
            "Passed SSE Test",
            "Failed SSE Test"};
}

Routine sse2Routine() {
    return {"Testing SSE2",
            {{sse2ComplexProducts,
              Shown::always,
              {{{"Complex Product computed using C code: %2.2f+ %2.2fi\n", knownComplexProduct[0],
                 knownComplexProduct[1]},
                {"Complex Product computed using SSE2 code: %2.2f+ %2.2fi\n",
                 knownComplexProduct[0], knownComplexProduct[1]}}},
              "SSE2 Complex Product Computation Test Passed",
              "SSE2 Complex Product Computation Test Failed"}},
            "Passed SSE2 Test",
            "Failed SSE2 Test"};
}

Routine sse3Routine() {
    return {"Testing SSE3",
            {{sse3ComplexProducts,
              Shown::always,
              {{{"Complex Product using C code: %2.2f+ %2.2fi\n", knownComplexProduct[0],
                 knownComplexProduct[1]},
                {"Complex Product using SSE3 code: %2.2f+ %2.2fi\n", knownComplexProduct[0],
                 knownComplexProduct[1]}}},
              "SSE3 Complex Product Computation Test Passed",
              "SSE3 Complex Product Computation Test Failed"}},
            "Passed SSE3 Test",
            "Failed SSE3 Test"};
}

CheckGroup ssse3AbsoluteValueGroup() {
    return {ssse3AbsoluteValues,
            Shown::onMismatch,
            {{{"_mm_abs_epi8 expected 127 = ", 127},
              {"_mm_abs_epi8 expected 127 = ", 127},
              {"_mm_abs_epi16 expected 128 = ", 128},
              {"_mm_abs_epi16 expected 128 = ", 128},
              {"_mm_abs_epi32 expected 123456789 = ", 123456789},
              {"_mm_abs_epi32 expected 123456789 = ", 123456789}}},
            "SSSE3 Absolute Value Tests Passed",
            "SSSE3 Absolute Value Tests Failed"};
}

CheckGroup ssse3ArithmeticGroup() {
    return {ssse3Arithmetic,
            Shown::onMismatch,
            {{{"_mm_hadd_epi16 expected 0 = ", 0},
              {"_mm_hadd_epi16 expected 8 = ", 8},
              {"_mm_hadd_epi16 expected -8 = ", -8},
              {"_mm_hadd_epi16 expected 4 = ", 4},
              {"_mm_hadd_epi16 expected -4 = ", -4},
              {"_mm_hadd_epi16 expected 3000 = ", 3000},
              {"_mm_hadd_epi16 expected 160 = ", 160},
              {"_mm_hadd_epi16 expected 60 = ", 60},
              {"_mm_hsub_epi16 expected -2 = ", -2},
              {"_mm_hsub_epi16 expected -8 = ", -8},
              {"_mm_hsub_epi16 expected -8 = ", -8},
              {"_mm_hsub_epi16 expected 0 = ", 0},
              {"_mm_hsub_epi16 expected 0 = ", 0},
              {"_mm_hsub_epi16 expected -1000 = ", -1000},
              {"_mm_hsub_epi16 expected 96 = ", 96},
              {"_mm_hsub_epi16 expected 102 = ", 102}},
             {{"_mm_hadd_epi32 expected 0 = ", 0},
              {"_mm_hadd_epi32 expected 65535 = ", 65535},
              {"_mm_hadd_epi32 expected -65535 = ", -65535},
              {"_mm_hadd_epi32 expected 96 = ", 96},
              {"_mm_hsub_epi32 expected -2 = ", -2},
              {"_mm_hsub_epi32 expected -65535 = ", -65535},
              {"_mm_hsub_epi32 expected -65535 = ", -65535},
              {"_mm_hsub_epi32 expected 160 = ", 160}},
             {{"_mm_mulhrs_epi16 expected -11895 = ", -11895},
              {"_mm_mulhrs_epi16 expected -165 = ", -165},
              {"_mm_mulhrs_epi16 expected 4022 = ", 4022},
              {"_mm_mulhrs_epi16 expected 32766 = ", 32766},
              {"_mm_mulhrs_epi16 expected 0 = ", 0},
              {"_mm_mulhrs_epi16 expected 1165 = ", 1165},
              {"_mm_mulhrs_epi16 expected -1086 = ", -1086},
              {"_mm_mulhrs_epi16 expected -7311 = ", -7311}}},
            "SSSE3 Arithmetic Tests Passed",
            "SSSE3 Arithmetic Tests Failed"};
}

CheckGroup ssse3DotProductGroup() {
    return {ssse3DotProduct,
            Shown::onMismatch,
            {{{"_mm_maddubs_epi16 expected 421 = ", 421}}},
            "SSSE3 Dot Product Test Passed",
            "SSSE3 Dot Product Test Failed"};
}

Routine ssse3Routine() {
    return {"Testing SSSE3",
            {ssse3AbsoluteValueGroup(), ssse3ArithmeticGroup(), ssse3DotProductGroup()},
            "Passed SSSE3 Test",
            "Failed SSSE3 Test"};
}

CheckGroup sse41BlendGroup() {
    return {
        sse41Blend,
        Shown::onMismatch,
        {{{"_mm_blend_epi16_0 expected 13527593555435554952 = ", std::uint64_t{0xBBBBAAAA99998888}},
          {"_mm_blend_epi16 1 expected 18364758544493064720 = ", std::uint64_t{0xFEDCBA9876543210}},
          {"_mm_blend_pd_0 expected -3.141590118408203 = ", -3.141590118408203F},
          {"_mm_blend_pd_1 expected -10.5 = ", -10.5F}}},
        "SSE4.1 Blend Tests Passed",
        "SSE4.1 Blend Tests Failed"};
}

CheckGroup sse41MinMaxGroup() {
    return {sse41MinMax,
            Shown::onMismatch,
            {{{"_mm_max_epi8 expected 127 = ", 127},
              {"_mm_min_epi8 expected 1 = ", 1},
              {"_mm_max_epi32 expected 32000 = ", 32000},
              {"_mm_min_epi32 expected 2000 = ", 2000},
              {"_mm_max_epu16 expected 65535 = ", 65535},
              {"_mm_min_epu16 expected 65534 = ", 65534},
              {"_mm_max_epu32 expected 70000 = ", 70000U},
              {"_mm_min_epu32 expected 65000 = ", 65000U}}},
            "SSE4.1 Min Max Tests Passed",
            "SSE4.1 Min Max Tests Failed"};
}

CheckGroup sse41InsertGroup() {
    return {sse41Insert,
            Shown::onMismatch,
            {{{"_mm_insert_epi8 expected -32 = ", -32},
              {"_mm_insert_epi32 expected -65536 = ", -65536}}},
            "SSE4.1 Insert Bit Tests Passed",
            "SSE4.1 Insert Bit Tests Failed"};
}

CheckGroup sse41ExtractGroup() {
    return {sse41Extract,
            Shown::onMismatch,
            {{{"_mm_extract_epi8_1 expected 16 = ", 16},
              {"_mm_extract_epi8_2 expected 224 = ", 224},
              {"_mm_extract_epi32_1 expected 65535 = ", 65535},
              {"_mm_extract_epi32_2 expected -320000000 = ", -320000000}}},
            "SSE4.1 Extract Bit Tests Passed",
            "SSE4.1 Extract Bit Tests Failed"};
}

CheckGroup sse41BitwiseComparisonGroup() {
    return {sse41BitwiseComparison,
            Shown::onMismatch,
            {{{"_mm_testc_si128 expected 1 = ", 1},
              {"_mm_testc_si128 expected 0 = ", 0},
              {"_mm_testnzc_si128 expected 0 = ", 0},
              {"_mm_testnzc_si128 expected 1 = ", 1},
              {"_mm_testz_si128_1 expected 1 = ", 1},
              {"_mm_testz_si128_2 expected 0 = ", 0}}},
            "SSE4.1 Bitwise Comparison Tests Passed",
            "SSE4.1 Bitwise Comparison Tests Failed"};
}

CheckGroup sse41DotProductGroup() {
    return {sse41DotProduct,
            Shown::onMismatch,
            {{{"_mm_dp_ps_0 = ", 556.40625F},
              {"_mm_dp_ps_1 = ", 0.0F},
              {"_mm_dp_ps_2 = ", 556.40625F},
              {"_mm_dp_ps_3 = ", 0.0F}}},
            "SSE4.1 Dot Product Test Passed",
            "SSE4.1 Dot Product Test Failed"};
}

CheckGroup sse41ArithmeticGroup() {
    return {sse41Arithmetic,
            Shown::onMismatch,
            {{{"finaladbw_0 expected 269 = ", 269},
              {"_mm_mpsadbw_epu8_0 expected 269 = ", 269},
              {"finaladbw_1 expected 267 = ", 267},
              {"_mm_mpsadbw_epu8_1 expected 267 = ", 267},
              {"finaladbw_2 expected 264=", 264},
              {"_mm_mpsadbw_epu8_2 expected 264 = ", 264},
              {"finaladbw_3 expected 290 = ", 290},
              {"_mm_mpsadbw_epu8_3 expected 290 = ", 290},
              {"finaladbw_4 expected 342 = ", 342},
              {"_mm_mpsadbw_epu8_4 expected 342 = ", 342},
              {"finaladbw_5 expected 446 = ", 446},
              {"_mm_mpsadbw_epu8_5 expected 446 = ", 446},
              {"finaladbw_6 expected 653 = ", 653},
              {"_mm_mpsadbw_epu8_6 expected 653 = ", 653},
              {"finaladbw_7 expected 588 = ", 588},
              {"_mm_mpsadbw_epu8_7 expected 588 = ", 588},
              {"_mm_mul_epi32_0 expected -20800000000 = ", std::int64_t{-20800000000}},
              {"_mm_mul_epi32_1 expected 1353600000000000 = ", std::int64_t{1353600000000000}},
              {"_mm_mullo_epi32_0 expected 131070 = ", 131070},
              {"_mm_mullo_epi32_1 expected -2268672 = ", -2268672},
              {"_mm_mullo_epi32_2 expected -620864790 = ", -620864790},
              {"_mm_mullo_epi32_3 expected 0 = ", 0}}},
            "SSE4.1 Arithmetic Tests Passed",
            "SSE4.1 Arithmetic Tests Failed"};
}

CheckGroup sse41BitConversionGroup() {
    return {sse41BitConversion,
            Shown::onMismatch,
            {{{"_mm_cvtepi8_epi16_0 expected 100 = ", 100},
              {"_mm_cvtepi8_epi16_1 expected -100 = ", -100},
              {"_mm_cvtepu8_epi16_0 expected 100 = ", 100},
              {"_mm_cvtepu8_epi16_1 expected 200 = ", 200},
              {"_mm_cvtepi8_epi32_0 expected 100 = ", 100},
              {"_mm_cvtepi8_epi32_1 expected -100 = ", -100},
              {"_mm_cvtepu8_epi32_0 expected 100 = ", 100},
              {"_mm_cvtepu8_epi32_1 expected 200 = ", 200},
              {"_mm_cvtepi16_epi32_0 expected 32767 = ", 32767},
              {"_mm_cvtepi16_epi32_1 expected -32768 = ", -32768},
              {"_mm_cvtepu16_epi32_0 expected 32767 = ", 32767},
              {"_mm_cvtepu16_epi32_1 expected 32768 = ", 32768},
              {"_mm_packus_epi32_0 expected 0 = ", 0},
              {"_mm_packus_epi32_1 expected 0 = ", 0},
              {"_mm_packus_epi32_2 expected 65535 = ", 65535},
              {"_mm_packus_epi32_3 expected 128  = ", 128},
              {"_mm_packus_epi32_4 expected 0 = ", 0},
              {"_mm_packus_epi32_5 expected 5200 = ", 5200},
              {"_mm_packus_epi32_6 expected 32768 = ", 32768},
              {"_mm_packus_epi32_7 expected 65535 = ", 65535}}},
            "SSE4.1 Bit Conversion Tests Passed",
            "SSE4.1 Bit Conversion Tests Failed"};
}

CheckGroup sse41BitCompareGroup() {
    return {sse41BitCompare,
            Shown::onMismatch,
            {{{"_mm_cmpeq_epi64_0 expected 0 = ", std::int64_t{0}},
              {"_mm_cmpeq_epi64_1 expected -1 = ", std::int64_t{-1}}}},
            "SSE4.1 Bit Compare Test Passed",
            "SSE4.1 Bit Compare Test Failed"};
}

Routine sse41Routine() {
    return {"Testing SSE4.1",
            {sse41BlendGroup(), sse41MinMaxGroup(), sse41InsertGroup(), sse41ExtractGroup(),
             sse41BitwiseComparisonGroup(), sse41DotProductGroup(), sse41ArithmeticGroup(),
             sse41BitConversionGroup(), sse41BitCompareGroup()},
            "Passed SSE4.1 Test",
            "Failed SSE4.1 Test"};
}

CheckGroup sse42StringCompareGroup() {
    return {sse42StringCompare,
            Shown::onMismatch,
            {{{"_mm_cmpestra expected 1 = ", 1},
              {"_mm_cmpestrc expected 0 = ", 0},
              {"_mm_cmpestri expected 5 = ", 5},
              {"_mm_cmpestrm_0 expected 160 = ", std::int64_t{160}},
              {"_mm_cmpestrm_1 expected 0 = ", std::int64_t{0}},
              {"_mm_cmpestro_1 expected 0 = ", 0},
              {"_mm_cmpestro_2 expected 1 = ", 1},
              {"_mm_cmpestrs_1 expected 0 = ", 0},
              {"_mm_cmpestrs_2 expected 1 = ", 1},
              {"_mm_cmpestrz_1 expected 0 = ", 0},
              {"_mm_cmpestrz_2 expected 1 = ", 1},
              {"_mm_cmpistra_1 expected 1 = ", 1},
              {"_mm_cmpistra_2 expected 0 = ", 0},
              {"_mm_cmpistrc_1 expected 0 = ", 0},
              {"_mm_cmpistrc_2 expected 1 = ", 1},
              {"_mm_cmpistri expected 5 = ", 5},
              {"_mm_cmpistrm_0 expected 33 = ", std::int64_t{33}},
              {"_mm_cmpistrm_1 expected 0 = ", std::int64_t{0}},
              {"_mm_cmpistro expected 1 = ", 1},
              {"_mm_cmpistrs_1 expected 0 = ", 0},
              {"_mm_cmpistrs_2 expected 1 = ", 1},
              {"_mm_cmpistrz_1 expected 0 = ", 0},
              {"_mm_cmpistrz_2 expected 1 = ", 1}}},
            "SSE4.2 Bit Compare Test Passed",
            "SSE4.2 Bit Compare Test Failed"};
}

CheckGroup sse42PopulationCountGroup() {
    return {sse42PopulationCount,
            Shown::onMismatch,
            {{{"_mm_popcnt_u32 expected 14 = ", 14},
              {"_mm_popcnt_u64 expected 32 = ", std::int64_t{32}}}},
            "SSE4.2 Calculate Bit Set to 1 Test Passed",
            "SSE4.2 Calculate Bit Set to 1 Test Failed"};
}

CheckGroup sse42CrcGroup() {
    return {sse42Crc,
            Shown::onMismatch,
            {{{"_mm_crc32_u8 expected 1412925310 = ", 1412925310U},
              {"_mm_crc32_u16 expected 3870914500 = ", 3870914500U},
              {"_mm_crc32_u32 expected 971731851 = ", 971731851U},
              {"_mm_crc32_u64 expected 385185313 = ", std::uint64_t{385185313}}}},
            "SSE4.2 CRC Test Passed",
            "SSE4.2 CRC Test Failed"};
}

Routine sse42Routine() {
    return {"Testing SSE4.2",
            {sse42StringCompareGroup(), sse42PopulationCountGroup(), sse42CrcGroup()},
            "Passed SSE4.2 Test",
            "Failed SSE4.2 Test"};
}

}  // namespace

const std::vector<Extension>& mmxSseExtensions() {
    constexpr auto edx = &CpuidRegisters::edx;
    constexpr auto ecx = &CpuidRegisters::ecx;
    static const std::vector<Extension> extensions{
        {edx, 23, " (MMX)\t\t - Ovrin MMX Technology Supported --> \t\t",
         "MMX\t\t - MMX Supported -->\t", "MMX Test Result", mmxRoutine()},
        {edx, 25, " (SSE)\t\t - Streaming SIMD Extensions Supported --> \t",
         "SSE\t\t - SSE Supported -->\t", "SSE Test Result", sseRoutine()},
        {edx, 26, " (SSE2)\t\t - Streaming SIMD Extensions 2 Supported -->\t",
         "SSE2\t\t - SSE2 Supported -->\t", "SSE2 Test Result", sse2Routine()},
        {ecx, 0, " (SSE3)\t\t - Streaming SIMD Extensions 3 Supported -->\t",
         "SSE3\t\t - SSE3 Supported -->\t", "SSE3 Test Result", sse3Routine()},
        {ecx, 9, " (SSSE3)\t - Supplemented SSE 3 Supported -->\t\t",
         "SSSE3\t\t - SSSE3 Supported -->\t", "SSSE3 Test Result", ssse3Routine()},
        {ecx, 19, " (SSE4.1)\t - Streaming SIMD Extensions 4.1 Supported -->\t",
         "SSE4.1\t\t - SSE4.1 Supported -->\t", "SSE4.1 Test Result", sse41Routine()},
        {ecx, 20, " (SSE4.2)\t - Streaming SIMD Extensions 4.2 Supported -->\t",
         "SSE4.2\t\t - SSE4.2 Supported -->\t", "SSE4.2 Test Result", sse42Routine()},
    };
    return extensions;
}

}  // namespace vorn
