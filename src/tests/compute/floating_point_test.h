// The floating point test: a recurrence that keeps the double-precision unit busy, whose sum is
// known to the last bit.
#pragma once

#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// Operations that are counted for each step of the recurrence.
inline constexpr int floatingPointOperationsPerStep = 12;

/// One cycle of the recurrence from its fixed operands; returns its sum. Every call computes it
/// anew.
double floatingPointCycle();

/// Whether the sum of a cycle is, bit by bit, one of those that correct processors reach.
bool isAcceptedFloatingPointSum(double sum);

/// Computes the sum of a cycle.
using FloatingPointCycle = double (*)();

/// Runs cycles for this many seconds, and for two at least; with `stopOnError` only until the first
/// cycle whose sum is not accepted. Keeps a status line on the report stream. Returns the number of
/// such cycles.
int runFloatingPoint(int seconds, bool stopOnError, FloatingPointCycle cycle = floatingPointCycle);

/// The test function of the catalogue. Raises what integerOf() raises for its timer.
std::string testFloatingPoint(VORNTestResult& result, const Settings& settings, TestRecord& record,
                              std::string& log);

/// The same with another cycle, which stands for a processor that computes wrongly.
std::string testFloatingPointWith(FloatingPointCycle cycle, VORNTestResult& result,
                                  const Settings& settings, TestRecord& record, std::string& log);

}  // namespace vorn
