#include "hw/device_enumeration.h"

#include <gtest/gtest.h>

#include <functional>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

using Names = std::vector<std::string>;

TEST(ParseHardwareId, TakesFourCharactersAfterTheFirstMarkerOfEachKind) {
    struct Row {
        const char* text;
        std::optional<PciIdentity> identity;
    };
    for (const Row& row : std::vector<Row>{
             {"PCI\\VEN_12AB&DEV_00f0&SUBSYS_11001AF4&REV_02", PciIdentity{0x12AB, 0x00F0}},
             {"USB\\VID_046D&PID_C52B\\6&1", PciIdentity{0x046D, 0xC52B}},
             {"VID_1111&PID_2222&VEN_3333&DEV_4444", PciIdentity{0x3333, 0x4444}},
             {"VEN_1111&VEN_2222&DEV_3333&DEV_4444", PciIdentity{0x1111, 0x3333}},
             {"DEV_4444&VEN_3333", PciIdentity{0x3333, 0x4444}},
             {"VEN_1111&PID_2222", PciIdentity{0x1111, 0x2222}},
             {"VEN_12&DEV_123456", PciIdentity{0x12, 0x1234}},  // ends at the first other sign
             {"VEN_1234&DEV_5", PciIdentity{0x1234, 0x5}},
             {"ven_1234&dev_5678", std::nullopt},
             {"VEN_1234", std::nullopt},
             {"DEV_1234", std::nullopt},
             {"VEN_PNP0&DEV_0A08", std::nullopt},
             {"VEN_1234&DEV_", std::nullopt},
             {"", std::nullopt}}) {
        EXPECT_EQ(parseHardwareId(row.text), row.identity) << row.text;
    }
}

class DeviceEnumerationTest : public testing::Test {
protected:
    DeviceEnumerationTest() { platform_.ring0.initialize(); }

    void addFunction(std::uint32_t address, std::uint16_t device) {
        platform_.ring0.setPciDword(address, 0, 0x12ABU | (std::uint32_t{device} << 16U));
    }
    /// A device with its friendly name.
    int add(const std::string& instanceId, const std::string& name, int parent = -1) {
        const int device = system_.add(instanceId, name, parent);
        system_.devices.back().properties[DeviceProperty::friendlyName] = name;
        return device;
    }

    FakePlatform platform_;
    FakeDeviceSetup& system_ = platform_.devices;
    NameList names_{"left over"};
    std::string name_ = "left over";
};

TEST_F(DeviceEnumerationTest, NamesUpToAWholeBusOfFunctions) {
    EXPECT_EQ(listPciBusDevices(5, names_), enumerationEmpty);
    EXPECT_TRUE(names_.empty() && system_.opened.empty());
    for (std::uint32_t function = 0; function < 256; ++function) {
        addFunction((5U << 8U) | function, static_cast<std::uint16_t>(function));
    }
    EXPECT_EQ(listPciBusDevices(5, names_), enumerationFound);
    ASSERT_EQ(names_.size(), 256U);
    EXPECT_EQ(names_[255], "Unknown Device. VEN:12ABDEV:00FF");
    EXPECT_EQ(system_.opened, Names(256, "")) << "one set a function";
    platform_.ring0.refuseCheckedPciReads = true;
    EXPECT_EQ(listPciBusDevices(5, names_), enumerationEmpty);
    EXPECT_EQ(getPciDeviceName(5, 0, 0, name_), enumerationEmpty);
    EXPECT_EQ(name_, "");
}

TEST_F(DeviceEnumerationTest, AsksForAPropertyWithTwiceTheReportedSizeAndTakesItsFirstText) {
    addFunction(0, 1);
    const auto expectName = [this](const std::string& name, const std::vector<std::size_t>& sizes) {
        system_.bufferSizes.clear();
        EXPECT_EQ(getPciDeviceName(0, 0, 0, name_), enumerationFound);
        EXPECT_EQ(name_, name);
        EXPECT_EQ(system_.bufferSizes, sizes);
    };
    system_.add("VEN_12AB&DEV_0001\\0", "0123456789");
    expectName("0123456789", {0, 36, 0, 22});
    system_.reportedLess = 8;  // 3 bytes for the name, of which twice is still too little
    expectName("0123456789", {0, 20, 0, 6, 22});
    system_.reportedLess = 11;  // a system that asks for nothing and takes nothing
    expectName("Unknown Device. VEN:12ABDEV:0001", {0, 14, 36, 0});
    system_.reportedLess = 0;
    system_.devices[0].properties[DeviceProperty::hardwareId] =
        std::string("VEN_12AB&DEV_0002\0VEN_12AB&DEV_0001\0", 36);
    expectName("Unknown Device. VEN:12ABDEV:0001", {0, 74});
}

TEST_F(DeviceEnumerationTest, LeavesOutAChildWhoseIdentifierIsTooLong) {
    addFunction(pciAddress(0, 31, 2), 0x2922);
    const int controller = system_.add("PCI\\VEN_12AB&DEV_2922\\0", "Controller");
    add("IDE\\DISK\\" + std::string(191, 'x'), "of 200 characters",
        system_.add("PCIIDE\\0", "Channel", controller));
    add("IDE\\DISK\\" + std::string(190, 'y'), "of 199 characters",
        system_.add("PCIIDE\\1", "Channel", controller));
    for (const auto list : {listChildFriendlyNames, listChildDescriptions}) {
        EXPECT_EQ(list(0, 31, 2, names_), enumerationFound);
        EXPECT_EQ(names_, Names{"of 199 characters"});
        EXPECT_EQ(list(0, 31, 1, names_), enumerationEmpty) << "an absent function";
        EXPECT_TRUE(names_.empty());
    }
}

TEST_F(DeviceEnumerationTest, ListsUsbDevicesUpToTheLimit) {
    for (int number = 0; number < 300; ++number) {
        system_.add("USB\\VID_0627&PID_0001\\" + std::to_string(number), std::to_string(number));
        system_.devices.back().usb = number != 1;
    }
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationFound);
    ASSERT_EQ(names_.size(), 256U);
    EXPECT_EQ(names_[1], "2");
    EXPECT_EQ(names_[255], "256");
    EXPECT_EQ(system_.opened, Names{"(usb)"});
}

TEST_F(DeviceEnumerationTest, FailsWithoutNamesWhereverTheSystemFails) {
    addFunction(pciAddress(0, 31, 2), 0x2922);
    const int controller = system_.add("PCI\\VEN_12AB&DEV_2922\\0", "Controller");
    add("IDE\\DISK\\A", "Disk", system_.add("PCIIDE\\0", "Channel", controller));
    system_.devices.back().usb = true;
    const std::vector<std::function<EnumerationStatus()>> operations{
        [this] { return listPciBusDevices(0, names_); },
        [this] { return getPciDeviceName(0, 31, 2, name_); },
        [this] { return listChildFriendlyNames(0, 31, 2, names_); },
        [this] { return listChildDescriptions(0, 31, 2, names_); },
        [this] { return listUsbDeviceDescriptions(names_); },
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(&operation - operations.data());
        const auto runFailing = [&](int opening, int selection) {
            system_.opened.clear();
            system_.selections = 0;
            system_.failOpening = opening;
            system_.failSelecting = selection;
            names_.clear();
            name_.clear();
            return operation();
        };
        ASSERT_EQ(runFailing(-1, -1), enumerationFound);
        const auto openings = static_cast<int>(system_.opened.size());
        const int selections = system_.selections;
        for (int failing = 0; failing < openings + selections; ++failing) {
            const int opening = failing < openings ? failing : -1;
            EXPECT_EQ(runFailing(opening, failing - openings), enumerationFailed) << failing;
            EXPECT_TRUE(names_.empty() && name_.empty());
        }
    }
}

}  // namespace
}  // namespace vorn
