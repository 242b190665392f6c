// The instructions behind the Processor interface, the same on every operating system.
#pragma once

#include "platform/processor.h"

namespace vorn {

/// Processor whose instructions are executed; the counts and numbers are left to the system.
class X86Processor : public Processor {
public:
    CpuidRegisters cpuid(std::uint32_t leaf, std::uint32_t subleaf) override;
    std::uint64_t timestampCounter() override;
    std::uint64_t extendedControlRegister0() override;
};

}  // namespace vorn
