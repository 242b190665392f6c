#include "hw/cpuid.h"

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

TEST(Cpuid, LaysOutTheVendorUpToItsFirstNul) {
    FakePlatform platform;
    platform.processor.leaves[{0, 0}] = {0, 0x44434241, 0x4C4B4A49, 0x48474645};
    EXPECT_EQ(cpuVendor(), "ABCDEFGHIJKL");
    platform.processor.leaves[{0, 0}].edx = 0x48004645;
    EXPECT_EQ(cpuVendor(), "ABCDEF");
    EXPECT_EQ(cachedCpuVendor(), "ABCDEF");
    platform.processor.leaves[{0, 0}].ebx = 0;
    EXPECT_EQ(cpuVendor(), "");
}

TEST(Cpuid, AddsExtendedFamilyAndModelWhateverTheBaseFamily) {
    struct Row {
        std::uint32_t signature;
        std::uint32_t family;
        std::uint32_t model;
        std::uint32_t stepping;
    };
    FakePlatform platform;
    for (const Row& row : {Row{0x000306A9, 6, 0x3A, 9}, Row{0x00A10F11, 25, 0x11, 1},
                           Row{0x00520F53, 20, 0x25, 3}, Row{0x00130542, 6, 0x34, 2}}) {
        platform.processor.leaves[{1, 0}].eax = row.signature;
        const FamilyModelStepping all = cpuFamilyModelStepping();
        EXPECT_EQ(all.family, row.family);
        EXPECT_EQ(all.model, row.model);
        EXPECT_EQ(all.stepping, row.stepping);
        EXPECT_EQ(cpuFamilyModel().family, row.family);
        EXPECT_EQ(cpuFamilyModel().model, row.model);
    }
}

TEST(Cpuid, KnowsModelSpecificRegistersByTheirBit) {
    FakePlatform platform;
    platform.processor.setFeatures(0, 0x20);
    EXPECT_TRUE(cpuHasMsr());
    platform.processor.setFeatures(0xFFFFFFFF, 0xFFFFFFDF);
    EXPECT_FALSE(cpuHasMsr());
}

TEST(Cpuid, ReadsTheBrandStringWhereThereIsOne) {
    FakePlatform platform;
    EXPECT_EQ(cpuBrandString(), "");
    platform.processor.setBrand("   Ovrin(R) Core(TM) i7");
    EXPECT_EQ(cpuBrandString(), "   Ovrin(R) Core(TM) i7");
    const std::string full(48, 'x');
    platform.processor.setBrand(full);
    EXPECT_EQ(cpuBrandString(), full);
}

}  // namespace
}  // namespace vorn
