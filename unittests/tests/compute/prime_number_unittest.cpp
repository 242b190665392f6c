#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "report/text.h"
#include "tests/compute/prime_number_test.h"

namespace vorn {
namespace {

/// The flags of a correct sieve.
const PrimeFlags& sieved() {
    static const PrimeFlags flags = [] {
        PrimeFlags all(primeSieveSize, 1);
        sievePrimes(all);
        return all;
    }();
    return flags;
}

// Counts and largest primes as published (OEIS A006880, A003618).
TEST(SievePrimes, AgreesWithWhatIsKnownOfPrimes) {
    for (const auto& [limit, primes] :
         {std::pair(100, 25), {1000000, 78498}, {primeSieveSize, 664579}}) {
        EXPECT_EQ(limit - 2 - std::count(sieved().begin() + 2, sieved().begin() + limit, 0),
                  primes);
    }
    // Those of 0 and 1 are never cleared.
    for (const std::size_t set : {0U, 1U, 2U, 3U, 5U, 7919U, 65537U, 999983U, 9999973U, 9999991U}) {
        EXPECT_EQ(sieved()[set], 1) << set;
    }
    for (const std::size_t composite : {4U, 9U, 561U, 32767U, 9840769U, 9998243U, 9999999U}) {
        EXPECT_EQ(sieved()[composite], 0) << composite;
    }
}

TEST(CountDisprovedPrimes, DividesExactlyTheCandidatesThatAreFlagged) {
    std::srand(7);
    EXPECT_EQ(countDisprovedPrimes(sieved()), 0);
    const int next = std::rand();

    std::srand(7);
    int composites = 0;
    for (int draw = 0; draw < primeCandidates; ++draw) {
        const int candidate = std::rand() % primeSieveSize + 1;
        if (candidate < primeSieveSize && sieved()[static_cast<std::size_t>(candidate)] == 0) {
            ++composites;
        }
    }
    EXPECT_EQ(next, std::rand()) << "one draw for each candidate, no seeding";

    std::srand(7);
    EXPECT_EQ(countDisprovedPrimes(PrimeFlags(primeSieveSize, 1)), composites);
}

TEST(IsDisproved, TriesDivisorsUpToTheRootOfFlaggedCandidates) {
    PrimeFlags flags(primeSieveSize + 1, 1);
    for (const std::int32_t candidate : {4, 9, 6, 9840769, 9999999}) {
        EXPECT_TRUE(isDisproved(flags, candidate)) << candidate;
        flags[static_cast<std::size_t>(candidate)] = 0;
        EXPECT_FALSE(isDisproved(flags, candidate)) << candidate;
    }
    for (const std::int32_t candidate : {1, 2, 3, 9999991, primeSieveSize}) {
        EXPECT_FALSE(isDisproved(flags, candidate)) << candidate;
    }
}

void callEverythingPrime(PrimeFlags& /*flags*/) {}

TEST(RunPrimeNumbers, GoesOnAfterAnErrorWhenNotToldToStop) {
    FakePlatform platform;
    const CapturedConsole console;
    platform.clock.nanosecondsPerLook = 1000000000;
    std::srand(7);
    const int errors = runPrimeNumbers(0, true, callEverythingPrime);
    std::srand(7);
    EXPECT_GT(runPrimeNumbers(0, false, callEverythingPrime), errors + 1000);
}

// No second passes: no status line, the former rate, the stream's own precision.
TEST(PrimeNumberTest, FailsOnADisprovedPrime) {
    FakePlatform platform;
    Settings settings;
    settings.primeNumGenTimer = "3";
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    platform.clock.nanosecondsPerLook = 3000000000;
    {
        const CapturedConsole former;
        testPrimeNumber(result, settings, record, log);
    }
    platform.clock.nanosecondsPerLook = 0;
    std::srand(7);
    const int errors = countDisprovedPrimes(PrimeFlags(primeSieveSize, 1));
    std::srand(7);
    const CapturedConsole console;
    log.clear();
    testPrimeNumberWith(callEverythingPrime, result, settings, record, log);
    EXPECT_EQ(console.text(),
              textOf("\n --- Running Prime Number Generation Test ---\n\n"
                     "Ops Per Sec       CycleRun     CycleVerified     Error       Time(sec)\n"
                     "\nOperation Per Second -->221526\n"
                     "Error -->",
                     errors, "\n\n!!! ---  Prime Number Generation Test Fail --- !!!\n"));
    EXPECT_EQ(log,
              "\n --- Running Prime Number Generation Test --- \n\n"
              "\nOperation Per Second-->221526.333333\n"
              "\n!!! ---  Prime Number Generation Test Fail --- !!!\n");
    EXPECT_EQ(textOf(result, "|", record.status, "|", record.code, "|", record.message),
              "1|Fail|00-009-009|Prime Number Generation Test Fail");
}

}  // namespace
}  // namespace vorn
