// The MMX and SSE family test: each of the seven extensions that the processor reports executes a
// fixed set of its instructions on fixed operands, against known values.
#pragma once

#include <string>
#include <vector>

#include "config/settings.h"
#include "report/test_record.h"
#include "tests/isa/mmx_sse_routines.h"
#include "vorn/vorn.h"

namespace vorn {

/// The test function of the catalogue. Never without a verdict: an extension that the processor
/// does not report is not tested and does not fail.
std::string testMmxSse(VORNTestResult& result, const Settings& settings, TestRecord& record,
                       std::string& log);

/// The same test with these extensions; a routine is run exactly when CPUID reports its extension.
std::string testExtensions(const std::vector<Extension>& extensions, VORNTestResult& result,
                           TestRecord& record, std::string& log);

}  // namespace vorn
