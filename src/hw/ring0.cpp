#include "hw/ring0.h"

#include <array>

#include "platform/platform.h"

namespace vorn {

namespace {

constexpr std::uint32_t pciRegisterVendor = 0x00;
constexpr std::uint32_t pciRegisterDevice = 0x02;
constexpr std::uint32_t pciRegisterBusNumbers = 0x18;  // primary, secondary, subordinate
constexpr std::uint16_t pciVendorAbsent = 0xFFFF;

struct FailureLine {
    const char* console;
    const char* log;
};

constexpr std::array<FailureLine, 4> driverFailureLines{{
    {" --- VORN encountered problem loading driver ---",
     "\n --- VORN encountered problem loading driver --- \n"},
    {"This could be related to VORN.exe not having administrator privileges.",
     "This could be related to VORN.exe not having administrator privileges.\n"},
    {"Check the property settings for VORN.exe and set privilege setting to",
     "Check the property settings for VORN.exe and set privilege setting to\n"},
    {"adminstrator and re-run VORN.", "adminstrator and re-run VORN.\n"},
}};

}  // namespace

bool openRing0() {
    Ring0Library& ring0 = platform().ring0;
    return ring0.initialize() != 0 && ring0.status() == 0;
}

bool closeRing0() {
    platform().ring0.deinitialize();
    return true;
}

bool readMsr(std::uint32_t index, std::uint64_t& value) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    const bool success = platform().ring0.readMsr(index, low, high) != 0;
    value = (static_cast<std::uint64_t>(high) << 32U) | low;
    return success;
}

bool writeMsr(std::uint32_t index, std::uint64_t value) {
    return platform().ring0.writeMsr(index, static_cast<std::uint32_t>(value),
                                     static_cast<std::uint32_t>(value >> 32U)) != 0;
}

std::optional<PciIdentity> probePciFunction(std::uint32_t address) {
    Ring0Library& ring0 = platform().ring0;
    PciIdentity identity;
    if (ring0.readPciConfigWordChecked(address, pciRegisterVendor, identity.vendor) == 0 ||
        identity.vendor == pciVendorAbsent ||
        ring0.readPciConfigWordChecked(address, pciRegisterDevice, identity.device) == 0) {
        return std::nullopt;
    }
    return identity;
}

std::optional<std::uint8_t> pciSecondaryBus(std::uint32_t address) {
    std::uint32_t busNumbers = 0;
    if (platform().ring0.readPciConfigDwordChecked(address, pciRegisterBusNumbers, busNumbers) ==
        0) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(busNumbers >> 8U);
}

void reportDriverFailureOnConsole() {
    reportStream() << std::endl;  // NOLINT(performance-avoid-endl)
    for (const FailureLine& line : driverFailureLines) {
        reportStream() << line.console << std::endl;  // NOLINT(performance-avoid-endl)
    }
}

void reportDriverFailureInLog(std::string& log) {
    for (const FailureLine& line : driverFailureLines) {
        log += line.log;
    }
}

void recordDriverFailure(TestRecord& record, VORNTestResult& result) {
    Report::conclude(result, record,
                     {"VORN load driver error", "Fail", "VORN load driver error", VORN_FAIL});
}

void reportDriverFailure(std::string& log, TestRecord& record, VORNTestResult& result) {
    reportDriverFailureOnConsole();
    reportDriverFailureInLog(log);
    recordDriverFailure(record, result);
}

}  // namespace vorn
