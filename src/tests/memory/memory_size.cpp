#include "tests/memory/memory_size.h"

#include <array>
#include <cstdio>
#include <string>

#include "platform/platform.h"
#include "report/text.h"
#include "tests/memory/size_text.h"

namespace vorn {

namespace {

/// An expected size that switches the comparison off.
constexpr std::int64_t anySize = -1;

/// Whether this version of the system is asked what the firmware found installed; else for the
/// memory that it manages.
bool hasInstalledMemoryQuery(const SystemVersion& version) {
    if (version.major < 6) {
        return false;
    }
    return version.minor > 0 || (version.major == 6 && version.servicePackMajor > 0);
}

/// The unit in which sizes are shown.
struct DisplayUnit {
    const char* name;
    double perByte;
    const char* format;

    template <typename Bytes>
    std::string show(Bytes bytes) const {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), format, static_cast<double>(bytes) * perByte);
        return text.data() + std::string(name);
    }
};

template <typename Bytes>
DisplayUnit displayUnitFor(Bytes bytes) {
    if (bytes >= 1073741824) {
        return {"GB", 0x1p-30, "%.2f"};
    }
    if (bytes >= 1048576) {
        return {"MB", 0x1p-20, "%.2f"};
    }
    if (bytes >= 1024) {
        return {"kB", 0x1p-10, "%.2f"};
    }
    return {"B", 1.0, "%.0f"};
}

void showDetected(const std::string& size, Report& report) {
    report.line("Detected Memory Size is --> " + size,
                "\nDetected Memory Size is --> " + size + "\n\n");
}

void showMemorySize(Report& report) {
    std::uint64_t detected = 0;
    GetInstalledMemoryBytes(detected);  // without an answer, what is shown is 0
    showDetected(displayUnitFor(detected).show(detected), report);
}

/// Whether `detected` is within ten per cent of `expected`, both bounds excluded; reckoned in
/// single precision.
bool isExpectedMemorySize(std::int64_t expected, std::uint64_t detected) {
    const auto expectedSize = static_cast<float>(expected);
    const auto detectedSize = static_cast<float>(detected);
    return 0.9F * expectedSize < detectedSize && detectedSize < 1.1F * expectedSize;
}

bool compareMemorySize(std::int64_t expected, Report& report, WorkingVerdict& verdict) {
    std::uint64_t detected = 0;
    if (!GetInstalledMemoryBytes(detected)) {
        report.line("Unable to retrieve memory size\n", "\nUnable to retrieve memory size\n\n");
        // No verdict on the memory, yet a failure that the runner raises.
        verdict.fail("Unable to retrieve memory size", VORN_NOT_RUN);
        return false;
    }
    const DisplayUnit unit = displayUnitFor(expected);
    const std::string expectedText = unit.show(expected);
    const std::string detectedText = unit.show(detected);
    report.line("Expected Memory Size is --> " + expectedText,
                "Expected Memory Size is --> " + expectedText + "\n\n");
    showDetected(detectedText, report);
    if (!isExpectedMemorySize(expected, detected)) {
        verdict.fail("Memory Size Test Fail. Expected: " + expectedText +
                     " Detected: " + detectedText);
        return false;
    }
    report.line("\n--- Memory Size Test Pass!!! --- \n", "\n--- Memory Size Test Pass!!! --- \n\n");
    verdict.result = VORN_PASS;
    return true;
}

}  // namespace

bool GetInstalledMemoryBytes(std::uint64_t& bytes) {
    PhysicalMemory& memory = platform().memory;
    const std::optional<SystemVersion> version = memory.systemVersion();
    if (!version) {
        return false;
    }
    if (hasInstalledMemoryQuery(*version)) {
        const std::optional<std::uint64_t> kilobytes = memory.installedKilobytes();
        bytes = kilobytes ? *kilobytes << 10U : bytes;
        return kilobytes.has_value();
    }
    const std::optional<MemoryStatus> status = memory.status();
    bytes = status ? status->total : bytes;
    return status.has_value();
}

bool testMemorySize(const Settings& settings, Report& report, WorkingVerdict& verdict) {
    const std::string size = upperCase(settings.memorySize);
    if (size == "DISABLE") {
        return true;
    }
    report.line("\n--- Reading Memory Size --- \n", "\n--- Reading Memory Size --- \n\n");
    if (size.empty() || size == "ENABLE") {
        showMemorySize(report);
        return true;
    }
    const std::int64_t expected = bytesOfFractionalSize(size);
    return expected == anySize || compareMemorySize(expected, report, verdict);
}

}  // namespace vorn
