// The second half of the memory controller test: patterns written to locked memory and read back.
#pragma once

#include <optional>

#include "config/settings.h"
#include "report/report.h"
#include "tests/memory/block_set.h"
#include "tests/memory/working_verdict.h"

namespace vorn {

/// A verification that failed.
struct MemoryFault {
    int test = 0;  ///< number of the pattern: 1, 2 or 3
    Mismatch mismatch;
};

/// The fault that ended the most recent stress test of this process; nothing when it found none.
const std::optional<MemoryFault>& lastMemoryFault();

/// Writes and verifies the three patterns in "@MemoryStressTestSize" of memory, cycle after cycle
/// for "@MemoryStressTestTime" seconds, or once when that is "DISABLE"; does nothing when the size
/// is. Shows its progress on the console. Holds no memory afterwards.
void testMemoryStress(const Settings& settings, Report& report, WorkingVerdict& verdict);

}  // namespace vorn
