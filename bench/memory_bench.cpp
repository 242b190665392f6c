// How fast the patterns go through memory: each phase against the best loop that only stores or
// only loads, the share of a cycle that is testing, and two other testers of memory on the same
// machine.
#include <immintrin.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "table.h"
#include "tests/memory/block_set.h"
#include "tests/memory/patterns.h"

namespace {

using vorn::BlockSet;

constexpr std::int32_t blockSize = 10485760;
constexpr double gibibyte = 1073741824.0;

double secondsNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

template <typename Work>
double secondsOf(const Work& work) {
    const double start = secondsNow();
    work();
    return secondsNow() - start;
}

// The loops over one block. `value` is the byte that they store; loads are folded into one result.

template <int lanes>
void storeBlock16(unsigned char* block, char value) {
    const __m128i data = _mm_set1_epi8(value);
    for (int offset = 0; offset < blockSize; offset += 16 * lanes) {
        auto* const to = reinterpret_cast<__m128i*>(block + offset);
#pragma GCC unroll 16
        for (int lane = 0; lane < lanes; ++lane) {
            _mm_stream_si128(to + lane, data);
        }
    }
    _mm_sfence();
}

__attribute__((target("avx"))) void storeBlock32(unsigned char* block, char value) {
    const __m256i data = _mm256_set1_epi8(value);
    for (int offset = 0; offset < blockSize; offset += 128) {
        auto* const to = reinterpret_cast<__m256i*>(block + offset);
        _mm256_stream_si256(to, data);
        _mm256_stream_si256(to + 1, data);
        _mm256_stream_si256(to + 2, data);
        _mm256_stream_si256(to + 3, data);
    }
    _mm_sfence();
}

template <int lanes, int ahead>
void loadBlock16(unsigned char* block, char /*value*/) {
    __m128i sums[4] = {};
    for (int offset = 0; offset < blockSize; offset += 16 * lanes) {
        if (ahead != 0) {
            _mm_prefetch(reinterpret_cast<const char*>(block) + offset + ahead, _MM_HINT_NTA);
        }
        const auto* const from = reinterpret_cast<const __m128i*>(block + offset);
#pragma GCC unroll 16
        for (int lane = 0; lane < lanes; ++lane) {
            sums[lane % 4] = _mm_or_si128(sums[lane % 4], _mm_load_si128(from + lane));
        }
    }
    __m128i sum = _mm_or_si128(_mm_or_si128(sums[0], sums[1]), _mm_or_si128(sums[2], sums[3]));
    asm volatile("" : "+x"(sum));
}

__attribute__((target("avx2"))) void loadBlock32(unsigned char* block, char /*value*/) {
    __m256i sums[4] = {};
    for (int offset = 0; offset < blockSize; offset += 128) {
        const auto* const from = reinterpret_cast<const __m256i*>(block + offset);
#pragma GCC unroll 4
        for (int lane = 0; lane < 4; ++lane) {
            sums[lane] = _mm256_or_si256(sums[lane], _mm256_load_si256(from + lane));
        }
    }
    __m256i sum =
        _mm256_or_si256(_mm256_or_si256(sums[0], sums[1]), _mm256_or_si256(sums[2], sums[3]));
    asm volatile("" : "+x"(sum));
}

/// The best times of one loop: of each block the shortest, so that what else the machine does in
/// between counts for little.
class BestTimes {
public:
    /// Goes once through all blocks.
    template <typename Work>
    void measure(const BlockSet& set, const Work& work) {
        best_.resize(set.blocks.size(), std::numeric_limits<double>::infinity());
        for (std::size_t index = 0; index < best_.size(); ++index) {
            unsigned char* const block = set.blocks[index];
            best_[index] = std::min(best_[index], secondsOf([&] { work(block); }));
        }
    }
    double sum() const { return std::accumulate(best_.begin(), best_.end(), 0.0); }

private:
    std::vector<double> best_;
};

struct Loop {
    const char* name;
    void (*block)(unsigned char* block, char value);
    bool baseline;  ///< of instructions that every x86-64 processor has
    BestTimes times{};
};

struct Phase {
    const char* name;
    bool (*run)(BlockSet& set);
    BestTimes times{};
};

/// One pattern, with the loops that are measured around it on the same content.
struct PatternBench {
    Phase write;
    Phase verify;
    char value;  ///< what the storing loops store
    std::vector<Loop> stores;
    std::vector<Loop> loads;
};

std::vector<Loop> storingLoops() {
    std::vector<Loop> loops{{"16-byte stores, 4 at a time", storeBlock16<4>, true},
                            {"16-byte stores, 8 at a time", storeBlock16<8>, true},
                            {"16-byte stores, 16 at a time", storeBlock16<16>, true}};
    if (__builtin_cpu_supports("avx")) {
        loops.push_back({"32-byte stores", storeBlock32, false});
    }
    return loops;
}

std::vector<Loop> loadingLoops() {
    std::vector<Loop> loops{{"16-byte loads, 4 at a time", loadBlock16<4, 0>, true},
                            {"16-byte loads, 8 at a time", loadBlock16<8, 0>, true},
                            {"16-byte loads, prefetching", loadBlock16<4, 512>, true}};
    if (__builtin_cpu_supports("avx2")) {
        loops.push_back({"32-byte loads", loadBlock32, false});
    }
    return loops;
}

void measure(Loop& loop, const BlockSet& set, char value) {
    loop.times.measure(set, [&](unsigned char* block) { loop.block(block, value); });
}

void measure(Phase& phase, const BlockSet& set) {
    BlockSet one;  // lent a block at a time
    one.blockSize = blockSize;
    bool passed = true;
    phase.times.measure(set, [&](unsigned char* block) {
        one.blocks = {block};
        passed = phase.run(one) && passed;
    });
    one.blocks.clear();
    if (!passed) {
        std::printf("%s failed\n", phase.name);
        std::exit(1);
    }
}

/// A phase and the loops that it is compared with, in turn first and last.
void measureAround(Phase& phase, std::vector<Loop>& loops, const BlockSet& set, char value,
                   bool phaseFirst) {
    if (phaseFirst) {
        measure(phase, set);
    }
    for (Loop& loop : loops) {
        measure(loop, set, value);
    }
    if (!phaseFirst) {
        measure(phase, set);
    }
}

/// A row of two rates, bytes in a second.
void printRow(const char* kernel, double rate, const char* peerName, double peer,
              const char* wanted) {
    char figure[32];
    char peerFigure[64];
    std::snprintf(figure, sizeof figure, "%.1f GB/s", rate / 1e9);
    std::snprintf(peerFigure, sizeof peerFigure, "%s %.1f GB/s", peerName, peer / 1e9);
    printTableRow(kernel, figure, peerFigure, rate / peer, wanted);
}

void print(const Phase& phase, const std::vector<Loop>& loops, double bytes) {
    double best = std::numeric_limits<double>::infinity();
    for (const Loop& loop : loops) {
        const double seconds = loop.times.sum();
        std::printf("      %-30s %7.2f GB/s%s\n", loop.name, bytes / seconds / 1e9,
                    loop.baseline ? "" : "  (not on every processor)");
        best = loop.baseline ? std::min(best, seconds) : best;
    }
    const double seconds = phase.times.sum();
    std::printf("  %-34s %7.2f GB/s, %.3f of the best loop of every processor\n", phase.name,
                bytes / seconds / 1e9, best / seconds);
    printRow((std::string("memory, ") + phase.name).c_str(), bytes / seconds, "best loop",
             bytes / best, "at least 0.95");
}

/// Bytes of the last-level cache that this processor uses; 0 when the kernel does not say.
double lastLevelCache() {
    std::ifstream file("/sys/devices/system/cpu/cpu0/cache/index3/size");
    double kilobytes = 0;
    file >> kilobytes;
    return kilobytes * 1024;
}

std::int32_t blocksOf(double bytes) {
    return static_cast<std::int32_t>((bytes + blockSize - 1) / blockSize);
}

void allocate(BlockSet& set, std::int32_t count) {
    vorn::SetWorkingSet(static_cast<std::size_t>(count) * blockSize);
    if (vorn::AllocateBlocks(set, blockSize, count, true, 0, vorn::noDeadline) !=
        vorn::blocksAllocated) {
        std::printf("memory could not be allocated and locked\n");
        std::exit(1);
    }
}

void comparePhasesWithLoops() {
    const double cache = lastLevelCache();
    const std::int32_t count = blocksOf(std::max(8 * cache, gibibyte / 4));
    const double bytes = static_cast<double>(count) * blockSize;
    BlockSet set;
    allocate(set, count);
    std::printf("Phases against loops, %d blocks of 10 MiB, last-level cache %.0f MiB\n", count,
                cache / 1048576);
    std::vector<PatternBench> patterns{{{"T1_W", vorn::writeAlternatingBytes},
                                        {"T1_V", vorn::verifyAlternatingBytes},
                                        '\x0F',
                                        storingLoops(),
                                        loadingLoops()},
                                       {{"T2_W", vorn::writeSlidingOnes},
                                        {"T2_V", vorn::verifySlidingOnes},
                                        '\x0F',
                                        storingLoops(),
                                        loadingLoops()},
                                       {{"T3_W", vorn::writeZeros},
                                        {"T3_V", vorn::verifyZeros},
                                        '\0',
                                        storingLoops(),
                                        loadingLoops()}};
    constexpr int rounds = 30;
    for (int round = 0; round < rounds; ++round) {
        for (PatternBench& pattern : patterns) {
            measureAround(pattern.write, pattern.stores, set, pattern.value, round % 2 == 0);
            // Whatever stored last, the verification finds its own pattern.
            pattern.write.run(set);
            measureAround(pattern.verify, pattern.loads, set, pattern.value, round % 2 == 0);
        }
    }
    for (const PatternBench& pattern : patterns) {
        print(pattern.write, pattern.stores, bytes);
        print(pattern.verify, pattern.loads, bytes);
    }
}

/// Seconds of the parts of one cycle.
struct Cycle {
    double allocation = 0;
    double phases = 0;
    double release = 0;

    double share() const { return phases / (allocation + phases + release); }
};

Cycle runCycle(std::int32_t count) {
    Cycle cycle;
    BlockSet set;
    cycle.allocation = secondsOf([&] { allocate(set, count); });
    cycle.phases = secondsOf([&] {
        for (const auto phase :
             {vorn::writeAlternatingBytes, vorn::verifyAlternatingBytes, vorn::writeSlidingOnes,
              vorn::verifySlidingOnes, vorn::writeZeros, vorn::verifyZeros}) {
            phase(set);
        }
    });
    cycle.release = secondsOf([&] { vorn::ReleaseBlocks(set); });
    return cycle;
}

/// Prints the cycles as they came and their median share; the seconds of the phases of the best.
double measureCycles() {
    const std::int32_t count = blocksOf(gibibyte);
    const double scale = gibibyte / (static_cast<double>(count) * blockSize);
    std::printf("\nCycles of %d blocks (1 GiB), per GiB\n", count);
    std::vector<double> shares;
    double best = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 9; ++round) {
        const Cycle cycle = runCycle(count);
        std::printf(
            "  allocation and locking %.3f s, six phases %.3f s, release %.3f s: %.2f is testing\n",
            cycle.allocation * scale, cycle.phases * scale, cycle.release * scale, cycle.share());
        shares.push_back(cycle.share());
        best = std::min(best, cycle.phases * scale);
    }
    std::sort(shares.begin(), shares.end());
    std::printf("  median share of testing: %.2f\n", shares[shares.size() / 2]);
    char figure[32];
    std::snprintf(figure, sizeof figure, "%.3f s per GiB", best);
    printTableRow("memory, six phases", figure, "whole cycle of 1 GiB", shares[shares.size() / 2],
                  "at least 0.5");
    return best;
}

/// The output of a command; empty when it cannot be run.
std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string output;
    if (pipe) {
        for (int character = 0; (character = std::fgetc(pipe.get())) != EOF;) {
            output += static_cast<char>(character);
        }
    }
    return output;
}

bool isInstalled(const std::string& program) {
    return !outputOf("command -v " + program).empty();
}

void compareWithMemtester(double rate) {
    if (!isInstalled("memtester")) {
        std::printf("  memtester is not installed\n");
        return;
    }
    // Its first test always runs; the mask of a test that it does not have leaves that alone.
    constexpr double bytes = 256 * 1048576.0;
    const auto secondsWithMask = [](const char* mask) {
        return secondsOf([mask] {
            outputOf(std::string("MEMTESTER_TEST_MASK=") + mask + " memtester 256M 1 2>&1");
        });
    };
    double checkerboard = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 2; ++round) {
        checkerboard =
            std::min(checkerboard, secondsWithMask("0x400") - secondsWithMask("0x20000000"));
    }
    constexpr double passes = 64;  // it writes and compares everything once in each
    const double peer = 2 * passes * bytes / checkerboard;
    std::printf(
        "  memtester, checkerboard            %7.2f GB/s written and verified: ours is %.1f times "
        "that\n",
        peer / 1e9, rate / peer);
    printRow("memory, six phases", rate, "memtester checkerboard", peer, "");
}

void compareWithStressapptest(double rate) {
    if (!isInstalled("stressapptest")) {
        std::printf("  stressapptest is not installed\n");
        return;
    }
    const std::string output =
        outputOf("stressapptest -s 10 -M 512 -m 1 -C 0 --stop_on_errors 2>&1");
    const std::string mark = "Memory Copy: ";
    const std::size_t line = output.find(mark);
    const std::size_t speed = line == std::string::npos ? line : output.find(" at ", line);
    if (speed == std::string::npos) {
        std::printf("  stressapptest gave no rate\n");
        return;
    }
    const double peer = std::strtod(output.c_str() + speed + 4, nullptr) * 1048576;
    std::printf(
        "  stressapptest, one copying thread  %7.2f GB/s read and written: ours is %.1f times "
        "that\n",
        peer / 1e9, rate / peer);
    printRow("memory, six phases", rate, "stressapptest copy", peer, "");
}

}  // namespace

int main() {
    comparePhasesWithLoops();
    const double secondsPerGibibyte = measureCycles();
    // Three writes and three verifications of every byte.
    const double rate = 6 * gibibyte / secondsPerGibibyte;
    std::printf("\nOther testers, one thread each\n");
    std::printf("  six phases                         %7.2f GB/s written and verified\n",
                rate / 1e9);
    compareWithMemtester(rate);
    compareWithStressapptest(rate);
    return 0;
}
