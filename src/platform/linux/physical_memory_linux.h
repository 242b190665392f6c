// Memory on Linux: sizes from the firmware's tables and the kernel's files, blocks on huge pages.
#pragma once

#include <string>
#include <string_view>

#include "platform/advice.h"
#include "platform/physical_memory.h"

namespace vorn {

/// The kernel cannot map a process's memory uncached: who writes the blocks streams past the
/// caches instead.
class LinuxPhysicalMemory : public PhysicalMemory {
public:
    /// `advice` is told of a refused lock; it must outlive this object. The two roots are the
    /// folders of the system's description of its devices and of its processes.
    explicit LinuxPhysicalMemory(Advice& advice, std::string sysfsRoot = "/sys",
                                 std::string procRoot = "/proc");

    /// Always a version that leads to installedKilobytes().
    std::optional<SystemVersion> systemVersion() override;

    /// From the firmware's table where this process may read it, else the kernel's memory blocks
    /// that are online, else the kernel's total.
    std::optional<std::uint64_t> installedKilobytes() override;

    std::optional<MemoryStatus> status() override;
    void* allocate(std::size_t size, bool uncached) override;
    bool lock(void* block, std::size_t size) override;
    void release(void* block, std::size_t size) override;

    /// Raises the soft limit of locked memory to the hard one, whatever the size.
    bool setWorkingSet(std::size_t bytes) override;

private:
    std::optional<std::uint64_t> kilobytesOfOnlineBlocks() const;
    std::optional<std::uint64_t> kilobytesOf(std::string_view meminfoField) const;

    Advice& advice_;
    std::string sysfsRoot_;
    std::string procRoot_;
};

}  // namespace vorn
