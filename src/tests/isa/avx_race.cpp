#include "tests/isa/avx_race.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

using Array = std::unique_ptr<double[], std::function<void(void*)>>;

Array newArray(const AvxRace& race) {
    void* memory = race.allocate(kernelArraySize * sizeof(double));
    return {static_cast<double*>(memory), race.release};
}

/// A running sum from both ends towards the middle; it carries the rounding of every addition.
void fillMirrored(double* array, double first) {
    double value = first;
    for (std::size_t i = 0; i < kernelArraySize / 2; ++i) {
        array[i] = value;
        array[kernelArraySize - 1 - i] = value;
        value += 0.1;
    }
}

template <typename... Values>
void print(const char* format, Values... values) {
    std::array<char, 1024> text{};  // two doubles of at most 309 digits and the words
    std::snprintf(text.data(), text.size(), format, values...);
    reportStream() << text.data();
}

/// Two sums that are not numbers do not agree either.
bool agree(double reference, double avx) {
    return std::abs(reference - avx) <= 0.001;
}

bool resultsAgree(const KernelResults& results) {
    bool equal = true;
    for (std::size_t slot = 0; slot < results.reference.size(); ++slot) {
        if (!agree(results.reference.at(slot), results.avx.at(slot))) {
            equal = false;
            print("AVX wrong acc%d\n Ref = %.2f Out  = %.2f\n", static_cast<int>(slot) + 1,
                  results.reference.at(slot), results.avx.at(slot));
        }
    }
    return equal;
}

std::int64_t countInMicroseconds(std::int64_t count, std::int64_t frequency) {
    // In floating point, since a counter may run at more than 1 MHz.
    return static_cast<std::int64_t>(static_cast<double>(count) *
                                     (1000000.0 / static_cast<double>(frequency)));
}

/// Seconds that the repetitions take, at a resolution of one microsecond.
double timeKernel(const AvxRace::Kernel& kernel, int times, const double* a, const double* b,
                  KernelSlots& slots) {
    Clock& clock = platform().clock;
    const std::int64_t frequency = clock.performanceFrequency();
    const std::int64_t start = clock.performanceCounter();
    for (int repetition = 0; repetition < times; ++repetition) {
        kernel(a, b, slots);
    }
    const std::int64_t end = clock.performanceCounter();
    return 0.000001 * static_cast<double>(countInMicroseconds(end, frequency) -
                                          countInMicroseconds(start, frequency));
}

}  // namespace

void* AvxRace::allocateAligned(std::size_t bytes) {
    return ::operator new (bytes, std::align_val_t{kernelAlignment}, std::nothrow);
}

void AvxRace::releaseAligned(void* memory) {
    ::operator delete (memory, std::align_val_t{kernelAlignment});
}

bool runAvxRace(const AvxRace& race) {
    Report::console("Testing AVX");
    Array a = newArray(race);
    Array b = newArray(race);
    if (!a || !b) {
        Report::console("Failed AVX Optimise Code compare Test\n");
        return false;
    }
    fillMirrored(a.get(), 0.1);
    fillMirrored(b.get(), 0.2);

    if (!resultsAgree(race.results)) {
        Report::console("AVX 256bit Optimized code does not equal the reference!");
        a.reset();
        b.reset();
        Report::console("Failed AVX Optimise Code compare Test\n");
        return false;
    }
    Report::console("AVX 256bit Optimized code equals the reference!");

    const double referenceTime =
        timeKernel(race.reference, race.times, a.get(), b.get(), race.results.reference);
    print("\nCode with no optimization runs %4.10f seconds\n", referenceTime);
    const double avxTime = timeKernel(race.avx, race.times, a.get(), b.get(), race.results.avx);
    print("Code with 256 bit AVX optimization runs %4.10f seconds\n", avxTime);
    a.reset();
    b.reset();

    if (static_cast<float>(referenceTime) < static_cast<float>(avxTime)) {
        Report::console("Failed AVX Optimise Time compare Test\n");
        return false;
    }
    Report::console("Passed AVX Optimise Time Compare Test\n");
    return true;
}

}  // namespace vorn
