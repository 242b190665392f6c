#include "platform/windows/physical_memory_windows.h"

#include <windows.h>

namespace vorn {

namespace {

using InstalledMemoryQuery = BOOL(WINAPI*)(PULONGLONG kilobytes);

static_assert(sizeof(OSVERSIONINFOEXW) == 284);
static_assert(sizeof(MEMORYSTATUSEX) == 64);

}  // namespace

std::optional<SystemVersion> WindowsPhysicalMemory::systemVersion() {
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)) == 0) {
        return std::nullopt;
    }
    return SystemVersion{version.dwMajorVersion, version.dwMinorVersion, version.wServicePackMajor};
}

std::optional<std::uint64_t> WindowsPhysicalMemory::installedKilobytes() {
    // Looked up at run time: systems before 6.0 SP1 do not have it.
    const HMODULE kernel = GetModuleHandleW(L"Kernel32.dll");
    const FARPROC found =
        kernel == nullptr ? nullptr : GetProcAddress(kernel, "GetPhysicallyInstalledSystemMemory");
    if (found == nullptr) {
        return std::nullopt;
    }
    const auto query = reinterpret_cast<InstalledMemoryQuery>(reinterpret_cast<void*>(found));
    ULONGLONG kilobytes = 0;
    return query(&kilobytes) == 0 ? std::nullopt : std::optional<std::uint64_t>(kilobytes);
}

std::optional<MemoryStatus> WindowsPhysicalMemory::status() {
    MEMORYSTATUSEX answer{};
    answer.dwLength = sizeof answer;
    if (GlobalMemoryStatusEx(&answer) == 0) {
        return std::nullopt;
    }
    return MemoryStatus{answer.ullTotalPhys, answer.ullAvailPhys};
}

void* WindowsPhysicalMemory::allocate(std::size_t size, bool uncached) {
    const DWORD protection = PAGE_READWRITE | (uncached ? DWORD{PAGE_NOCACHE} : 0U);
    return VirtualAlloc(nullptr, size, MEM_COMMIT | MEM_RESERVE, protection);
}

bool WindowsPhysicalMemory::lock(void* block, std::size_t size) {
    if (VirtualLock(block, size) != 0) {
        return true;
    }
    advice_.add(
        "Memory under test could not be locked: the working set of this process is limited. Run as "
        "administrator, or as a user with the right \"Increase a process working set\" "
        "(SeIncreaseWorkingSetPrivilege).");
    return false;
}

void WindowsPhysicalMemory::release(void* block, std::size_t /*size*/) {
    VirtualFree(block, 0, MEM_RELEASE);
}

bool WindowsPhysicalMemory::setWorkingSet(std::size_t bytes) {
    return SetProcessWorkingSetSize(GetCurrentProcess(), bytes, bytes) != 0;
}

}  // namespace vorn
