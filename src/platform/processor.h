// The processor that the calling thread runs on, at the level of its instructions, and how many
// processors the machine has.
#pragma once

#include <cstdint>

namespace vorn {

/// What one CPUID instruction returns.
struct CpuidRegisters {
    std::uint32_t eax = 0;
    std::uint32_t ebx = 0;
    std::uint32_t ecx = 0;
    std::uint32_t edx = 0;
};

class Processor {
public:
    virtual ~Processor() = default;

    /// Executes CPUID with EAX = `leaf` and ECX = `subleaf`.
    virtual CpuidRegisters cpuid(std::uint32_t leaf, std::uint32_t subleaf = 0) = 0;

    /// The time-stamp counter (RDTSC), in ticks.
    virtual std::uint64_t timestampCounter() = 0;

    /// Extended control register 0 (XGETBV). Precondition: CPUID leaf 1 reports OSXSAVE (ECX bit
    /// 27); the instruction is undefined otherwise.
    virtual std::uint64_t extendedControlRegister0() = 0;

    /// Processor packages (sockets) of the machine, at least 1.
    virtual unsigned packageCount() = 0;

    /// Number of the logical processor that the calling thread runs on at this moment.
    virtual unsigned currentLogicalProcessor() = 0;
};

}  // namespace vorn
