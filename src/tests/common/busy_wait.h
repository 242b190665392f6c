// Waiting without letting the processor rest.
#pragma once

#include <cstdint>

namespace vorn {

/// Polls the process clock until it has moved on by `milliseconds` (0 or more), and returns by how
/// many milliseconds it has moved by then. Never sleeps, so that the processor stays out of its
/// idle states.
std::int64_t busyWait(std::int64_t milliseconds);

}  // namespace vorn
