// Simulated memory of a machine.
#pragma once

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "platform/physical_memory.h"

namespace vorn {

/// Memory with given sizes and real, small blocks. Locking a block that was not allocated, and
/// releasing one that was not or not any more, or with another size, fails the test; so does a
/// block that is still held at the end.
class FakePhysicalMemory : public PhysicalMemory {
public:
    static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

    ~FakePhysicalMemory() override;

    std::optional<SystemVersion> version = SystemVersion{6, 1, 0};
    std::optional<std::uint64_t> installed = std::uint64_t{8} << 20U;  ///< kilobytes
    std::optional<MemoryStatus> managed =
        MemoryStatus{std::uint64_t{7} << 30U, std::uint64_t{4} << 30U};
    std::uint64_t grantedBlocks = unlimited;  ///< how many more blocks there are
    std::uint64_t grantedLocks = unlimited;   ///< how many more blocks may be locked

    /// The calls on blocks in order, blocks by the number of their allocation: "working set 100",
    /// "allocate 100 uncached", "lock 0", "release 0".
    std::vector<std::string> calls;

    /// The first byte of each block that is held now, in the order of allocation.
    std::vector<unsigned char*> held() const;

    std::optional<SystemVersion> systemVersion() override { return version; }
    std::optional<std::uint64_t> installedKilobytes() override { return installed; }
    std::optional<MemoryStatus> status() override { return managed; }
    void* allocate(std::size_t size, bool uncached) override;
    bool lock(void* block, std::size_t size) override;
    void release(void* block, std::size_t size) override;
    bool setWorkingSet(std::size_t bytes) override;

private:
    struct Block {
        void* start;
        std::size_t size;
        std::size_t number;
        bool locked;
    };

    std::vector<Block>::iterator find(const void* block, std::size_t size, const char* what);

    std::vector<Block> blocks_;
    std::size_t nextNumber_ = 0;
};

}  // namespace vorn
