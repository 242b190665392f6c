// The AVX race: the scalar reference kernel against the 256-bit kernel, as many repetitions as the
// test makes, and the ratio of the two times. On real hardware the ratio is at least 3.
#include <algorithm>
#include <cstdio>
#include <limits>

#include "platform/platform.h"
#include "table.h"
#include "tests/isa/avx_race.h"

namespace {

double secondsOf(const vorn::AvxRace::Kernel& kernel, const double* a, const double* b) {
    vorn::Clock& clock = vorn::platform().clock;
    vorn::KernelSlots slots{};
    const std::int64_t start = clock.performanceCounter();
    for (int repetition = 0; repetition < vorn::repetitions; ++repetition) {
        kernel(a, b, slots);
    }
    return static_cast<double>(clock.performanceCounter() - start) /
           static_cast<double>(clock.performanceFrequency());
}

}  // namespace

int main() {
    constexpr std::uint32_t osxsaveAndAvx = 0x18000000;
    vorn::Processor& processor = vorn::platform().processor;
    if ((processor.cpuid(1).ecx & osxsaveAndAvx) != osxsaveAndAvx ||
        (processor.extendedControlRegister0() & 6U) != 6U) {
        std::puts("no AVX here");
        return 0;
    }
    alignas(vorn::kernelAlignment) static double a[vorn::kernelArraySize];
    alignas(vorn::kernelAlignment) static double b[vorn::kernelArraySize];
    for (std::size_t i = 0; i < vorn::kernelArraySize; ++i) {
        a[i] = 0.1 * static_cast<double>(i + 1);
        b[i] = 0.1 * static_cast<double>(i + 2);
    }
    double reference = std::numeric_limits<double>::max();
    double avx = std::numeric_limits<double>::max();
    for (int round = 0; round < 3; ++round) {  // the best of three: the machine is shared
        reference = std::min(reference, secondsOf(vorn::referenceKernel, a, b));
        avx = std::min(avx, secondsOf(vorn::avxKernel, a, b));
    }
    std::printf("AVX race, %d repetitions, best of 3\n", vorn::repetitions);
    std::printf("  reference  %.6f s\n  256-bit    %.6f s\n  ratio      %.2f (bound: at least 3)\n",
                reference, avx, reference / avx);
    char figure[32];
    char peer[64];
    std::snprintf(figure, sizeof figure, "%.3f s", avx);
    std::snprintf(peer, sizeof peer, "scalar reference %.3f s", reference);
    printTableRow("AVX race, 256-bit kernel", figure, peer, reference / avx, "at least 3");
    return 0;
}
