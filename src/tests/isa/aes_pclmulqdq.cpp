#include "tests/isa/aes_pclmulqdq.h"

#include <wmmintrin.h>

#include <cstring>

#include "report/report.h"
#include "tests/isa/opaque.h"

namespace vorn {

namespace {

/// The operand in a register, unknown to the compiler.
__m128i operandOf(const Block& value) {
    return opaque(_mm_set_epi64x(static_cast<std::int64_t>(value.high),
                                 static_cast<std::int64_t>(value.low)));
}

Block blockOf(__m128i result) {
    const __m128i computed = opaque(result);
    std::uint64_t halves[2];
    std::memcpy(halves, &computed, sizeof halves);
    return {halves[1], halves[0]};
}

constexpr Block data{0x8899AABBCCDDEEFF, 0x0123456789ABCDEF};
constexpr Block roundKey{0x0022446688AACCEE, 0x1133557799BBDDFF};

constexpr Block carrylessFirst{2, static_cast<std::uint64_t>(-1284)};
constexpr Block carrylessSecond{25, 65535};

std::int64_t lowHalf(__m128i product) {
    return static_cast<std::int64_t>(blockOf(product).low);
}

}  // namespace

__attribute__((noinline, target("aes"))) Block aesDecrypt() {
    return blockOf(_mm_aesdec_si128(operandOf(data), operandOf(roundKey)));
}

__attribute__((noinline, target("aes"))) Block aesDecryptLast() {
    return blockOf(_mm_aesdeclast_si128(operandOf(data), operandOf(roundKey)));
}

__attribute__((noinline, target("aes"))) Block aesEncrypt() {
    return blockOf(_mm_aesenc_si128(operandOf(data), operandOf(roundKey)));
}

__attribute__((noinline, target("aes"))) Block aesEncryptLast() {
    return blockOf(_mm_aesenclast_si128(operandOf(data), operandOf(roundKey)));
}

__attribute__((noinline, target("aes"))) Block aesInverseMixColumns() {
    return blockOf(_mm_aesimc_si128(operandOf(data)));
}

__attribute__((noinline, target("aes"))) Block aesKeyAssist() {
    return blockOf(_mm_aeskeygenassist_si128(operandOf(data), 5));
}

__attribute__((noinline, target("pclmul"))) std::int64_t carrylessHighProduct() {
    return lowHalf(
        _mm_clmulepi64_si128(operandOf(carrylessFirst), operandOf(carrylessSecond), 0x11));
}

__attribute__((noinline, target("pclmul"))) std::int64_t carrylessLowProduct() {
    return lowHalf(
        _mm_clmulepi64_si128(operandOf(carrylessFirst), operandOf(carrylessSecond), 0x00));
}

// Single rounds of FIPS 197: AESENC and AESENCLAST are its section 5.1 (ShiftRows, SubBytes,
// MixColumns but for the last round, AddRoundKey); AESDEC and AESDECLAST its equivalent inverse
// cipher, section 5.3.5; AESIMC is InvMixColumns, section 5.3.3; AESKEYGENASSIST is SubWord,
// RotWord and the round constant of section 5.2 on words 1 and 3.
const std::vector<AesCheck>& aesChecks() {
    static const std::vector<AesCheck> checks{
        {aesDecrypt,
         {0xB57ECFA381DA39EE, 0x044E4F5176FEC48F},
         "AES Decoded Data using _mm_aesdec instruction Passed ",
         "AES _mm_aesdec instruction failed "},
        {aesDecryptLast,
         {0xF210DD981FA4A493, 0x36CAD57D9072BF9E},
         "AES Decoded Data using _mm_aesdeclast instruction Passed ",
         "AES _mm_aesdeclast instruction failed "},
        {aesEncrypt,
         {0x28E4EE1884504333, 0x16AB0E57DFC442ED},
         "AES Encoded Data using _mm_aesenc instruction Passed ",
         "AES _mm_aesenc instruction failed "},
        {aesEncryptLast,
         {0x4B04F98CF4C860F8, 0xB6DD7DF25D7AB320},
         "AES Encoded Data using _mm_aesenclast instruction Passed ",
         "AES _mm_aesenclast instruction failed "},
        {aesInverseMixColumns,
         {0x6633441122770055, 0xC66C82284EE40AA0},
         "AES Inverse Mix Column Data using _mm_aesimc instruction Passed ",
         "AES _mm_aesimc instruction failed "},
        {aesKeyAssist,
         {0xEAC4EEA9C4EEACEA, 0x857C266B7C266E85},
         "AES Round Key Data using _mm_aeskeygenassist instruction Passed ",
         "AES _mm_aeskeygenassist instruction failed "},
    };
    return checks;
}

// Products of polynomials over GF(2), as the architecture's instruction set reference defines
// PCLMULQDQ; the immediate chooses the halves that are multiplied. The whole second product is
// 0x5555'0000000003015654.
const std::vector<CarrylessCheck>& carrylessChecks() {
    static const std::vector<CarrylessCheck> checks{
        {carrylessHighProduct, 50, "PCLMULQDQ Test1 using _mm_clmulepi64 instruction Passed ",
         "2 times 25 without carry using immediate 0x11 = 50"},
        {carrylessLowProduct, 50419284, "PCLMULQDQ Test2 using _mm_clmulepi64 instruction Passed ",
         "-1284 times 65535 without carry using immediate 0x00 = 50419284"},
    };
    return checks;
}

bool runAesChecks(const std::vector<AesCheck>& checks) {
    Report::console("Testing AES");
    bool passed = true;
    for (const AesCheck& check : checks) {
        const bool correct = check.execute() == check.expected;
        Report::console(correct ? check.passed : check.failed);
        passed = passed && correct;
    }
    Report::console(passed ? "Passed AES Test\n" : "Failed AES Test\n");
    return passed;
}

bool runCarrylessChecks(const std::vector<CarrylessCheck>& checks) {
    Report::console("Testing PCLMULQDQ");
    bool passed = true;
    for (const CarrylessCheck& check : checks) {
        const std::int64_t product = check.execute();
        if (product == check.expected) {
            Report::console(check.passed);
            continue;
        }
        passed = false;
        Report::console("PCLMULQDQ Carry less test failed");
        Report::console(check.product);
        Report::console("Result = ", product);
    }
    Report::console(passed ? "Passed PCLMULQDQ Test\n" : "Failed PCLMULQDQ Test\n");
    return passed;
}

}  // namespace vorn
