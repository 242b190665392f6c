#include "hw/ring0.h"

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

TEST(PciAddress, PacksAndLetsTheFunctionSpill) {
    EXPECT_EQ(pciAddress(0, 2, 0), 0x10U);
    EXPECT_EQ(pciAddress(1, 31, 7), 0x1FFU);
    EXPECT_EQ(pciAddress(0, 0, 8), 8U);
    EXPECT_EQ(pciAddress(0x1FF, 0x3F, 0x1F), 0xFFFFU);
}

TEST(ReadMsr, AssemblesTheHalvesAndStoresZeroWhenRefused) {
    FakePlatform platform;
    openRing0();
    platform.ring0.msrs[0xCE] = {0x123456789ABCDEF0};
    std::uint64_t value = 7;
    EXPECT_TRUE(readMsr(0xCE, value));
    EXPECT_EQ(value, 0x123456789ABCDEF0U);
    EXPECT_FALSE(readMsr(0x10, value));
    EXPECT_EQ(value, 0U);
    EXPECT_TRUE(writeMsr(0xE7, 0x1122334455667788));
    EXPECT_EQ(platform.ring0.calls.back(), "wrmsr 0xe7 0x1122334455667788");
}

TEST(PciSecondaryBus, IsUnknownWhenTheReadFails) {
    FakePlatform platform;
    openRing0();
    platform.ring0.setPciDword(0x10, 0x18, 0x00AB0201);
    EXPECT_EQ(pciSecondaryBus(0x10), 0x02);
    platform.ring0.refuseCheckedPciReads = true;
    EXPECT_FALSE(pciSecondaryBus(0x10));
}

}  // namespace
}  // namespace vorn
