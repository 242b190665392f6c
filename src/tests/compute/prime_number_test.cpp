#include "tests/compute/prime_number_test.h"

#include <cstdlib>

#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

constexpr double primesBelowSieveSize = 664579;
constexpr int statusPrecision = 16;

/// Operations a second, as last measured.
double& lastRate() {
    static double rate = 0;
    return rate;
}

/// Whether a number from 2 to its root divides this one.
bool hasDivisor(std::int32_t number) {
    for (std::int32_t divisor = 2; divisor * divisor <= number; ++divisor) {
        if (number % divisor == 0) {
            return true;
        }
    }
    return false;
}

void showStatus(double rate, int cycle, int errors, std::int64_t seconds) {
    reportStream() << "\r";
    reportStream().precision(statusPrecision);
    reportStream() << rate << std::string(14, ' ') << cycle << std::string(14, ' ') << cycle
                   << std::string(12, ' ') << errors << std::string(14, ' ') << seconds
                   << "    \b    " << std::flush;
}

}  // namespace

void sievePrimes(PrimeFlags& flags) {
    for (std::int32_t number = 2; number * number < primeSieveSize; ++number) {
        if (flags[static_cast<std::size_t>(number)] == 0) {
            continue;
        }
        for (std::int32_t multiple = 2 * number; multiple < primeSieveSize; multiple += number) {
            flags[static_cast<std::size_t>(multiple)] = 0;
        }
    }
}

bool isDisproved(const PrimeFlags& flags, std::int32_t candidate) {
    // One past the last flag can be drawn where the generator's range goes that far.
    return candidate < primeSieveSize && flags[static_cast<std::size_t>(candidate)] != 0 &&
           hasDivisor(candidate);
}

int countDisprovedPrimes(const PrimeFlags& flags) {
    int disproved = 0;
    for (int count = 0; count < primeCandidates; ++count) {
        // Never seeded, on purpose: the candidates continue the sequence of the process.
        const int drawn = std::rand();  // NOLINT(cert-msc30-c,cert-msc50-cpp)
        const std::int32_t candidate = drawn % primeSieveSize + 1;
        if (isDisproved(flags, candidate)) {
            ++disproved;
        }
    }
    return disproved;
}

int runPrimeNumbers(int seconds, bool stopOnError, PrimeSieve sieve) {
    Clock& clock = platform().clock;
    const std::int64_t start = clock.wallSeconds();
    reportStream() << "Ops Per Sec       CycleRun     CycleVerified     Error       Time(sec)\n"
                   << std::flush;
    double operations = 0;
    std::int64_t reported = 0;
    int errors = 0;
    for (int cycle = 1;; ++cycle) {
        PrimeFlags flags(primeSieveSize, 1);
        sieve(flags);
        errors += countDisprovedPrimes(flags);
        operations += primesBelowSieveSize;
        const std::int64_t elapsed = clock.wallSeconds() - start;
        if (elapsed > reported) {
            lastRate() = operations / static_cast<double>(elapsed - reported);
            operations = 0;
            showStatus(lastRate(), cycle, errors, elapsed);
            reported = elapsed;
        }
        if ((elapsed > 1 && elapsed >= seconds) || (errors > 0 && stopOnError)) {
            return errors;
        }
    }
}

std::string testPrimeNumberWith(PrimeSieve sieve, VORNTestResult& result, const Settings& settings,
                                TestRecord& record, std::string& log) {
    record.name = "Prime Number Generation test";
    record.version = "1.0.0.0";
    Report report(log);
    report.console();
    report.line(" --- Running Prime Number Generation Test ---",
                "\n --- Running Prime Number Generation Test --- \n\n");
    report.console();

    const int seconds = integerOf(settings, &Settings::primeNumGenTimer);
    const int errors = runPrimeNumbers(seconds, true, sieve);
    const std::string rate = std::to_string(lastRate());
    report.console();
    report.console("Operation Per Second -->", lastRate());
    report.console("Error -->", errors);
    report.log("\nOperation Per Second-->", rate, "\n");

    if (errors == 0) {
        report.line("Prime Number Generation Test Pass---",
                    "Prime Number Generation Test Pass ---\n");
        Report::conclude(
            result, record,
            {"Pass", "", "Prime Number Generation Test Pass with Operation Per Second =" + rate,
             VORN_PASS});
    } else {
        report.console();
        report.line("!!! ---  Prime Number Generation Test Fail --- !!!",
                    "\n!!! ---  Prime Number Generation Test Fail --- !!!\n");
        Report::conclude(result, record,
                         {"Fail", "00-009-009", "Prime Number Generation Test Fail", VORN_FAIL});
    }
    return record.code;
}

std::string testPrimeNumber(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log) {
    return testPrimeNumberWith(sievePrimes, result, settings, record, log);
}

}  // namespace vorn
