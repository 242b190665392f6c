// The form of numbers in the runtime library's conversions.
#pragma once

#include <memory>

namespace vorn {

/// While it lives, the calling thread reads and writes numbers with a decimal point and without
/// grouping, whatever locale the host has chosen: a configured "3.40" must not become 3 in a host
/// that speaks another language. Threads that the caller starts meanwhile are not covered.
class NumericLocale {
public:
    NumericLocale();
    ~NumericLocale();
    NumericLocale(const NumericLocale&) = delete;
    NumericLocale& operator=(const NumericLocale&) = delete;

private:
    struct Former;
    std::unique_ptr<Former> former_;
};

}  // namespace vorn
