// The AES check and the PCLMULQDQ check: each instruction once on fixed operands.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace vorn {

/// A 128-bit value.
struct Block {
    std::uint64_t high;
    std::uint64_t low;
    bool operator==(const Block&) const = default;
};

/// One AES instruction with its known answer, compared whole.
struct AesCheck {
    std::function<Block()> execute;
    Block expected;
    const char* passed;
    const char* failed;
};

/// One carry-less product, of which the low 64 bits are compared.
struct CarrylessCheck {
    std::function<std::int64_t()> execute;
    std::int64_t expected;
    const char* passed;
    const char* product;  ///< what was multiplied, shown when the result is wrong
};

/// The checks of the product, in their order. Each executes its instruction and must only be called
/// on a processor that reports AES or PCLMULQDQ.
const std::vector<AesCheck>& aesChecks();
const std::vector<CarrylessCheck>& carrylessChecks();

/// Run every check, also after one that failed, and print their reports. Whether all passed.
bool runAesChecks(const std::vector<AesCheck>& checks);
bool runCarrylessChecks(const std::vector<CarrylessCheck>& checks);

/// The instructions, found by these names in the library.
Block aesDecrypt();
Block aesDecryptLast();
Block aesEncrypt();
Block aesEncryptLast();
Block aesInverseMixColumns();
Block aesKeyAssist();
std::int64_t carrylessHighProduct();
std::int64_t carrylessLowProduct();

}  // namespace vorn
