#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/compute/prime_number_test.h"

namespace vorn {
namespace {

const std::string head = "Ops Per Sec       CycleRun     CycleVerified     Error       Time(sec)\n";

/// The flags of a correct sieve.
const PrimeFlags& sieved() {
    static const PrimeFlags flags = [] {
        PrimeFlags all(primeSieveSize, 1);
        sievePrimes(all);
        return all;
    }();
    return flags;
}

/// What is known of the primes below the sieve's size, against the flags: how many facts differ.
/// Counts and largest primes as published (OEIS A006880, A003618).
int differences(const PrimeFlags& flags) {
    int count = 0;
    const auto primesBelow = [&](std::ptrdiff_t limit) {
        return std::count_if(flags.begin() + 2, flags.begin() + limit,
                             [](std::int32_t flag) { return flag != 0; });
    };
    count += primesBelow(100) != 25;
    count += primesBelow(1000000) != 78498;
    count += primesBelow(primeSieveSize) != 664579;
    for (const std::size_t prime : {2U, 3U, 5U, 7919U, 65537U, 999983U, 9999973U, 9999991U}) {
        count += flags[prime] == 0;
    }
    for (const std::size_t composite : {4U, 9U, 561U, 32767U, 9840769U, 9998243U, 9999999U}) {
        count += flags[composite] != 0;
    }
    return count;
}

TEST(SievePrimes, AgreesWithWhatIsKnownOfPrimes) {
    EXPECT_EQ(differences(sieved()), 0);
    EXPECT_EQ(sieved()[0], 1) << "never cleared";
    EXPECT_EQ(sieved()[1], 1) << "never cleared";
    for (const std::size_t wrong : {6U, 104729U, 9840769U, 9999991U}) {
        PrimeFlags flags = sieved();
        flags[wrong] = flags[wrong] == 0 ? 1 : 0;
        EXPECT_GT(differences(flags), 0) << "flag " << wrong;
    }
}

TEST(CountDisprovedPrimes, DividesExactlyTheCandidatesThatAreFlagged) {
    std::srand(7);
    EXPECT_EQ(countDisprovedPrimes(sieved()), 0);
    const int next = std::rand();

    std::srand(7);
    int composites = 0;
    int firstComposite = 0;
    for (int draw = 0; draw < primeCandidates; ++draw) {
        const int candidate = std::rand() % primeSieveSize + 1;
        if (candidate < primeSieveSize && sieved()[static_cast<std::size_t>(candidate)] == 0) {
            ++composites;
            firstComposite = firstComposite == 0 ? candidate : firstComposite;
        }
    }
    EXPECT_EQ(next, std::rand()) << "one draw for each candidate, no seeding";

    std::srand(7);
    EXPECT_EQ(countDisprovedPrimes(PrimeFlags(primeSieveSize, 1)), composites);
    PrimeFlags kept = sieved();
    kept[static_cast<std::size_t>(firstComposite)] = 1;
    std::srand(7);
    EXPECT_GE(countDisprovedPrimes(kept), 1) << firstComposite;
}

TEST(IsDisproved, TriesDivisorsUpToTheRootOfFlaggedCandidates) {
    PrimeFlags flags(primeSieveSize, 1);
    for (const std::int32_t candidate : {4, 9, 6, 9840769, 9999999}) {
        EXPECT_TRUE(isDisproved(flags, candidate)) << candidate;
        flags[static_cast<std::size_t>(candidate)] = 0;
        EXPECT_FALSE(isDisproved(flags, candidate)) << candidate;
    }
    for (const std::int32_t candidate : {1, 2, 3, 9999991, primeSieveSize}) {
        EXPECT_FALSE(isDisproved(flags, candidate)) << candidate;
    }
}

void callNothingPrime(PrimeFlags& flags) {
    std::fill(flags.begin(), flags.end(), 0);
}

void callEverythingPrime(PrimeFlags& /*flags*/) {}

TEST(RunPrimeNumbers, ReportsOnceASecondAndStopsAfterTwoAtLeast) {
    struct Row {
        int seconds;
        double secondsPerCycle;
        const char* status;
    };
    for (const Row& row :
         {Row{1, 0.4,
              "\r1329158              2              2            0              1    \b    "
              "\r1329158              4              4            0              2    \b    "},
          Row{3, 3,
              "\r221526.3333333333              1              1            0              3"
              "    \b    "}}) {
        FakePlatform platform;
        const CapturedConsole console;
        platform.clock.nanosecondsPerLook = static_cast<std::int64_t>(row.secondsPerCycle * 1e9);
        EXPECT_EQ(runPrimeNumbers(row.seconds, true, callNothingPrime), 0);
        EXPECT_EQ(console.text(), head + row.status);
        EXPECT_EQ(reportStream().precision(), 16);
    }
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = 1000000000;
    std::srand(7);
    const int errors = runPrimeNumbers(0, true, callEverythingPrime);
    std::srand(7);
    EXPECT_GT(runPrimeNumbers(0, false, callEverythingPrime), errors + 1000);
}

struct Ran {
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code = "nothing returned";
};

TEST(PrimeNumberTest, PassesWithItsRateAndFailsOnADisprovedPrime) {
    FakePlatform platform;
    platform.clock.nanosecondsPerLook = 3000000000;
    Settings settings;
    settings.primeNumGenTimer = "3";
    {
        const CapturedConsole console;
        Ran ran;
        ran.code = testPrimeNumber(ran.result, settings, ran.record, ran.log);
        EXPECT_EQ(console.text(),
                  "\n --- Running Prime Number Generation Test ---\n\n"
                  "Ops Per Sec       CycleRun     CycleVerified     Error       Time(sec)\n"
                  "\r221526.3333333333              1              1            0              3"
                  "    \b    \n"
                  "Operation Per Second -->221526.3333333333\n"
                  "Error -->0\n"
                  "Prime Number Generation Test Pass---\n");
        EXPECT_EQ(ran.log,
                  "\n --- Running Prime Number Generation Test --- \n\n"
                  "\nOperation Per Second-->221526.333333\n"
                  "Prime Number Generation Test Pass ---\n");
        EXPECT_EQ(ran.result, VORN_PASS);
        EXPECT_EQ(ran.code, "");
        EXPECT_EQ(ran.record.name, "Prime Number Generation test");
        EXPECT_EQ(ran.record.version, "1.0.0.0");
        EXPECT_EQ(ran.record.status, "Pass");
        EXPECT_EQ(ran.record.message,
                  "Prime Number Generation Test Pass with Operation Per Second =221526.333333");
    }
    // No second passes: no status line, the former rate, the stream's own precision.
    platform.clock.nanosecondsPerLook = 0;
    const CapturedConsole console;
    Ran ran;
    std::srand(7);
    const int errors = countDisprovedPrimes(PrimeFlags(primeSieveSize, 1));
    std::srand(7);
    ran.code = testPrimeNumberWith(callEverythingPrime, ran.result, settings, ran.record, ran.log);
    EXPECT_EQ(console.text(),
              "\n --- Running Prime Number Generation Test ---\n\n"
              "Ops Per Sec       CycleRun     CycleVerified     Error       Time(sec)\n"
              "\nOperation Per Second -->221526\n"
              "Error -->" +
                  std::to_string(errors) +
                  "\n\n!!! ---  Prime Number Generation Test Fail --- !!!\n");
    EXPECT_EQ(ran.log,
              "\n --- Running Prime Number Generation Test --- \n\n"
              "\nOperation Per Second-->221526.333333\n"
              "\n!!! ---  Prime Number Generation Test Fail --- !!!\n");
    EXPECT_EQ(ran.result, VORN_FAIL);
    EXPECT_EQ(ran.code, "00-009-009");
    EXPECT_EQ(ran.record.status, "Fail");
    EXPECT_EQ(ran.record.message, "Prime Number Generation Test Fail");
}

TEST(PrimeNumberTest, RaisesForATimerThatIsNoNumberBeforeAnyCycle) {
    FakePlatform platform;
    const CapturedConsole console;
    Ran ran;
    Settings settings;
    settings.primeNumGenTimer = "soon";
    EXPECT_THROW(testPrimeNumber(ran.result, settings, ran.record, ran.log), std::invalid_argument);
    EXPECT_EQ(console.text(), "\n --- Running Prime Number Generation Test ---\n\n");
    EXPECT_EQ(ran.record.status, "");
}

}  // namespace
}  // namespace vorn
