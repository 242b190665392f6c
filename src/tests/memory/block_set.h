// The blocks of memory under test, and the time that the test may take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vorn {

/// A deadline that never expires.
inline constexpr std::int32_t noDeadline = -1;

/// The first unit of a block in which a verification did not find what was written.
struct Mismatch {
    std::int32_t block = 0;      ///< index of the block in its set
    std::size_t offset = 0;      ///< of the unit, in bytes from the start of the block
    std::size_t width = 0;       ///< bytes of the unit: 1 or 4
    std::uint32_t expected = 0;  ///< what was written
    std::uint32_t found = 0;     ///< what the verification read, once

    friend bool operator==(const Mismatch&, const Mismatch&) = default;
};

/// The blocks of one cycle. Owns them: releases at its end what is still held.
struct BlockSet {
    std::vector<unsigned char*> blocks;  ///< one entry a block; null where none was allocated
    std::int32_t blockSize = 0;          ///< bytes a block
    std::int32_t blockCount = 0;
    std::uint32_t startTime = 0;         ///< clockMilliseconds() when the test began
    std::int32_t deadline = noDeadline;  ///< clockMilliseconds() at which to stop, or noDeadline
    std::optional<Mismatch> mismatch;    ///< left by the most recent verification that failed

    BlockSet() = default;
    ~BlockSet();
    BlockSet(const BlockSet&) = delete;
    BlockSet& operator=(const BlockSet&) = delete;
};

/// What AllocateBlocks() returns.
enum AllocationResult : int {
    blocksAllocated = 0,   ///< all of them, or those that the deadline left time for
    allocationFailed = 1,  ///< the system had no block left; none is held
    lockFailed = 2,        ///< the system refused to lock a block; none is held
};

/// Allocates and locks the blocks of a set that holds none, in order, until the deadline expires:
/// the entries of the blocks that are left out then stay null.
AllocationResult AllocateBlocks(BlockSet& set, std::int32_t blockSize, std::int32_t blockCount,
                                bool uncached, std::uint32_t startTime, std::int32_t deadline);

/// Gives all blocks of the set back and forgets them.
void ReleaseBlocks(BlockSet& set);

/// Asks for room for `bytes` bytes of this process in physical memory; false when refused.
bool SetWorkingSet(std::size_t bytes);

/// Milliseconds since the process started, in the 32 bits of the set's times: starts again at 0
/// after 2^32 milliseconds.
std::uint32_t clockMilliseconds();

/// The deadline `seconds` seconds after `start`: `start` itself for a negative number, and no more
/// than the longest time that 32 signed bits of milliseconds hold, 24 days. Never noDeadline.
std::int32_t deadlineAfter(std::uint32_t start, std::int64_t seconds);

/// Whether the clock has reached the deadline, as a signed comparison of 32 bits that holds across
/// the clock's own overflow; never for noDeadline.
bool hasExpired(std::int32_t deadline);

}  // namespace vorn
