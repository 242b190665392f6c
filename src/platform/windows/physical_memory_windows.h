// Memory on Windows: the calls of Kernel32.
#pragma once

#include "platform/advice.h"
#include "platform/physical_memory.h"

namespace vorn {

class WindowsPhysicalMemory : public PhysicalMemory {
public:
    /// `advice` is told of a refused lock; it must outlive this object.
    explicit WindowsPhysicalMemory(Advice& advice) : advice_(advice) {}

    std::optional<SystemVersion> systemVersion() override;
    std::optional<std::uint64_t> installedKilobytes() override;
    std::optional<MemoryStatus> status() override;
    void* allocate(std::size_t size, bool uncached) override;
    bool lock(void* block, std::size_t size) override;
    void release(void* block, std::size_t size) override;
    bool setWorkingSet(std::size_t bytes) override;

private:
    Advice& advice_;
};

}  // namespace vorn
