// What the tests read of the processor with CPUID.
#pragma once

#include <cstdint>
#include <string>

namespace vorn {

/// Family and model of CPUID leaf 1. The extended family and the extended model are added whatever
/// the base family is; every model number that the tests compare with is such a sum.
struct FamilyModel {
    std::uint32_t family = 0;
    std::uint32_t model = 0;
};

struct FamilyModelStepping {
    std::uint32_t family = 0;
    std::uint32_t model = 0;
    std::uint32_t stepping = 0;
};

/// The vendor identification string of leaf 0 (12 characters, up to the first NUL), which is also
/// kept as the process's cached vendor string.
std::string cpuVendor();

/// The vendor string that the most recent cpuVendor() read; empty before the first.
const std::string& cachedCpuVendor();

FamilyModel cpuFamilyModel();

FamilyModelStepping cpuFamilyModelStepping();

/// Whether the processor has RDMSR and WRMSR (leaf 1, EDX bit 5).
bool cpuHasMsr();

/// The processor brand string: the 48 bytes of leaves 0x80000002 to 0x80000004, up to the first
/// NUL. Leading blanks are kept. Empty when the processor does not have these leaves.
std::string cpuBrandString();

}  // namespace vorn
