// The machine's memory: how much there is, and blocks of it that stay in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vorn {

/// Version of the operating system, as it reports itself to this program.
struct SystemVersion {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t servicePackMajor = 0;
};

/// Physical memory that the operating system manages, in bytes.
struct MemoryStatus {
    std::uint64_t total = 0;
    std::uint64_t available = 0;
};

class PhysicalMemory {
public:
    virtual ~PhysicalMemory() = default;

    /// The system's version, from which a caller chooses between installedKilobytes() and status();
    /// nothing when the query fails. A system with one method answers with a version that leads to
    /// installedKilobytes().
    virtual std::optional<SystemVersion> systemVersion() = 0;

    /// Memory that the firmware found installed, in units of 1024 bytes; nothing when the system
    /// does not offer the query or the query fails.
    virtual std::optional<std::uint64_t> installedKilobytes() = 0;

    /// Nothing when the query fails.
    virtual std::optional<MemoryStatus> status() = 0;

    /// A new block of `size` bytes, aligned to a page at least, readable and writable; the caller
    /// owns it and gives it back with release(). With `uncached` the processor's caches stay out of
    /// it where the system can map it so. Null when there is none.
    virtual void* allocate(std::size_t size, bool uncached) = 0;

    /// Fixes a whole block of allocate() in physical memory until its release; false when refused.
    virtual bool lock(void* block, std::size_t size) = 0;

    /// Gives a block of allocate() back, with the size that it was allocated with, locked or not.
    virtual void release(void* block, std::size_t size) = 0;

    /// Asks for room for `bytes` bytes of this process in physical memory, so that blocks up to
    /// that size can be locked; false when refused.
    virtual bool setWorkingSet(std::size_t bytes) = 0;
};

}  // namespace vorn
