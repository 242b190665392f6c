#include "platform/x86_instructions.h"

#include <cpuid.h>
#include <immintrin.h>
#include <x86intrin.h>

namespace vorn {

CpuidRegisters X86Processor::cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
    CpuidRegisters registers;
    __cpuid_count(leaf, subleaf, registers.eax, registers.ebx, registers.ecx, registers.edx);
    return registers;
}

std::uint64_t X86Processor::timestampCounter() {
    return __rdtsc();
}

__attribute__((target("xsave"))) std::uint64_t X86Processor::extendedControlRegister0() {
    return _xgetbv(0);
}

}  // namespace vorn
