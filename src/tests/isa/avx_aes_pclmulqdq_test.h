// The AVX, AES and PCLMULQDQ test: the AVX timing compare where processor and operating system have
// AVX, and the AES and PCLMULQDQ instructions on fixed operands.
#pragma once

#include <functional>
#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// The three check routines: each prints its own lines and returns whether it passed. One that the
/// processor does not report is never called; AVX needs the operating system's support as well.
struct AvxAesPclmulqdqChecks {
    std::function<bool()> avx;
    std::function<bool()> aes;
    std::function<bool()> pclmulqdq;
};

/// The test function of the catalogue. VORN_NOT_RUN when no check is required.
std::string testAvxAesPclmulqdq(VORNTestResult& result, const Settings& settings,
                                TestRecord& record, std::string& log);

/// The same test with these check routines.
std::string testAvxAesPclmulqdqWith(const AvxAesPclmulqdqChecks& checks, VORNTestResult& result,
                                    TestRecord& record, std::string& log);

}  // namespace vorn
