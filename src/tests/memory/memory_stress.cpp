#include "tests/memory/memory_stress.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <limits>
#include <string>

#include "platform/platform.h"
#include "report/text.h"
#include "tests/memory/patterns.h"
#include "tests/memory/size_text.h"

namespace vorn {

namespace {

constexpr std::int64_t reservedBytes = 104857600;       // left to the rest of the system
constexpr std::int64_t cycleLimit = 1932735283;         // bytes; keeps the sizes within 32 bits
constexpr std::int32_t blockSize = 10485760;            // bytes
constexpr std::int64_t workingSetAllowance = 20971520;  // bytes, for the program itself

constexpr const char* legend =
    "Alloc = Memory Allocation\n"
    "T1_W = Test 1 Ones and Zeros Moving Inversions write operations\n"
    "T1_V = Test 1 Ones and Zeros Moving Inversions verification operations\n"
    "T2_W = Test 2 32Bits Sliding Ones write operations\n"
    "T2_V = Test 2 32Bits Sliding Ones verification operations\n"
    "T3_W = Test 3 32Bits Sliding Zero write operations\n"
    "T3_V = Test 3 32Bits Sliding Zero verification operations\n"
    "Dealloc = Memory deallocation\n"
    "Alloc\tT1_W\tT1_V\tT2_W\tT2_V\tT3_W\tT3_V\tDealloc\t";

/// One of the six steps between allocation and release.
struct Phase {
    bool (*run)(BlockSet& set);
    int test;                 ///< number of its pattern
    const char* failureLine;  ///< null for a phase that cannot fail
    const char* failureMessage;
};

constexpr std::array<Phase, 6> phases{{
    {writeAlternatingBytes, 1, nullptr, nullptr},
    {verifyAlternatingBytes, 1, "\nTest 1 Verification Fail.\n",
     "Memory Stress Test 1 Verification Fail."},
    {writeSlidingOnes, 2, nullptr, nullptr},
    {verifySlidingOnes, 2, "\nTest 2 Verification Fail.\n",
     "Memory Stress Test 2 Verification Fail."},
    {writeZeros, 3, nullptr, nullptr},
    {verifyZeros, 3, "\nTest 3 Verification Fail.\n", "Memory Stress Test 3 Verification Fail."},
}};

std::optional<MemoryFault>& mostRecentFault() {
    static std::optional<MemoryFault> fault;
    return fault;
}

/// Text for the console alone, as it is.
void show(const std::string& text) {
    reportStream() << text << std::flush;
}

/// Memory that the test may take, in bytes; negative when less than the reserve is available.
std::int64_t usableBytes() {
    const MemoryStatus status = platform().memory.status().value_or(MemoryStatus{});
    return static_cast<std::int64_t>(status.available) - reservedBytes;
}

struct Request {
    std::int64_t bytes = 0;
    bool granted = false;
};

/// Reads a size in upper case: a part of the usable memory in per cent, or a number with a unit.
Request readRequest(const std::string& size, std::int64_t usable) {
    const std::size_t percentSign = size.find('%');
    if (percentSign == std::string::npos) {
        const std::int64_t bytes = bytesOfWholeSize(size);
        return {bytes, bytes <= usable};
    }
    const auto percent = static_cast<float>(leadingInteger64(size.substr(0, percentSign)));
    // Of less than nothing, no part is anything.
    const auto whole = static_cast<float>(std::max<std::int64_t>(usable, 0));
    const std::int64_t bytes = truncatedToInteger(whole * (percent / 100.0));
    return {bytes, bytes >= 1};
}

/// One call of the stress test, once its size is known.
class MemoryStress {
public:
    MemoryStress(const Settings& settings, Report& report, WorkingVerdict& verdict)
        : report_(report),
          verdict_(verdict),
          once_(holdsWord(settings.memoryStressTestTime, "DISABLE")),
          seconds_(leadingInteger64(settings.memoryStressTestTime)),
          start_(clockMilliseconds()),
          deadline_(once_ ? noDeadline : deadlineAfter(start_, seconds_)) {}

    void run(std::int64_t bytes);

private:
    enum class CycleEnd { complete, expired, failed };

    void announce(std::int64_t bytes) const;
    CycleEnd runCycle(std::int64_t bytes);
    CycleEnd runPhases(BlockSet& set);
    void failPhase(const Phase& phase, const BlockSet& set);
    void failAllocation();
    std::string countersWith(std::int64_t seconds) const;
    void countOne(std::size_t counter);
    bool endsByTime() const;

    Report& report_;
    WorkingVerdict& verdict_;
    bool once_;
    std::int64_t seconds_;
    std::uint32_t start_;
    std::int32_t deadline_;

    // In the order of the columns: allocation, the phases, deallocation.
    static constexpr std::size_t allocations = 0;
    static constexpr std::size_t firstPhase = 1;
    static constexpr std::size_t deallocations = firstPhase + phases.size();
    std::array<std::uint64_t, deallocations + 1> counters_{};
};

void MemoryStress::run(std::int64_t bytes) {
    announce(bytes);
    CycleEnd end = CycleEnd::complete;
    while (end == CycleEnd::complete && !hasExpired(deadline_)) {
        end = runCycle(std::min(bytes, cycleLimit));
        if (once_) {
            break;
        }
    }
    if (end == CycleEnd::failed) {
        return;
    }
    report_.line("\n--- Integrated Memory Controller Stress Test Pass!!! --- \n",
                 "\n--- Integrated Memory Controller Stress Test Pass!!! --- \n\n");
    verdict_.result = VORN_PASS;
}

void MemoryStress::announce(std::int64_t bytes) const {
    if (!once_) {
        Report::console("Timer = ", std::to_string(seconds_), " seconds");
    }
    Report::console("Memory to be allocated = ", std::to_string(bytes), " byte\n");
    Report::console(legend, textOf(std::setw(5), "Time"));
    show(countersWith(0));
}

MemoryStress::CycleEnd MemoryStress::runCycle(std::int64_t bytes) {
    const auto count = static_cast<std::int32_t>(std::max<std::int64_t>(bytes, 0) / blockSize);
    BlockSet set;
    SetWorkingSet(static_cast<std::size_t>(std::int64_t{count} * blockSize + workingSetAllowance));
    if (AllocateBlocks(set, blockSize, count, true, start_, deadline_) != blocksAllocated) {
        failAllocation();
        return CycleEnd::failed;
    }
    countOne(allocations);
    const CycleEnd end = runPhases(set);
    if (end == CycleEnd::complete) {
        ++counters_[deallocations];
        ReleaseBlocks(set);
        show("\r" + countersWith((clockMilliseconds() - start_) / 1000U));
    }
    return end;
}

MemoryStress::CycleEnd MemoryStress::runPhases(BlockSet& set) {
    for (std::size_t index = 0; index < phases.size(); ++index) {
        if (endsByTime()) {
            return CycleEnd::expired;
        }
        if (!phases[index].run(set)) {
            failPhase(phases[index], set);
            return CycleEnd::failed;
        }
        countOne(firstPhase + index);
    }
    return endsByTime() ? CycleEnd::expired : CycleEnd::complete;
}

void MemoryStress::failPhase(const Phase& phase, const BlockSet& set) {
    mostRecentFault() = MemoryFault{phase.test, *set.mismatch};
    show(phase.failureLine);
    report_.log(phase.failureLine);
    verdict_.fail(phase.failureMessage);
}

void MemoryStress::failAllocation() {
    show("\nMemory Not Allocated.\n");
    report_.log("\nMemory Not Allocated.\n");
    verdict_.fail("Memory Stress Test fail to allocate memory.");
}

/// The counters and the time, as the columns of the table stand.
std::string MemoryStress::countersWith(std::int64_t seconds) const {
    std::string text;
    for (const std::uint64_t counter : counters_) {
        text += std::to_string(counter) + "\t";
    }
    return text + textOf(std::setw(5), seconds);
}

void MemoryStress::countOne(std::size_t counter) {
    ++counters_[counter];
    show("\r" + countersWith((clockMilliseconds() - start_) / 1000U));
}

/// Whether the time is up; the table then ends with the time that was asked for.
bool MemoryStress::endsByTime() const {
    if (!hasExpired(deadline_)) {
        return false;
    }
    show("\r" + countersWith(seconds_));
    return true;
}

}  // namespace

const std::optional<MemoryFault>& lastMemoryFault() {
    return mostRecentFault();
}

void testMemoryStress(const Settings& settings, Report& report, WorkingVerdict& verdict) {
    mostRecentFault().reset();
    const std::string size = upperCase(settings.memoryStressTestSize);
    if (size == "DISABLE") {
        return;
    }
    report.line("\n--- Integrated Memory Controller Stress Test --- \n",
                "\n--- Integrated Memory Controller Stress Test --- \n\n");
    const Request request = readRequest(size, usableBytes());
    if (!request.granted) {
        const std::string failure = "Memory Stress Test Fail. Not enough free memory to allocate " +
                                    std::to_string(request.bytes) + " byte";
        report.log("\n", failure, "\n");
        verdict.fail(failure);
        return;
    }
    MemoryStress(settings, report, verdict).run(request.bytes);
}

}  // namespace vorn
