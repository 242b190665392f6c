#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/isa/aes_pclmulqdq.h"
#include "tests/isa/avx_aes_pclmulqdq_test.h"
#include "tests/isa/avx_race.h"

namespace vorn {
namespace {

constexpr std::uint32_t pclmulqdq = 0x2;
constexpr std::uint32_t aes = 0x2000000;
constexpr std::uint32_t osxsave = 0x8000000;
constexpr std::uint32_t avx = 0x10000000;
constexpr std::uint32_t everything = avx | osxsave | aes | pclmulqdq;

bool hostReports(std::uint32_t mask) {
    Processor& host = nativePlatform().processor;
    return (host.cpuid(1).ecx & mask) == mask &&
           ((mask & avx) == 0 || (host.extendedControlRegister0() & 6U) == 6);
}

struct TestRun {
    FakePlatform platform;
    CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code;

    TestRun(std::uint32_t ecx, std::uint64_t xcr0) {
        platform.processor.setFeatures(ecx, 0);
        platform.processor.xcr0 = xcr0;
    }
};

struct Row {
    std::uint32_t ecx;
    const char* failing;  // checks that fail: v, e, p
    const char* names;    // in the verdict
    const char* results;  // in the log
};

TEST(AvxAesPclmulqdqTest, FailsWhereAnyCheckDoesAndNamesTheChecksThatRan) {
    for (const Row& row :
         {Row{everything, "v", "AVX AES PCLMULQDQ ", "FAIL PASS PASS"},
          Row{everything, "ep", "AVX AES PCLMULQDQ ", "PASS FAIL FAIL"},
          Row{osxsave | aes | pclmulqdq, "p", "AES PCLMULQDQ ", "Not Tested PASS FAIL"},
          Row{avx | osxsave | pclmulqdq, "v", "AVX PCLMULQDQ ", "FAIL Not Tested PASS"},
          Row{pclmulqdq, "p", "PCLMULQDQ ", "Not Tested Not Tested FAIL"}}) {
        SCOPED_TRACE(row.names);
        TestRun run(row.ecx, 6);
        const auto check = [&row](char letter) {
            return [&row, letter] { return std::string(row.failing).find(letter) > 2; };
        };
        run.code = testAvxAesPclmulqdqWith({check('v'), check('e'), check('p')}, run.result,
                                           run.record, run.log);
        // A failure of all three stands on the console twice.
        const std::string line = std::string(row.names) + "Testing Failed !!";
        const bool all = row.ecx == everything;
        const std::string end = "complete ---\n\n" + line + "\n" + (all ? line + "\n" : "");
        const std::string console = run.console.text();
        EXPECT_EQ(console.substr(console.size() - end.size()), end);
        std::string log = run.log.substr(run.log.find("AVX Compare Test Result"));
        for (const char* label : {"AVX Compare Test Result --- ", "AES Test Result --- ",
                                  "PCLMULQDQ Test Result --- "}) {
            log.erase(log.find(label), std::strlen(label));
        }
        std::replace(log.begin(), log.end(), '\n', ' ');
        EXPECT_EQ(log, std::string(row.results) + " " + line + "  ");
        EXPECT_EQ(run.record.message,
                  "Fail --- " + std::string(row.names) + "Testing complete ---");
        EXPECT_EQ(run.record.status + "|" + run.record.code, "Fail|Code - Undefined");
        EXPECT_EQ(run.result, VORN_FAIL);
    }
}

/// A block with one bit flipped, bit 0 being the lowest of the low half.
Block flipped(Block block, unsigned bit) {
    (bit < 64 ? block.low : block.high) ^= std::uint64_t{1} << (bit % 64);
    return block;
}

TEST(AesChecks, ReportEverySingleBitFault) {
    const std::vector<std::string> failLines{
        "AES _mm_aesdec instruction failed \n", "AES _mm_aesdeclast instruction failed \n",
        "AES _mm_aesenc instruction failed \n", "AES _mm_aesenclast instruction failed \n",
        "AES _mm_aesimc instruction failed \n", "AES _mm_aeskeygenassist instruction failed \n"};
    std::vector<AesCheck> sound = aesChecks();
    for (AesCheck& check : sound) {
        check.execute = [answer = check.expected] { return answer; };
    }
    int reported = 0;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        for (unsigned bit = 0; bit < 128; ++bit) {
            std::vector<AesCheck> faulty = sound;
            faulty[i].execute = [&faulty, i, bit] { return flipped(faulty[i].expected, bit); };
            TestRun run(aes, 0);
            testAvxAesPclmulqdqWith({nullptr, [&faulty] { return runAesChecks(faulty); }, nullptr},
                                    run.result, run.record, run.log);
            const std::string text = run.console.text();
            const bool seen =
                text.find(failLines[i]) != std::string::npos &&
                text.find(sound[i].passed) == std::string::npos &&
                text.find("\nFailed AES Test\n\nAES Testing Failed !!\n") != std::string::npos &&
                run.log.find("AES Test Result --- FAIL\n") != std::string::npos &&
                run.result == VORN_FAIL;
            EXPECT_TRUE(seen) << failLines[i] << bit;
            EXPECT_EQ(text.find("Passed \n") == std::string::npos, false);
            reported += seen ? 1 : 0;
        }
    }
    EXPECT_EQ(reported, 6 * 128);
}

TEST(CarrylessChecks, ShowWhatAWrongProductWas) {
    std::vector<CarrylessCheck> checks = carrylessChecks();
    int reported = 0;
    for (std::size_t i = 0; i < checks.size(); ++i) {
        for (unsigned bit = 0; bit < 64; ++bit) {
            const auto product = static_cast<std::int64_t>(
                static_cast<std::uint64_t>(checks[i].expected) ^ (std::uint64_t{1} << bit));
            std::vector<CarrylessCheck> faulty = checks;
            for (CarrylessCheck& check : faulty) {
                check.execute = [answer = check.expected] { return answer; };
            }
            faulty[i].execute = [product] { return product; };
            const CapturedConsole console;
            EXPECT_FALSE(runCarrylessChecks(faulty));
            const std::string failure =
                std::string("PCLMULQDQ Carry less test failed\n") +
                (i == 0 ? "2 times 25 without carry using immediate 0x11 = 50\n"
                        : "-1284 times 65535 without carry using immediate 0x00 = 50419284\n") +
                "Result = " + std::to_string(product) + "\n";
            const char* first = "PCLMULQDQ Test1 using _mm_clmulepi64 instruction Passed \n";
            const char* second = "PCLMULQDQ Test2 using _mm_clmulepi64 instruction Passed \n";
            const std::string expected = "Testing PCLMULQDQ\n" + (i == 0 ? failure : first) +
                                         (i == 1 ? failure : second) + "Failed PCLMULQDQ Test\n\n";
            EXPECT_EQ(console.text(), expected);
            reported += console.text() == expected ? 1 : 0;
        }
    }
    EXPECT_EQ(reported, 2 * 64);
}

/// A race between kernels that write given sums and take given time, on a simulated clock.
class AvxRaceTest : public testing::Test {
protected:
    AvxRace race(int times = 10) {
        const auto kernel = [this](const KernelSlots& sums, const std::int64_t& nanoseconds) {
            return
                [this, &sums, &nanoseconds](const double* a, const double* b, KernelSlots& slots) {
                    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a) % 32, 0U);
                    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(b) % 32, 0U);
                    seenA_.assign(a, a + kernelArraySize);
                    seenB_.assign(b, b + kernelArraySize);
                    ++calls_;
                    slots = sums;
                    platform_.clock.nowNanoseconds += nanoseconds;
                };
        };
        AvxRace race{results_, kernel(referenceSums_, referenceTime_), kernel(avxSums_, avxTime_),
                     times};
        race.allocate = [this](std::size_t bytes) -> void* {
            EXPECT_EQ(bytes, 1024 * sizeof(double));
            if (allocations_-- == 0) {
                return nullptr;
            }
            return *held_.insert(AvxRace::allocateAligned(bytes)).first;
        };
        race.release = [this](void* memory) {
            EXPECT_EQ(held_.erase(memory), 1U);
            AvxRace::releaseAligned(memory);
        };
        return race;
    }

    std::string run(bool expected, int times = 10) {
        console_.clear();
        EXPECT_EQ(runAvxRace(race(times)), expected);
        EXPECT_TRUE(held_.empty());
        return console_.text();
    }

    FakePlatform platform_;
    CapturedConsole console_;
    KernelResults results_;
    KernelSlots referenceSums_{2.5, 3.5};
    KernelSlots avxSums_{2.5, 3.5};
    std::int64_t referenceTime_ = 3000;
    std::int64_t avxTime_ = 1000;
    std::vector<double> seenA_;
    std::vector<double> seenB_;
    int calls_ = 0;
    int allocations_ = -1;
    std::set<void*> held_;
};

const std::string equalLines = "Testing AVX\nAVX 256bit Optimized code equals the reference!\n";
const std::string unequalEnd =
    "AVX 256bit Optimized code does not equal the reference!\n"
    "Failed AVX Optimise Code compare Test\n\n";

std::string timeLines(const std::string& reference, const std::string& avxTime) {
    return "\nCode with no optimization runs " + reference +
           " seconds\nCode with 256 bit AVX optimization runs " + avxTime + " seconds\n";
}

TEST_F(AvxRaceTest, ComparesWhatThePreviousRaceLeftAndThenKeepsTheMismatch) {
    referenceSums_ = {100.5, 7};
    avxSums_ = {100.25, 7};
    EXPECT_EQ(run(true), equalLines + timeLines("0.0000300000", "0.0000100000") +
                             "Passed AVX Optimise Time Compare Test\n\n");
    EXPECT_EQ(calls_, 20);
    avxSums_ = referenceSums_;  // too late: the check comes before the runs
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(run(false),
                  "Testing AVX\nAVX wrong acc1\n Ref = 100.50 Out  = 100.25\n" + unequalEnd);
    }
    EXPECT_EQ(calls_, 20);
}

TEST_F(AvxRaceTest, AllowsSumsToDifferByAThousandth) {
    struct Case {
        double first;   // reference slot 0 minus AVX slot 0
        double second;  // the same of the slots 1
        std::string console;
    };
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Case> cases{
        {0.001, -0.001, ""},
        {0.00101, 0, "AVX wrong acc1\n Ref = 0.00 Out  = 0.00\n"},
        {0, -0.00101, "AVX wrong acc2\n Ref = -0.00 Out  = 0.00\n"},
        {-2, 1,
         "AVX wrong acc1\n Ref = -2.00 Out  = 0.00\nAVX wrong acc2\n Ref = 1.00 Out  = 0.00\n"},
        {0, notANumber, "AVX wrong acc2\n Ref = nan Out  = 0.00\n"},
    };
    for (const Case& row : cases) {
        results_.reference = {row.first, row.second};
        results_.avx = {0, 0};
        const bool equal = row.console.empty();
        const std::string expected =
            equal ? equalLines : "Testing AVX\n" + row.console + unequalEnd;
        EXPECT_EQ(run(equal).substr(0, expected.size()), expected);
    }
}

TEST_F(AvxRaceTest, FailsOnlyWhenTheReferenceIsStrictlyFaster) {
    avxTime_ = referenceTime_;
    run(true);
    avxTime_ = referenceTime_ + 100;  // one microsecond in ten repetitions
    EXPECT_EQ(run(false), equalLines + timeLines("0.0000300000", "0.0000310000") +
                              "Failed AVX Optimise Time compare Test\n\n");
    // Single precision does not tell these two apart.
    referenceTime_ = 20000000000;
    avxTime_ = 20000000100;
    EXPECT_EQ(run(true).substr(equalLines.size()), timeLines("200.0000000000", "200.0000010000") +
                                                       "Passed AVX Optimise Time Compare Test\n\n");
}

TEST_F(AvxRaceTest, TruncatesBothEndPointsToMicroseconds) {
    for (const std::int64_t frequency : {10000000, 1000000000}) {
        platform_.clock.frequency = frequency;
        platform_.clock.nowNanoseconds = 900;
        referenceTime_ = 1200;  // 0.9 to 2.1 us: two whole microseconds pass
        avxTime_ = 800;         // 2.1 to 2.9 us: none does
        EXPECT_EQ(run(true, 1), equalLines + timeLines("0.0000020000", "0.0000000000") +
                                    "Passed AVX Optimise Time Compare Test\n\n");
    }
}

TEST_F(AvxRaceTest, FailsWithoutMemoryAndGivesBackWhatItHas) {
    for (const int successes : {0, 1}) {
        allocations_ = successes;
        EXPECT_EQ(run(false), "Testing AVX\nFailed AVX Optimise Code compare Test\n\n");
    }
    EXPECT_EQ(calls_, 0);
}

TEST_F(AvxRaceTest, FillsTheArraysFromBothEndsByRunningSums) {
    run(true, 1);
    double a = 0.1;
    double b = 0.2;
    for (std::size_t i = 0; i < 512; ++i) {
        EXPECT_EQ(seenA_[i], a);
        EXPECT_EQ(seenB_[i], b);
        EXPECT_EQ(seenA_[1023 - i], a);
        EXPECT_EQ(seenB_[1023 - i], b);
        a += 0.1;
        b += 0.1;
    }
    EXPECT_NE(seenA_[511], 51.2) << "multiplied, not added up";
}

/// Numbers whose products and sums are exact, so that order does not matter, without symmetry.
struct KernelOperands {
    alignas(kernelAlignment) double a[kernelArraySize];
    alignas(kernelAlignment) double b[kernelArraySize];
    double ascending = 0;
    double descending = 0;

    KernelOperands() {
        for (std::size_t i = 0; i < kernelArraySize; ++i) {
            a[i] = static_cast<double>((i * i + 3 * i) % 1009);
            b[i] = static_cast<double>((i * 37) % 101) - 20;
        }
        for (std::size_t i = 0; i < kernelArraySize / 2; ++i) {
            ascending += b[i] * a[i];
            descending += b[i] * a[kernelArraySize - 1 - i];
        }
    }
};

TEST(AvxKernels, SumInOppositeSlots) {
    const KernelOperands operands;
    ASSERT_NE(operands.ascending, operands.descending);
    KernelSlots slots{-1, -1};
    referenceKernel(operands.a, operands.b, slots);
    EXPECT_EQ(slots, (KernelSlots{operands.descending, operands.ascending}));
    if (!hostReports(avx | osxsave)) {
        GTEST_SKIP() << "this processor or its system lacks AVX";
    }
    slots = {-1, -1};
    avxKernel(operands.a, operands.b, slots);
    EXPECT_EQ(slots, (KernelSlots{operands.ascending, operands.descending}));
}

TEST(AvxKernels, AgreeOnTheArraysOfTheRace) {
    if (!hostReports(avx | osxsave)) {
        GTEST_SKIP() << "this processor or its system lacks AVX";
    }
    FakePlatform platform;
    CapturedConsole console;
    KernelResults results;
    AvxRace race{results};
    race.times = 2;
    EXPECT_TRUE(runAvxRace(race));
    EXPECT_GT(results.reference[0], 400000);
    EXPECT_NE(results.reference, KernelSlots{});
    console.clear();
    EXPECT_TRUE(runAvxRace(race));
    EXPECT_EQ(console.text().substr(0, equalLines.size()), equalLines);
}

}  // namespace
}  // namespace vorn
