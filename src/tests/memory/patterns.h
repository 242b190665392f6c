// The three patterns that are written to every block and read back.
#pragma once

#include "tests/memory/block_set.h"

namespace vorn {

// Each function walks the blocks of the set in order. It ends with true after the last block, at
// the first null entry, and after the block in which the set's deadline expires. Blocks are aligned
// to 16 bytes at least; any size is good, and the bytes that do not fill a last word are left out
// of the two patterns of words.
//
// The writing functions always return true. What they write goes past the processor's caches, so
// that a verification reads the memory itself. A verifying function returns false at the first unit
// that does not hold what was written, and leaves it in the set's mismatch; it reads every unit
// once, and what it reports is what it judged.

/// Test 1: bytes 0x00 and 0xFF in turn, each block starting with 0x00.
bool writeAlternatingBytes(BlockSet& set);
bool verifyAlternatingBytes(BlockSet& set);

/// Test 2: words of 32 bits with one bit set, bit 0 in the first word of each block, then bit 1 and
/// so on to bit 31, and again.
bool writeSlidingOnes(BlockSet& set);
bool verifySlidingOnes(BlockSet& set);

/// Test 3: words of 32 bits with no bit set.
bool writeZeros(BlockSet& set);
bool verifyZeros(BlockSet& set);

}  // namespace vorn
