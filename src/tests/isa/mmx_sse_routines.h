// The seven check routines of the MMX and SSE family.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/processor.h"
#include "tests/isa/check.h"

namespace vorn {

/// One extension: how it is recognised, what is said about it, and the routine that checks it.
struct Extension {
    std::uint32_t CpuidRegisters::*flags;  ///< register of CPUID leaf 1
    unsigned bit;                          ///< the extension's bit in it
    const char* consoleLine;               ///< capability line; "Yes" or "No" follows
    const char* logLine;
    const char* resultLabel;
    Routine routine;
};

/// The extensions in the order in which they are looked for and checked.
const std::vector<Extension>& mmxSseExtensions();

}  // namespace vorn
