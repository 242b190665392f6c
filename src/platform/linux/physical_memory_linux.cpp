#include "platform/linux/physical_memory_linux.h"

#include <sys/mman.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "platform/linux/smbios.h"

namespace vorn {

namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::size_t hugePageSize = std::size_t{2} << 20U;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string lockLimitText(const rlimit& limit) {
    std::ostringstream text;
    text << limit.rlim_cur / 1024U << " KiB";
    return text.str();
}

}  // namespace

LinuxPhysicalMemory::LinuxPhysicalMemory(Advice& advice, std::string sysfsRoot,
                                         std::string procRoot)
    : advice_(advice), sysfsRoot_(std::move(sysfsRoot)), procRoot_(std::move(procRoot)) {}

std::optional<SystemVersion> LinuxPhysicalMemory::systemVersion() {
    return SystemVersion{6, 1, 0};
}

std::optional<std::uint64_t> LinuxPhysicalMemory::installedKilobytes() {
    const std::string table = contentOf(sysfsRoot_ + "/firmware/dmi/tables/DMI");
    if (const std::optional<std::uint64_t> installed = installedKilobytesOfSmbios(table)) {
        return installed;
    }
    if (const std::optional<std::uint64_t> online = kilobytesOfOnlineBlocks()) {
        return online;
    }
    return kilobytesOf("MemTotal:");
}

std::optional<std::uint64_t> LinuxPhysicalMemory::kilobytesOfOnlineBlocks() const {
    namespace fs = std::filesystem;
    const std::string folder = sysfsRoot_ + "/devices/system/memory";
    std::ifstream sizeFile(folder + "/block_size_bytes");
    std::uint64_t blockSize = 0;
    if (!(sizeFile >> std::hex >> blockSize)) {
        return std::nullopt;
    }
    std::uint64_t online = 0;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        std::ifstream file(entry.path() / "state");
        std::string state;
        if (file >> state && state == "online") {
            ++online;
        }
    }
    const std::uint64_t kilobytes = online * (blockSize / 1024U);
    return kilobytes == 0 ? std::nullopt : std::optional(kilobytes);
}

std::optional<std::uint64_t> LinuxPhysicalMemory::kilobytesOf(std::string_view meminfoField) const {
    std::ifstream file(procRoot_ + "/meminfo");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        std::uint64_t kilobytes = 0;
        if (words >> name >> kilobytes && name == meminfoField) {
            return kilobytes;
        }
    }
    return std::nullopt;
}

std::optional<MemoryStatus> LinuxPhysicalMemory::status() {
    const std::optional<std::uint64_t> total = kilobytesOf("MemTotal:");
    std::optional<std::uint64_t> available = kilobytesOf("MemAvailable:");
    if (!available) {
        available = kilobytesOf("MemFree:");  // kernels before 3.14
    }
    if (!total || !available) {
        return std::nullopt;
    }
    return MemoryStatus{*total * 1024U, *available * 1024U};
}

void* LinuxPhysicalMemory::allocate(std::size_t size, bool /*uncached*/) {
    // Room to move the block to the next border of a huge page; what lies around it goes back.
    const std::size_t whole = (size + pageSize - 1) / pageSize * pageSize;
    const std::size_t room = whole + hugePageSize;
    void* const mapping =
        ::mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
        return nullptr;
    }
    auto* const first = static_cast<char*>(mapping);
    const std::size_t past = reinterpret_cast<std::uintptr_t>(first) % hugePageSize;
    const std::size_t before = past == 0 ? 0 : hugePageSize - past;
    char* const block = first + before;
    if (before != 0) {
        ::munmap(first, before);
    }
    const std::size_t after = room - before - whole;
    if (after != 0) {
        ::munmap(block + whole, after);
    }
    // Before the first touch, else the pages are small ones already. A refusal only costs time.
    ::madvise(block, whole, MADV_HUGEPAGE);
    return block;
}

bool LinuxPhysicalMemory::lock(void* block, std::size_t size) {
    if (::mlock(block, size) == 0) {
        return true;
    }
    rlimit limit{};
    if (::getrlimit(RLIMIT_MEMLOCK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
        advice_.add("Memory under test could not be locked: this process may lock " +
                    lockLimitText(limit) +
                    " (RLIMIT_MEMLOCK). Raise the limit with \"ulimit -l unlimited\" as root or "
                    "\"memlock\" in /etc/security/limits.conf, or run as root.");
    }
    return false;
}

void LinuxPhysicalMemory::release(void* block, std::size_t size) {
    ::munmap(block, size);
}

bool LinuxPhysicalMemory::setWorkingSet(std::size_t /*bytes*/) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_MEMLOCK, &limit) != 0) {
        return false;
    }
    limit.rlim_cur = limit.rlim_max;
    return ::setrlimit(RLIMIT_MEMLOCK, &limit) == 0;
}

}  // namespace vorn
