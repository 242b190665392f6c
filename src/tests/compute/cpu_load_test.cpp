#include "tests/compute/cpu_load_test.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"
#include "tests/common/temperature.h"

namespace vorn {

namespace {

constexpr std::int32_t leastThreads = 2;
constexpr double secondsBetweenSamples = 5.0;

double secondsBetween(std::int64_t earlier, std::int64_t later, std::int64_t frequency) {
    return static_cast<double>(later - earlier) / static_cast<double>(frequency);
}

/// The reading is part of the load: nobody looks at it or at its text.
void sampleTemperature() {
    std::string text;
    readTemperatureMargin(text);
}

}  // namespace

MultiMath::MultiMath(std::int32_t seconds, std::int32_t index, bool monitor, std::int32_t parameter)
    : seconds_(seconds), index_(index), monitor_(monitor), parameter_(parameter) {}

std::unique_ptr<Task> MultiMath::execute() {
    Clock& clock = platform().clock;
    const std::int64_t start = clock.performanceCounter();
    std::int64_t lastSample = start;
    std::int64_t now = start;
    std::int64_t frequency = clock.performanceFrequency();
    while (secondsBetween(start, now, frequency) < seconds_) {
        now = clock.performanceCounter();
        frequency = clock.performanceFrequency();
        if (monitor_ && secondsBetween(lastSample, now, frequency) > secondsBetweenSamples) {
            lastSample = now;
            ++sampleOccasions_;
            if (index_ == 0) {
                sampleTemperature();
            }
        }
    }
    return nullptr;
}

std::int32_t loadSeconds(const std::string& minutes, std::int64_t startCount, std::int64_t now,
                         std::int64_t frequency) {
    const std::int64_t seconds =
        std::int64_t{leadingInteger(minutes)} * 60 - (now - startCount) / frequency;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(seconds, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max()));
}

void runCpuLoad(std::int32_t threads, const std::string& minutes, std::int64_t startCount,
                bool monitor, std::int32_t parameter) {
    const std::int32_t count = std::max(leastThreads, threads);
    TaskScheduler scheduler(count);
    Report::console("Executing CPU Load ... ");
    Clock& clock = platform().clock;
    const std::int64_t now = clock.performanceCounter();
    const std::int32_t seconds =
        loadSeconds(minutes, startCount, now, clock.performanceFrequency());

    std::vector<std::shared_ptr<RootTask>> roots;
    for (std::int32_t index = 0; index < count; ++index) {
        roots.push_back(std::make_shared<RootTask>(2));  // itself and its one child
        scheduler.spawn(roots.back(),
                        std::make_unique<MultiMath>(seconds, index, monitor, parameter));
    }
    for (std::shared_ptr<RootTask>& root : roots) {
        scheduler.waitForAll(*root);
        root.reset();
    }
}

std::string testCpuLoad(VORNTestResult& result, const Settings& settings, TestRecord& record,
                        std::string& log, std::int64_t startCount, bool monitor) {
    record.name = "Simple CPU Load";
    record.version = "V1";
    Report report(log);
    report.console();
    report.line(" --- CPU Load ---", "\n --- CPU Load --- \n\n");
    report.console();

    const std::int32_t threads = std::max(leastThreads, leadingInteger(settings.stressLoadLevel));
    // The log keeps the configured text, also where it is not what runs.
    report.line(textOf(" --- Load Level =", threads),
                "\n --- Load Level =" + settings.stressLoadLevel + "\n");
    report.console();
    runCpuLoad(threads, settings.stressTestTime, startCount, monitor,
               leadingInteger(settings.multiProcStressLoad));

    report.line("CPU Load Passed!!!", "\nCPU Load Passed!!!\n\n");
    Report::conclude(result, record, {"Pass", "Code 123", "CPU Load Passed!!!", VORN_PASS});
    return record.code;
}

}  // namespace vorn
