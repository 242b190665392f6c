#include "hw/cpuid.h"

#include <array>
#include <cstring>

#include "platform/platform.h"

namespace vorn {

namespace {

constexpr std::uint32_t leafVendor = 0;
constexpr std::uint32_t leafFeatures = 1;
constexpr std::uint32_t leafExtendedRange = 0x80000000;
constexpr std::uint32_t leafBrandFirst = 0x80000002;
constexpr std::uint32_t leafBrandLast = 0x80000004;
constexpr std::uint32_t featureMsr = 1U << 5U;  // leaf 1, EDX

std::string& vendorCache() {
    static std::string cache;
    return cache;
}

/// The text of registers laid out one after the other, up to the first NUL.
template <std::size_t count>
std::string registersAsText(const std::array<std::uint32_t, count>& registers) {
    std::array<char, sizeof(registers) + 1> bytes{};
    std::memcpy(bytes.data(), registers.data(), sizeof(registers));
    return bytes.data();
}

}  // namespace

std::string cpuVendor() {
    const CpuidRegisters leaf = platform().processor.cpuid(leafVendor);
    vendorCache() = registersAsText<3>({leaf.ebx, leaf.edx, leaf.ecx});
    return vendorCache();
}

const std::string& cachedCpuVendor() {
    return vendorCache();
}

FamilyModel cpuFamilyModel() {
    const FamilyModelStepping all = cpuFamilyModelStepping();
    return {all.family, all.model};
}

FamilyModelStepping cpuFamilyModelStepping() {
    const std::uint32_t signature = platform().processor.cpuid(leafFeatures).eax;
    FamilyModelStepping decoded;
    decoded.family = ((signature >> 8U) & 0xFU) + ((signature >> 20U) & 0xFFU);
    decoded.model = ((signature >> 4U) & 0xFU) + (((signature >> 16U) & 0xFU) << 4U);
    decoded.stepping = signature & 0xFU;
    return decoded;
}

bool cpuHasMsr() {
    return (platform().processor.cpuid(leafFeatures).edx & featureMsr) != 0;
}

std::string cpuBrandString() {
    Processor& processor = platform().processor;
    if (processor.cpuid(leafExtendedRange).eax < leafBrandLast) {
        return {};
    }
    std::array<std::uint32_t, 12> registers{};
    std::size_t next = 0;
    for (std::uint32_t leaf = leafBrandFirst; leaf <= leafBrandLast; ++leaf) {
        const CpuidRegisters part = processor.cpuid(leaf);
        for (const std::uint32_t value : {part.eax, part.ebx, part.ecx, part.edx}) {
            registers[next++] = value;
        }
    }
    return registersAsText(registers);
}

}  // namespace vorn
