#include "tests/cpu/fsb_test.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr std::uint32_t msrFsbFrequency = 0xCD;        // MSR_FSB_FREQ
constexpr std::uint32_t msrClockFrequency = 0x2C;      // MSR_EBC_FREQUENCY_ID
constexpr std::uint32_t fsbFrequencyMask = 0x7;        // bits 2..0 of MSR_FSB_FREQ
constexpr std::uint32_t clockFrequencyMask = 0x70000;  // bits 18..16 of MSR_EBC_FREQUENCY_ID
constexpr unsigned clockFrequencyShift = 16;
constexpr std::uint32_t transfersPerClock = 4;  // the bus is quad-pumped

using FrequencyTable = std::map<std::uint32_t, std::uint32_t>;  // register code to MHz

/// What the most recent measurement found and chose, the process's only copy.
struct FsbMeasurement {
    FamilyModelStepping processor;
    bool hasMsr = false;
    bool integratedClock = false;
    bool server = false;
    std::uint32_t driverStatus = 0;
    std::uint32_t clockLow = 0;
    std::uint32_t clockHigh = 0;
    std::uint32_t index = 0;
};

FsbMeasurement& measurement() {
    static FsbMeasurement state;
    return state;
}

template <std::size_t count>
bool isOneOf(std::uint32_t model, const std::array<std::uint32_t, count>& models) {
    return std::find(models.begin(), models.end(), model) != models.end();
}

bool contains(const std::string& text, const char* word) {
    return text.find(word) != std::string::npos;
}

/// Processors whose clock comes from an integrated generator, not from a bus.
bool hasIntegratedClock(const std::string& brand, const FamilyModelStepping& processor) {
    constexpr std::array<std::uint32_t, 8> models{0x3C, 0x3F, 0x45, 0x46, 0x3A, 0x2D, 0x2A, 0x3E};
    constexpr std::array<std::uint32_t, 3> arvoModels{0x26, 0x35, 0x37};
    constexpr std::array<std::uint32_t, 2> quintorModels{0x25, 0x2A};
    const bool family6 = processor.family == 6;
    const bool arvo = contains(brand, "Arvo");
    return (family6 && isOneOf(processor.model, models)) || contains(brand, "i7") ||
           contains(brand, "i5") || contains(brand, "i3") ||
           (arvo && family6 && isOneOf(processor.model, arvoModels)) ||
           (!arvo && contains(brand, "Quintor") && family6 &&
            isOneOf(processor.model, quintorModels));
}

/// Server processors that have links in place of a bus.
bool isServerWithoutBus(const FamilyModelStepping& processor) {
    constexpr std::array<std::uint32_t, 12> models{0x1A, 0x1E, 0x1F, 0x2E, 0x25, 0x2C,
                                                   0x2D, 0x2A, 0x3A, 0x3C, 0x3E, 0x3F};
    return processor.family == 6 && ((processor.model == 0x26 && processor.stepping == 5) ||
                                     isOneOf(processor.model, models));
}

FrequencyTable fsbFrequencies() {
    return {{0, 1067}, {1, 533}, {2, 800}, {3, 667}, {4, 1333}, {5, 400}, {6, 1600}};
}

FrequencyTable clockFrequencies(std::uint32_t model) {
    FrequencyTable table{{1, 133}, {2, 200}, {3, 166}, {4, 333}};
    if (model == 2) {
        table[0] = 100;
    } else if (model == 3 || model == 4) {
        table[0] = 266;
    }
    return table;
}

/// Starts the driver for one register. The result of the start is not looked at, its status is.
bool startDriver() {
    Ring0Library& ring0 = platform().ring0;
    ring0.initialize();
    measurement().driverStatus = ring0.status();
    return measurement().driverStatus == 0;
}

/// Reads the bus frequency register of an opened driver, closes the driver, looks the code up.
float readFsbFrequency() {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    platform().ring0.readMsr(msrFsbFrequency, low, high);
    closeRing0();
    measurement().index = low & fsbFrequencyMask;
    return static_cast<float>(fsbFrequencies()[measurement().index]);
}

float measureDesktop() {
    if (!startDriver()) {
        Report::console("VORN encountered problem loading driver..");
        return fsbDriverUnavailable;
    }
    return readFsbFrequency();
}

bool startServerDriver() {
    if (startDriver()) {
        return true;
    }
    Report::console("Encountered problem loading VORN driver...");
    Report::console("Exiting...");
    return false;
}

float measureServer() {
    FsbMeasurement& state = measurement();
    if (!startServerDriver()) {
        return fsbDriverUnavailable;
    }
    state.clockLow = 0;
    state.clockHigh = 0;
    platform().ring0.readMsr(msrClockFrequency, state.clockLow, state.clockHigh);
    closeRing0();
    state.index = (state.clockLow & clockFrequencyMask) >> clockFrequencyShift;
    if (state.index != 0) {
        FrequencyTable table = clockFrequencies(state.processor.model);
        return static_cast<float>(transfersPerClock * table[state.index]);
    }
    return startServerDriver() ? readFsbFrequency() : fsbDriverUnavailable;
}

}  // namespace

float measureFsb(const std::string& brand) {
    FsbMeasurement& state = measurement();
    state.processor = cpuFamilyModelStepping();
    state.hasMsr = cpuHasMsr();
    state.integratedClock = hasIntegratedClock(brand, state.processor);
    state.server = contains(brand, "Zelk");

    if (!state.hasMsr) {
        Report::console();
        Report::console("..MSR NOT supported on this processor..");
        Report::console("..Exiting Test..");
        platform().process.exit(0);
    }
    if (!state.server) {
        return state.integratedClock ? fsbNotPresent : measureDesktop();
    }
    return isServerWithoutBus(state.processor) ? fsbNotPresent : measureServer();
}

std::string testFsb(VORNTestResult& result, const Settings& settings, TestRecord& record,
                    std::string& log) {
    record.name = "FSB";
    record.version = "V1";
    const bool skip = holdsWord(settings.skipConfig, "YES");
    const float detected = measureFsb(cpuBrandString());

    Report report(log);
    if (detected == fsbNotPresent) {
        report.console();
        report.line(" --- FSB NOT Supported on this Processor ---",
                    "\n --- FSB NOT Supported on this Processor --- \n\n");
        report.console();
        Report::conclude(result, record,
                         {"FSB N/A on this Processor", "Code 999",
                          "FSB NOT Supported on this Processor", VORN_NOT_RUN});
        return record.code;
    }
    if (detected == fsbDriverUnavailable) {
        reportDriverFailure(log, record, result);
        throw std::string(driverFailureError);
    }

    report.header("Reading FSB");
    const float expected = skip ? detected : leadingFloat(settings.busSpeed);
    report.console();
    if (skip) {
        report.console("Expected FSB : --> ", detected);
        report.console();
        report.console("Detected FSB : --> ", detected);
        report.log("\nExpected FSB : --> ", detected, "\n");
        report.log("\nDetected) FSB : --> ", detected, "\n");
    } else {
        report.console("Expected FSB : --> ", settings.busSpeed);
        report.console();
        report.console("Detected FSB : --> ", detected);
        report.log("\nExpected FSB : --> ", settings.busSpeed, "\n");
        report.log("\nDetected FSB : --> ", detected, "\n");
    }

    const float tolerance = expected * 0.02F;
    if (expected - tolerance <= detected && detected <= expected + tolerance) {
        report.console();
        report.line("CPU FSB Test Passed!!!", "\nCPU FSB Test Passed!!!\n\n");
        report.console();
        Report::conclude(result, record, {"Pass", "Code 123", "CPU FSB Test Passed!!!", VORN_PASS});
    } else {
        report.line("CPU FSB Test Failed!!!", "\nCPU FSB Test Failed!!!\n\n");
        report.console();
        Report::conclude(result, record, {"Fail", "Code 123", "CPU FSB Test Failed!!!", VORN_FAIL});
    }
    return record.code;
}

}  // namespace vorn
