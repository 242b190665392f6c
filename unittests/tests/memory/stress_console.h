// A console on which the stress test's progress can be watched and acted upon as it runs.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>

#include "fakes/captured_console.h"

namespace vorn {

/// The report stream for one scope. Calls `onShown` with each text that is flushed.
class StressConsole {
public:
    explicit StressConsole(std::function<void(const std::string& shown)> onShown = nullptr)
        : buffer_(std::move(onShown)) {
        bindReportStream(&buffer_);
    }
    std::string text() const { return buffer_.str(); }

private:
    class Buffer : public std::stringbuf {
    public:
        explicit Buffer(std::function<void(const std::string&)> onShown)
            : onShown_(std::move(onShown)) {}
        int sync() override {
            if (onShown_) {
                onShown_(str().substr(std::exchange(flushed_, str().size())));
            }
            return 0;
        }

    private:
        std::function<void(const std::string&)> onShown_;
        std::size_t flushed_ = 0;
    };

    CapturedConsole former_;  // puts the stream back
    Buffer buffer_;
};

inline const std::string stressHead = "\n--- Integrated Memory Controller Stress Test --- \n\n";

inline const std::string stressPassed =
    "\n--- Integrated Memory Controller Stress Test Pass!!! --- \n\n";

inline const std::string stressLegend =
    "Alloc = Memory Allocation\n"
    "T1_W = Test 1 Ones and Zeros Moving Inversions write operations\n"
    "T1_V = Test 1 Ones and Zeros Moving Inversions verification operations\n"
    "T2_W = Test 2 32Bits Sliding Ones write operations\n"
    "T2_V = Test 2 32Bits Sliding Ones verification operations\n"
    "T3_W = Test 3 32Bits Sliding Zero write operations\n"
    "T3_V = Test 3 32Bits Sliding Zero verification operations\n"
    "Dealloc = Memory deallocation\n"
    "Alloc\tT1_W\tT1_V\tT2_W\tT2_V\tT3_W\tT3_V\tDealloc\t Time\n"
    "0\t0\t0\t0\t0\t0\t0\t0\t    0";

/// The progress lines of the first `count` of the eight steps of cycle `cycle`, in no time.
inline std::string stressProgress(int count = 8, int cycle = 1) {
    std::string lines;
    for (int done = 1; done <= count; ++done) {
        lines += "\r";
        for (int column = 0; column < 8; ++column) {
            lines += std::to_string(column < done ? cycle : cycle - 1) + "\t";
        }
        lines += "    0";
    }
    return lines;
}

}  // namespace vorn
