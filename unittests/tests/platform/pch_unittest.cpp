#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "fakes/ran_test.h"
#include "hw/ring0.h"
#include "tests/platform/pch_test.h"

namespace vorn {
namespace {

const std::string title = "\n --- Reading Platform Controller Hub --- \n\n";
const std::string passed = "\nPlatform Controller Hub Test Passed!!!\n\n";
const std::string failed = "\nPlatform Controller Hub Test Failed!!!\n\n";
const char* const fail = "1|Fail|Code 123|Platform Controller Hub Test Failed!!!";

/// A machine with an ISA bridge, a SATA and an IDE controller, two PCI bridges and a USB device.
class PchTest : public testing::Test {
protected:
    PchTest() {
        addFunction(28, 0, 0x2940, 0x0604, 0x00FF0300);
        addFunction(28, 1, 0x2942, 0x0604, 0x00000400);
        addFunction(31, 0, 0x2918, 0x0601);
        addFunction(31, 2, 0x2922, 0x0106);
        addFunction(31, 5, 0x2926, 0x0101);
        FakeDeviceSetup& system = platform_.devices;
        const int bridge = system.add("PCI\\VEN_12AB&DEV_2940\\0", "Root port 1");
        system.add("PCI\\VEN_12AB&DEV_2918\\0", "The hub");
        const int sata = system.add("PCI\\VEN_12AB&DEV_2922\\0", "SATA controller");
        system.add("PCI\\VEN_12AB&DEV_1000\\0", "Network card", bridge);
        system.add("IDE\\DISK\\0", "Disk drive", system.add("PCIIDE\\0", "Channel", sata));
        system.devices.back().properties[DeviceProperty::friendlyName] = "DISK 500";
        system.add("USB\\VID_0627&PID_0001\\1", "Keyboard");
        system.devices.back().usb = true;
    }

    void addFunction(std::uint32_t device, std::uint32_t function, std::uint16_t number,
                     std::uint16_t classCode, std::uint32_t buses = 0) {
        const std::uint32_t address = pciAddress(0, device, function);
        platform_.ring0.setPciDword(address, 0x00, 0x12ABU | (std::uint32_t{number} << 16U));
        platform_.ring0.setPciWord(address, 0x0A, classCode);
        platform_.ring0.setPciDword(address, 0x18, buses);
    }
    RanTest runTest(const char* census) {
        Settings settings;
        settings.pchEnum = census;
        platform_.ring0.calls.clear();
        platform_.devices.opened.clear();
        RanTest ran = runTestFunction(testPlatformControllerHub, settings);
        const auto& calls = platform_.ring0.calls;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "initialize"), 1);
        EXPECT_EQ(calls.back() == "deinitialize", ran.raised.empty());
        EXPECT_EQ(ran.record, "Platform Controller Hub Test|V1");
        return ran;
    }

    FakePlatform platform_;
};

TEST_F(PchTest, NamesTheHubAndTakesTheCensusWhereAskedFor) {
    const std::string pass = "0|Pass|Code 123|Platform Controller Hub Test Passed!!!";
    const RanTest ran = runTest("enable");
    EXPECT_EQ(ran.console, title +
                               "Detected --> The hub\n"
                               "\n --- Devices on PCI Bus 0 --- \n\n"
                               "..Root port 1\n"
                               "..Unknown Device. VEN:12ABDEV:2942\n"
                               "..The hub\n"
                               "..SATA controller\n"
                               "..Unknown Device. VEN:12ABDEV:2926\n"
                               "..Devices found --> 5\n"
                               "\n --- Devices behind PCI Bridge 00:1c.0, PCI Bus 3 --- \n\n"
                               "..Network card\n"
                               "..Devices found --> 1\n"
                               "\n --- Devices behind PCI Bridge 00:1c.1, PCI Bus 4 --- \n\n"
                               "..Devices found --> 0\n"
                               "\n --- Disks behind SATA Controller 00:1f.2 --- \n\n"
                               "..DISK 500\n"
                               "..Devices found --> 1\n"
                               "\n --- Disks behind SATA Controller 00:1f.5 --- \n\n"
                               "..Devices found --> 0\n"
                               "\n --- USB Devices --- \n\n"
                               "..Keyboard\n"
                               "..Devices found --> 1\n" +
                               passed);
    EXPECT_EQ(ran.log, ran.console);
    EXPECT_EQ(ran.verdict, pass);
    EXPECT_EQ(runTest("").console, title + "Detected --> The hub\n" + passed);
    EXPECT_EQ(platform_.devices.opened.size(), 1U);
}

TEST_F(PchTest, HasNoVerdictWithoutAnIsaBridgeInItsPlace) {
    const auto expectNotDetected = [this] {
        const RanTest ran = runTest("enable");
        EXPECT_EQ(ran.console, title + "..Platform Controller Hub not detected..\n");
        EXPECT_EQ(ran.log, ran.console);
        EXPECT_EQ(ran.verdict, "2|||");
    };
    addFunction(31, 0, 0x2918, 0x0600);
    expectNotDetected();
    addFunction(31, 0, 0x2918, 0x0601);
    platform_.ring0.setPciWord(pciAddress(0, 31, 0), 0x00, 0xFFFF);
    expectNotDetected();
    addFunction(31, 0, 0x2918, 0x0601);
    platform_.ring0.refuseCheckedPciReads = true;
    expectNotDetected();
}

TEST_F(PchTest, FailsWhereTheSystemCannotEnumerateAndGoesOn) {
    runTest("ENABLE");
    const auto openings = static_cast<int>(platform_.devices.opened.size());
    for (int opening = 0; opening < openings; ++opening) {
        platform_.devices.failOpening = opening;
        const RanTest ran = runTest("ENABLE");
        EXPECT_EQ(ran.verdict, fail) << opening;
        EXPECT_NE(ran.console.find("..Device enumeration failed..\n"), std::string::npos);
        EXPECT_NE(ran.console.find("--- USB Devices ---"), std::string::npos);
        EXPECT_EQ(ran.log, ran.console);
    }
    platform_.devices.failOpening = 0;
    EXPECT_EQ(runTest("").console, title + "..Device enumeration failed..\n" + failed);
}

TEST_F(PchTest, RaisesTheDriverFailureAfterItsBlock) {
    platform_.ring0.initializeResults = {0};
    const RanTest ran = runTest("ENABLE");
    EXPECT_EQ(ran.raised, driverFailureError);
    EXPECT_EQ(ran.console.substr(0, 50), "\n --- VORN encountered problem loading driver ---\n");
    EXPECT_EQ(ran.verdict, "1|VORN load driver error|Fail|VORN load driver error");
}

}  // namespace
}  // namespace vorn
