// The end of the process, on the paths where a test or the configuration demands it.
#pragma once

namespace vorn {

class ProcessControl {
public:
    virtual ~ProcessControl() = default;

    /// Ends the whole process with this status, flushing the standard streams.
    [[noreturn]] virtual void exit(int status) = 0;
};

}  // namespace vorn
