// The first half of the memory controller test: is the expected amount of memory installed?
#pragma once

#include <cstdint>

#include "config/settings.h"
#include "report/report.h"
#include "tests/memory/working_verdict.h"

namespace vorn {

/// Bytes of memory installed in this machine, by the method that the system's version has. False,
/// with `bytes` as it was, when a call that this takes fails.
bool GetInstalledMemoryBytes(std::uint64_t& bytes);

/// Reads the installed memory and compares it with "@MemorySize", as that setting says. Whether the
/// memory controller test goes on: it does not after a failure.
bool testMemorySize(const Settings& settings, Report& report, WorkingVerdict& verdict);

}  // namespace vorn
