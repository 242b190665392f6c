// Time, as the tests read it.
#pragma once

#include <cstdint>

namespace vorn {

class Clock {
public:
    virtual ~Clock() = default;

    /// Elapsed milliseconds since the process started.
    virtual std::int64_t processMilliseconds() = 0;

    /// Wall clock: whole seconds since 1970-01-01 00:00:00 UTC.
    virtual std::int64_t wallSeconds() = 0;

    /// High-resolution counter, in ticks of performanceFrequency().
    virtual std::int64_t performanceCounter() = 0;

    /// Ticks per second of performanceCounter(); positive, constant for the life of the process.
    virtual std::int64_t performanceFrequency() = 0;

    /// Suspends the calling thread for at least this many milliseconds.
    virtual void sleepMilliseconds(std::uint32_t milliseconds) = 0;
};

}  // namespace vorn
