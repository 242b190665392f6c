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
    FakePlatform platform;
    // Signature, family, model, stepping.
    for (const std::vector<std::uint32_t>& row :
         {std::vector<std::uint32_t>{0x000306A9, 6, 0x3A, 9},
          {0x00A10F11, 25, 0x11, 1},
          {0x00520F53, 20, 0x25, 3},
          {0x00130542, 6, 0x34, 2}}) {
        platform.processor.leaves[{1, 0}].eax = row[0];
        const FamilyModelStepping all = cpuFamilyModelStepping();
        EXPECT_EQ((std::vector{row[0], all.family, all.model, all.stepping}), row);
        EXPECT_EQ(cpuFamilyModel().family, row[1]);
        EXPECT_EQ(cpuFamilyModel().model, row[2]);
    }
}

}  // namespace
}  // namespace vorn
