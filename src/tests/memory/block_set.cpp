#include "tests/memory/block_set.h"

#include <algorithm>
#include <limits>

#include "platform/platform.h"

namespace vorn {

BlockSet::~BlockSet() {
    ReleaseBlocks(*this);
}

AllocationResult AllocateBlocks(BlockSet& set, std::int32_t blockSize, std::int32_t blockCount,
                                bool uncached, std::uint32_t startTime, std::int32_t deadline) {
    set.blockSize = blockSize;
    set.blockCount = blockCount;
    set.startTime = startTime;
    set.deadline = deadline;
    set.blocks.assign(static_cast<std::size_t>(std::max(blockCount, 0)), nullptr);

    PhysicalMemory& memory = platform().memory;
    const auto size = static_cast<std::size_t>(blockSize);
    for (unsigned char*& block : set.blocks) {
        block = static_cast<unsigned char*>(memory.allocate(size, uncached));
        if (block == nullptr) {
            ReleaseBlocks(set);
            return allocationFailed;
        }
        if (!memory.lock(block, size)) {
            ReleaseBlocks(set);
            return lockFailed;
        }
        if (hasExpired(deadline)) {
            break;
        }
    }
    return blocksAllocated;
}

void ReleaseBlocks(BlockSet& set) {
    for (unsigned char*& block : set.blocks) {
        if (block != nullptr) {
            platform().memory.release(block, static_cast<std::size_t>(set.blockSize));
            block = nullptr;
        }
    }
}

bool SetWorkingSet(std::size_t bytes) {
    return platform().memory.setWorkingSet(bytes);
}

std::uint32_t clockMilliseconds() {
    return static_cast<std::uint32_t>(platform().clock.processMilliseconds());
}

std::int32_t deadlineAfter(std::uint32_t start, std::int64_t seconds) {
    constexpr std::int64_t longest = std::numeric_limits<std::int32_t>::max() / 1000;
    const std::int64_t span = std::clamp<std::int64_t>(seconds, 0, longest) * 1000;
    const auto deadline = static_cast<std::int32_t>(start + static_cast<std::uint32_t>(span));
    return deadline == noDeadline ? deadline + 1 : deadline;
}

bool hasExpired(std::int32_t deadline) {
    if (deadline == noDeadline) {
        return false;
    }
    const std::uint32_t past = clockMilliseconds() - static_cast<std::uint32_t>(deadline);
    return static_cast<std::int32_t>(past) >= 0;
}

}  // namespace vorn
