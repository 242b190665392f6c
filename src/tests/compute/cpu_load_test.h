// The CPU load test: one busy task on each worker of a task scheduler, for the rest of a time
// budget.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "tests/compute/task_scheduler.h"
#include "vorn/vorn.h"

namespace vorn {

/// Keeps its worker busy with reading the performance counter. With `monitor` set the task of index
/// 0 also reads the temperature, every five seconds.
class MultiMath : public Task {
public:
    MultiMath(std::int32_t seconds, std::int32_t index, bool monitor, std::int32_t parameter);

    std::unique_ptr<Task> execute() override;

    /// How often five seconds had passed while the task monitored.
    int sampleOccasions() const { return sampleOccasions_; }

    /// The integer that the configuration hands through; the load does not use it.
    std::int32_t parameter() const { return parameter_; }

private:
    std::int32_t seconds_;
    std::int32_t index_;
    bool monitor_;
    std::int32_t parameter_;
    int sampleOccasions_ = 0;
};

/// Seconds that are left of `minutes` (read as atoi does), less the whole seconds between two
/// values of the performance counter; the nearest 32-bit value where it is beyond one.
std::int32_t loadSeconds(const std::string& minutes, std::int64_t startCount, std::int64_t now,
                         std::int64_t frequency);

/// Runs `threads` tasks, two at least, until `minutes` have passed since `startCount`, and waits
/// for them. Raises what a task raises, and std::system_error when the system refuses a thread; all
/// workers have ended by then.
void runCpuLoad(std::int32_t threads, const std::string& minutes, std::int64_t startCount,
                bool monitor, std::int32_t parameter);

/// The test function of the catalogue. Raises what runCpuLoad() raises.
std::string testCpuLoad(VORNTestResult& result, const Settings& settings, TestRecord& record,
                        std::string& log, std::int64_t startCount, bool monitor);

}  // namespace vorn
