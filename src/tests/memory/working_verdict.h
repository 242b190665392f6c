// What the two halves of the memory controller test agree on while it runs.
#pragma once

#include <string>
#include <utility>

#include "vorn/vorn.h"

namespace vorn {

/// The verdict so far; it goes into the record when the test ends.
struct WorkingVerdict {
    std::string status = "Pass";
    std::string message = "Integrated Memory Controller Test Pass!!!";
    std::string code = "Code 123";  ///< the same for every outcome
    VORNTestResult& result;         ///< the result of the call

    void fail(std::string failure, VORNTestResult failedResult = VORN_FAIL) {
        status = "Fail";
        message = std::move(failure);
        result = failedResult;
    }
};

}  // namespace vorn
