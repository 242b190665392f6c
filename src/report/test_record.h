// The six texts that every test fills.
#pragma once

#include <string>

namespace vorn {

/// Description, name and version are set at the start of a test, the other three at its verdict; a
/// test that ends without one leaves those empty.
struct TestRecord {
    std::string name;  ///< short name, for example "CPU Manufacturer"
    std::string
        description;      ///< failure wording, set before the outcome is known and kept on a pass
    std::string version;  ///< version tag of the test, for example "V1"
    std::string code;     ///< result code, for example "Code 123"
    std::string status;   ///< "Pass" or "Fail"
    std::string message;  ///< verdict sentence
};

}  // namespace vorn
