#include "tests/cpu/cache_size_test.h"

#include <cmath>
#include <cstdlib>

#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr std::uint32_t leafMaximum = 0;
constexpr std::uint32_t leafCacheParameters = 4;
constexpr std::uint32_t leafExtendedMaximum = 0x80000000;
constexpr std::uint32_t leafExtendedFeatures = 0x80000001;
constexpr std::uint32_t leafCacheTopology = 0x8000001D;
constexpr std::uint32_t featureTopologyExtensions = 1U << 22U;  // leaf 0x80000001, ECX

constexpr std::uint32_t typeNone = 0;         // EAX bits 4..0: no more caches
constexpr std::uint32_t typeInstruction = 2;  // an instruction cache
constexpr std::uint32_t subleafLimit = 32;    // more than any processor describes

/// Whether the leaf describes caches: its first subleaf has a type.
bool describesCaches(std::uint32_t leaf) {
    return (platform().processor.cpuid(leaf, 0).eax & 0x1FU) != typeNone;
}

/// The leaf that describes the caches; 0 when there is none.
std::uint32_t cacheLeaf() {
    Processor& processor = platform().processor;
    if (processor.cpuid(leafMaximum).eax >= leafCacheParameters &&
        describesCaches(leafCacheParameters)) {
        return leafCacheParameters;
    }
    if (processor.cpuid(leafExtendedMaximum).eax >= leafCacheTopology &&
        (processor.cpuid(leafExtendedFeatures).ecx & featureTopologyExtensions) != 0 &&
        describesCaches(leafCacheTopology)) {
        return leafCacheTopology;
    }
    return 0;
}

/// Ways, partitions, line size and sets, each of which the registers hold less one.
std::uint64_t sizeInKb(const CpuidRegisters& cache) {
    const std::uint64_t ways = ((cache.ebx >> 22U) & 0x3FFU) + 1U;
    const std::uint64_t partitions = ((cache.ebx >> 12U) & 0x3FFU) + 1U;
    const std::uint64_t lineSize = (cache.ebx & 0xFFFU) + 1U;
    const std::uint64_t sets = static_cast<std::uint64_t>(cache.ecx) + 1U;
    return ways * partitions * lineSize * sets / 1024U;
}

/// One level of the report: what is expected, where it is, and what was found.
struct Level {
    const char* name;
    bool shown;
    const std::string& configured;
    std::uint64_t detected;
};

/// Writes the lines of a level; whether it is as expected, or nothing is.
bool reportLevel(Report& report, const Level& level) {
    if (!level.shown) {
        return true;
    }
    const std::uint64_t expected = cacheSizeInKb(level.configured);
    if (!level.configured.empty()) {
        report.both(textOf(" - Expected ", level.name, " Cache Size --> ", expected, " KB"));
    }
    report.both(textOf(" - Detected ", level.name, " Cache Size --> ", level.detected, " KB"));
    return level.configured.empty() || level.detected == expected;
}

}  // namespace

CacheSizes readCacheSizes() {
    CacheSizes sizes;
    const std::uint32_t leaf = cacheLeaf();
    sizes.known = leaf != 0;
    for (std::uint32_t subleaf = 0; sizes.known && subleaf < subleafLimit; ++subleaf) {
        const CpuidRegisters cache = platform().processor.cpuid(leaf, subleaf);
        const std::uint32_t type = cache.eax & 0x1FU;
        const std::uint32_t level = (cache.eax >> 5U) & 0x7U;
        if (type == typeNone) {
            break;
        }
        if (level == 2 && type != typeInstruction) {
            sizes.l2 = sizeInKb(cache);
        } else if (level == 3 && type != typeInstruction) {
            sizes.l3 = sizeInKb(cache);
        }
    }
    return sizes;
}

std::uint64_t cacheSizeInKb(const std::string& configured) {
    char* unit = nullptr;
    const double number = std::strtod(configured.c_str(), &unit);
    while (*unit == ' ') {
        ++unit;
    }
    double inKb = number / 1024.0;
    switch (upperCase(std::string_view(unit, 1)).front()) {
        case 'K':
            inKb = number;
            break;
        case 'M':
            inKb = number * 1024.0;
            break;
        case 'G':
            inKb = number * 1024.0 * 1024.0;
            break;
        default:
            break;
    }
    constexpr double largest = 1e12;  // far beyond any cache, and exact as an integer
    return inKb > 0.0 && inKb < largest ? static_cast<std::uint64_t>(std::llround(inKb)) : 0;
}

std::string testCacheSize(VORNTestResult& result, const Settings& settings, TestRecord& record,
                          std::string& log) {
    record.description = "Cache size is NOT the expected one";
    record.name = "Cache";
    record.version = "V1";
    const CacheSizes sizes = readCacheSizes();

    Report report(log);
    report.header("Reading Cache Size");
    if (!sizes.known) {
        report.both("Cache test not supported on this model processor.");
        result = VORN_NOT_RUN;
        return record.code;
    }
    const bool l2Enabled = holdsWord(settings.l2CacheTest, "ENABLE");
    const bool l2Same = reportLevel(report, {"L2", l2Enabled, settings.l2Cache, sizes.l2});
    const bool l3Same = reportLevel(report, {"L3", true, settings.l3Cache, sizes.l3});
    if ((!l2Enabled || settings.l2Cache.empty()) && settings.l3Cache.empty()) {
        report.both("..No expected Cache Size - Skipping comparison..");
        result = VORN_NOT_RUN;
        return record.code;
    }

    const bool same = l2Same && l3Same;
    const std::string sentence = same ? "Cache Size Test Passed!!!" : "Cache Size Test Failed";
    Report::console();
    report.line(sentence, "\n" + sentence + "\n\n");
    Report::console();
    Report::conclude(result, record,
                     same ? Verdict{"Pass", "Code 123", sentence, VORN_PASS}
                          : Verdict{"Fail", "Code 123", sentence, VORN_FAIL});
    return record.code;
}

}  // namespace vorn
