#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/cpu/cpu_frequency_test.h"

namespace vorn {
namespace {

// Where the spinner stands is the process's: it goes on from there over both measurements.
TEST(MeasureCpuFrequency, TurnsTheSpinnerOnWithEverySecondOfTicks) {
    FakePlatform platform;
    platform.clock.nanosecondsPerLook = 250000000;
    const CapturedConsole console;
    measureCpuFrequency();
    measureCpuFrequency();
    EXPECT_TRUE(platform.clock.sleeps.empty());
    const std::string turns = "-\\|/";
    const std::string drawn = console.text();
    ASSERT_EQ(drawn.size(), 40U);
    std::size_t index = turns.find(drawn[1]);
    for (std::size_t turn = 0; turn < 20; ++turn, ++index) {
        EXPECT_EQ(drawn.substr(2 * turn, 2), std::string("\b") + turns[index % 4]);
    }
}

// Long: ten seconds of this machine's own time. The figure to compare with is the rate of the
// time-stamp counter by the operating system's monotonic clock over a sleep, which is the system's
// own calibration and shares neither the waiting nor the process clock with the measurement.
TEST(MeasureCpuFrequency, DISABLED_AgreesOnThisMachineWithTheSystemsCalibration) {
    const CapturedConsole console;
    const double measured = measureCpuFrequency();
    Processor& processor = nativePlatform().processor;
    const auto start = std::chrono::steady_clock::now();
    const std::uint64_t first = processor.timestampCounter();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const auto ticks = static_cast<double>(processor.timestampCounter() - first);
    const std::chrono::duration<double, std::nano> elapsed =
        std::chrono::steady_clock::now() - start;
    const double calibrated = ticks / elapsed.count();
    RecordProperty("measured", std::to_string(measured));
    RecordProperty("calibrated", std::to_string(calibrated));
    if (console.text().find('\b') == std::string::npos) {
        GTEST_SKIP() << "not measured by ticks: " << measured << " GHz";
    }
    EXPECT_NEAR(measured / calibrated, 1.0, 0.02) << measured << " by " << calibrated;
}

}  // namespace
}  // namespace vorn
