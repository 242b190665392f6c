#include "tests/cpu/cpu_frequency_test.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"
#include "tests/common/base_clock.h"
#include "tests/common/busy_wait.h"

namespace vorn {

namespace {

constexpr std::uint32_t leafPowerManagement = 6;
constexpr std::uint32_t hasPerformanceCounters = 1U << 0U;  // ECX
constexpr std::uint32_t msrMaximumPerformance = 0xE7;       // IA32_MPERF
constexpr std::uint32_t msrActualPerformance = 0xE8;        // IA32_APERF

constexpr std::int64_t interval = 1000;  // milliseconds
constexpr int attempts = 5;
constexpr int passes = 10;

// Actual by maximum performance, in percent, that a sound reading stays within.
constexpr double lowestRatio = 95.0;
constexpr double highestRatio = 180.0;

constexpr std::array<char, 4> spinner{'-', '\\', '|', '/'};

/// What the process keeps of its measurements.
struct FrequencyMeasurement {
    std::size_t spinnerIndex = 0;
    double lastFrequency = 0.0;      // GHz
    double lastBaseFrequency = 0.0;  // GHz
};

FrequencyMeasurement& measurement() {
    static FrequencyMeasurement state;
    return state;
}

bool contains(const std::string& text, const char* word) {
    return text.find(word) != std::string::npos;
}

bool isEligibleForCounters(const std::string& brand, const FamilyModel& processor) {
    constexpr std::array<std::uint32_t, 16> models{0x1A, 0x1E, 0x1F, 0x2E, 0x25, 0x2C, 0x2A, 0x2D,
                                                   0x3A, 0x3C, 0x45, 0x46, 0x3E, 0x3F, 0x35, 0x37};
    const bool listed = std::find(models.begin(), models.end(), processor.model) != models.end();
    return (processor.family == 6 && listed) || contains(brand, "i7") || contains(brand, "i5") ||
           contains(brand, "i3");
}

/// What one attempt read.
struct CounterReading {
    std::uint64_t platformInfo = 0;
    std::uint64_t maximum = 0;
    std::uint64_t actual = 0;
};

/// One second of the counters; none when the driver cannot be opened. Where the system refuses to
/// set the counters they go on from where they stand, and the ratio judges them.
std::optional<CounterReading> readCounters() {
    if (!openRing0()) {
        Report::console();
        Report::console("Driver failed to initialize...");
        closeRing0();
        return std::nullopt;
    }
    CounterReading reading;
    readMsr(msrPlatformInfo, reading.platformInfo);
    writeMsr(msrMaximumPerformance, 0);
    writeMsr(msrActualPerformance, 0);
    busyWait(interval);
    readMsr(msrMaximumPerformance, reading.maximum);
    readMsr(msrActualPerformance, reading.actual);
    closeRing0();
    return reading;
}

bool isPlausible(const CounterReading& reading) {
    const double ratio =
        static_cast<double>(reading.actual) / static_cast<double>(reading.maximum) * 100.0;
    return ratio >= lowestRatio && ratio <= highestRatio;
}

double frequencyOf(const CounterReading& reading) {
    const double baseFrequency = static_cast<double>(maximumNonTurboRatio(reading.platformInfo)) *
                                 nominalBaseClock(cpuFamilyModel()) / 1000.0;
    measurement().lastBaseFrequency = baseFrequency;
    return static_cast<double>(reading.actual) * baseFrequency /
           static_cast<double>(reading.maximum);
}

/// The frequency by the counters; none when no attempt gave a plausible reading.
std::optional<double> measureByCounters() {
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        const std::optional<CounterReading> reading = readCounters();
        if (!reading) {
            return driverUnavailable;
        }
        if (isPlausible(*reading)) {
            return frequencyOf(*reading);
        }
    }
    return std::nullopt;
}

void turnSpinner() {
    std::size_t& index = measurement().spinnerIndex;
    reportStream() << '\b' << std::flush << spinner[index];
    index = (index + 1) % spinner.size();
}

double measureByTicks() {
    Processor& processor = platform().processor;
    double sum = 0.0;
    for (int pass = 0; pass < passes; ++pass) {
        const std::uint64_t first = processor.timestampCounter();
        busyWait(interval);
        const auto ticks = static_cast<std::int64_t>(processor.timestampCounter() - first);
        turnSpinner();
        sum += static_cast<double>(ticks) / 10000.0 / 100000.0;
    }
    return sum / passes;
}

double measure() {
    if (isEligibleForCounters(cpuBrandString(), cpuFamilyModel()) &&
        (platform().processor.cpuid(leafPowerManagement).ecx & hasPerformanceCounters) != 0) {
        if (const std::optional<double> frequency = measureByCounters()) {
            return *frequency;
        }
    }
    return measureByTicks();
}

}  // namespace

ExpectedFrequency expectedFrequency(const std::string& brand) {
    const std::vector<std::string_view> words = splitAtBlanks(brand);
    if (words.size() < 2) {
        return {};
    }
    const std::string last(words.back());
    ExpectedFrequency expected;
    expected.text = withoutWords(last, {"GHz", "MHz"});
    expected.gigahertz = leadingFloat(expected.text);
    if (contains(last, "MHz")) {
        expected.gigahertz /= 1000.0F;
    }
    return expected;
}

double measureCpuFrequency() {
    measurement().lastFrequency = measure();
    return measurement().lastFrequency;
}

std::string testCpuFrequency(VORNTestResult& result, const Settings& settings, TestRecord& record,
                             std::string& log) {
    record.name = "CPU Frequency";
    record.version = "V1";
    const ExpectedFrequency expected = expectedFrequency(cpuBrandString());
    const bool depot = holdsWord(settings.site, "DEPOT");

    Report report(log);
    report.log("\n --- Reading CPU Frequency --- \n\n");
    report.log("Expected CPU Frequency is --> ", expected.text, "\n\n");
    const auto detected = static_cast<float>(measureCpuFrequency());
    if (detected == static_cast<float>(driverUnavailable)) {
        reportDriverFailureInLog(log);
        recordDriverFailure(record, result);
        return record.code;
    }
    report.log("\nDetected CPU Frequency is --> ", detected, "\n");

    const float lower = expected.gigahertz - expected.gigahertz * 0.05F;
    const float upper = expected.gigahertz + expected.gigahertz * 0.05F;
    const bool within = lower <= detected && detected <= upper;
    const bool faster = detected > upper && !depot;
    if (!within && !faster) {
        report.log("\nCPU Frequency Test Failed!!!\n\n");
        Report::conclude(result, record, {"Fail", "3", "CPU Frequency Test Failed!!!", VORN_FAIL});
        return record.code;
    }
    report.log("\nCPU Frequency Test Passed!!!\n\n");
    if (faster) {
        report.log(
            "Expected frequency - The highest frequency at which the tested processor was "
            "manufactured to operate\n"
            "Detected frequency - The frequency at which the tested processor is currently "
            "operating\n"
            "Power management modes can create marginally higher or lower detected frequency\n"
            "than expected frequency. Small variations in clock frequencies are common.\n");
    }
    Report::conclude(result, record, {"Pass", "0", "CPU Frequency Test Passed!!!", VORN_PASS});
    return record.code;
}

}  // namespace vorn
