// The prime number generation test: a sieve that goes through 40 MB of flags, checked by trial
// division.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// One flag for each number below primeSieveSize; nonzero for a prime.
using PrimeFlags = std::vector<std::int32_t>;

inline constexpr std::int32_t primeSieveSize = 10000000;
inline constexpr int primeCandidates = 10000;  ///< drawn in each cycle

/// Clears the flags of the composite numbers among flags that are all set. Those of 0 and 1 stay.
void sievePrimes(PrimeFlags& flags);

/// Whether the flags call the candidate prime and a number from 2 to its root divides it. False for
/// a candidate that has no flag.
bool isDisproved(const PrimeFlags& flags, std::int32_t candidate);

/// Draws primeCandidates numbers from std::rand(), whose sequence it continues, and divides those
/// that the flags call prime. Returns how many of them have a divisor.
int countDisprovedPrimes(const PrimeFlags& flags);

/// Fills the flags of a cycle.
using PrimeSieve = void (*)(PrimeFlags& flags);

/// Runs cycles, each with a sieve of its own, for this many seconds, and for two at least; with
/// `stopOnError` only until the first cycle with an error. Keeps a status line on the report
/// stream, and leaves the stream's precision at 16 once it has written one. Returns the number of
/// disproved candidates. Raises std::bad_alloc when there is no memory for a sieve.
int runPrimeNumbers(int seconds, bool stopOnError, PrimeSieve sieve = sievePrimes);

/// The test function of the catalogue. Raises what integerOf() raises for its timer, and what
/// runPrimeNumbers() raises.
std::string testPrimeNumber(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log);

/// The same with another sieve, which stands for a processor that computes wrongly.
std::string testPrimeNumberWith(PrimeSieve sieve, VORNTestResult& result, const Settings& settings,
                                TestRecord& record, std::string& log);

}  // namespace vorn
