#include "platform/linux/ring0_linux.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

/// Device files and a system tree of our own below the current directory.
class LinuxRing0Test : public testing::Test {
protected:
    LinuxRing0Test() {
        // The thread may be moved to any processor of the machine between two accesses.
        for (unsigned processor = 0; processor < std::thread::hardware_concurrency(); ++processor) {
            TemporaryDirectory::write("dev/cpu/" + std::to_string(processor) + "/msr", registers_);
        }
        TemporaryDirectory::write("sys/bus/pci/devices/0000:00:02.0/config",
                                  std::string("\x6E\x7A\x52\x01", 4) + std::string(60, '\x11'));
    }

    TemporaryDirectory directory_;
    std::string registers_ =
        std::string(0xCD, '\0') + std::string("\x04\x03\x02\x01\x08\x07\x06\x05", 8);
    Advice advice_;
    LinuxRing0Library ring0_{advice_, "dev", "sys"};
};

TEST_F(LinuxRing0Test, ReadsRegistersAndConfigurationSpace) {
    EXPECT_NE(ring0_.initialize(), 0U);
    EXPECT_EQ(ring0_.status(), 0U);
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    EXPECT_NE(ring0_.readMsr(0xCD, low, high), 0U);
    EXPECT_EQ(low, 0x01020304U);
    EXPECT_EQ(high, 0x05060708U);
    EXPECT_EQ(ring0_.readMsr(0x1000, low, high), 0U) << "the register does not exist";
    EXPECT_EQ(low, 0x01020304U) << "a refused read leaves the halves";

    std::uint16_t word = 0;
    std::uint32_t dword = 0;
    EXPECT_NE(ring0_.readPciConfigWordChecked(0x10, 0, word), 0U);
    EXPECT_EQ(word, 0x7A6E);
    EXPECT_NE(ring0_.readPciConfigDwordChecked(0x10, 0, dword), 0U);
    EXPECT_EQ(dword, 0x01527A6EU);
    EXPECT_EQ(ring0_.readPciConfigByte(0x10, 2), 0x52);
    EXPECT_TRUE(advice_.lines().empty());
}

TEST_F(LinuxRing0Test, ReadsAnAbsentFunctionAsAllOnesButNeverACutSpace) {
    ring0_.initialize();
    std::uint16_t word = 0;
    EXPECT_NE(ring0_.readPciConfigWordChecked(0x18, 0, word), 0U);
    EXPECT_EQ(word, 0xFFFF);

    word = 0x1234;
    EXPECT_EQ(ring0_.readPciConfigWordChecked(0x10, 0x50, word), 0U);
    EXPECT_EQ(word, 0x1234);
    EXPECT_EQ(ring0_.readPciConfigDword(0x10, 0x50), 0xFFFFFFFFU);
    ASSERT_EQ(advice_.lines().size(), 1U);
    EXPECT_NE(advice_.lines()[0].find("first 64 bytes"), std::string::npos);
}

TEST_F(LinuxRing0Test, SaysWhyItCannotStart) {
    std::filesystem::remove_all("sys");
    EXPECT_EQ(ring0_.initialize(), 0U);
    EXPECT_EQ(ring0_.status(), LinuxRing0Library::pciNotReadable);
    std::filesystem::remove_all("dev");
    EXPECT_EQ(ring0_.initialize(), 0U);
    EXPECT_EQ(ring0_.status(), LinuxRing0Library::noMsrDevice);
    ASSERT_EQ(advice_.lines().size(), 2U);
    EXPECT_NE(advice_.lines()[0].find("mount sysfs"), std::string::npos);
    EXPECT_NE(advice_.lines()[1].find("modprobe msr"), std::string::npos);
}

TEST_F(LinuxRing0Test, WritesARegisterOrSaysWhyNot) {
    TemporaryDirectory::write("registers", registers_);
    const auto everyDeviceIs = [](const char* target) {
        for (const auto& processor : std::filesystem::directory_iterator("dev/cpu")) {
            std::filesystem::remove(processor.path() / "msr");
            std::filesystem::create_symlink(std::filesystem::absolute(target),
                                            processor.path() / "msr");
        }
    };
    everyDeviceIs("registers");
    ring0_.initialize();
    EXPECT_NE(ring0_.writeMsr(0xCD, 0x04030201, 0x08070605), 0U);
    EXPECT_EQ(TemporaryDirectory::read("registers").substr(0xCD), "\x01\x02\x03\x04\x05\x06\a\b");
    EXPECT_TRUE(advice_.lines().empty());
    everyDeviceIs("/dev/full");
    EXPECT_EQ(ring0_.writeMsr(0xCD, 0, 0), 0U);
    ASSERT_EQ(advice_.lines().size(), 1U);
    EXPECT_NE(advice_.lines()[0].find("hypervisor"), std::string::npos);
}

TEST_F(LinuxRing0Test, RefusesEverythingBeforeAndAfterItIsOpen) {
    std::uint32_t low = 1;
    std::uint32_t high = 2;
    EXPECT_NE(ring0_.status(), 0U);
    EXPECT_EQ(ring0_.readMsr(0xCD, low, high), 0U);
    ring0_.initialize();
    ring0_.deinitialize();
    EXPECT_EQ(ring0_.readMsr(0xCD, low, high), 0U);
    EXPECT_EQ(ring0_.writeMsr(0xCD, low, high), 0U);
    EXPECT_EQ(ring0_.readPciConfigWord(0x10, 0), 0xFFFF);
}

}  // namespace
}  // namespace vorn
