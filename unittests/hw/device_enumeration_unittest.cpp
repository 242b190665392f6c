#include "hw/device_enumeration.h"

#include <gtest/gtest.h>

#include <functional>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

const char* const ataClass = "{4d36E96a-e325-11ce-BFC1-08002be10318}";

TEST(ParseHardwareId, TakesFourCharactersAfterTheFirstMarkerOfEachKind) {
    struct Row {
        const char* text;
        std::optional<PciIdentity> identity;
    };
    const std::vector<Row> rows{
        {"PCI\\VEN_12AB&DEV_00f0&SUBSYS_11001AF4&REV_02", PciIdentity{0x12AB, 0x00F0}},
        {"USB\\VID_046D&PID_C52B\\6&1", PciIdentity{0x046D, 0xC52B}},
        {"VID_1111&PID_2222&VEN_3333&DEV_4444", PciIdentity{0x3333, 0x4444}},
        {"VEN_1111&VEN_2222&DEV_3333&DEV_4444", PciIdentity{0x1111, 0x3333}},
        {"DEV_4444&VEN_3333", PciIdentity{0x3333, 0x4444}},
        {"VEN_1111&PID_2222", PciIdentity{0x1111, 0x2222}},
        {"VEN_12&DEV_123456", PciIdentity{0x12, 0x1234}},  // reading stops at the first other sign
        {"VEN_1234&DEV_5", PciIdentity{0x1234, 0x5}},
        {"ven_1234&dev_5678", std::nullopt},
        {"VEN_1234", std::nullopt},
        {"DEV_1234", std::nullopt},
        {"VEN_PNP0&DEV_0A08", std::nullopt},
        {"VEN_1234&DEV_", std::nullopt},
        {"", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(parseHardwareId(row.text), row.identity) << row.text;
    }
}

class DeviceEnumerationTest : public testing::Test {
protected:
    DeviceEnumerationTest() { platform_.ring0.initialize(); }

    void addFunction(std::uint32_t address, std::uint16_t vendor, std::uint16_t device) {
        platform_.ring0.setPciDword(address, 0, vendor | (std::uint32_t{device} << 16U));
    }
    void setProperty(int device, DeviceProperty property, const std::string& text) {
        system_.devices[static_cast<std::size_t>(device)].properties[property] = text;
    }

    /// A controller at 0:31.2 with two channels; disks hang on the channels.
    void addController() {
        addFunction(pciAddress(0, 31, 2), 0x12AB, 0x2922);
        controller_ = system_.add("PCI\\VEN_12AB&DEV_2922\\3&0", "Controller");
        setProperty(controller_, DeviceProperty::classGuid, ataClass);
        firstChannel_ = system_.add("PCIIDE\\CHANNEL\\0", "Channel A", controller_);
        secondChannel_ = system_.add("PCIIDE\\CHANNEL\\1", "Channel B", controller_);
    }
    void addDisk(const std::string& name, int channel) {
        setProperty(system_.add("IDE\\DISK\\" + name, "Disk drive " + name, channel),
                    DeviceProperty::friendlyName, name);
    }

    FakePlatform platform_;
    FakeDeviceSetup& system_ = platform_.devices;
    NameList names_{"left over"};
    std::string name_ = "left over";
    int controller_ = 0;
    int firstChannel_ = 0;
    int secondChannel_ = 0;
};

TEST_F(DeviceEnumerationTest, NamesEveryFunctionOfABusInScanOrder) {
    EXPECT_EQ(listPciBusDevices(3, names_), enumerationEmpty);
    EXPECT_TRUE(names_.empty() && system_.opened.empty());
    addFunction(pciAddress(3, 0, 0), 0x12AB, 0x0001);
    addFunction(pciAddress(3, 0, 7), 0x12AB, 0x00F0);   // no system device
    addFunction(pciAddress(3, 31, 7), 0x046D, 0xC52B);  // function 0 of its device is absent
    addFunction(pciAddress(2, 0, 0), 0x12AB, 0x0002);   // another bus
    system_.add("PCI\\VEN_12AB&DEV_0001\\1", "first");
    system_.add("USB\\VID_046D&PID_C52B\\2", "by its USB numbers");
    system_.add("PCI\\VEN_12AB&DEV_0001\\3", "the last match");
    system_.add("ROOT\\NOTHING\\4", "no numbers");
    EXPECT_EQ(listPciBusDevices(3, names_), enumerationFound);
    EXPECT_EQ(names_, (NameList{"the last match", "Unknown Device. VEN:12ABDEV:00F0",
                                "by its USB numbers"}));
    EXPECT_EQ(system_.opened, (std::vector<std::string>{"", "", ""}));

    for (std::uint32_t function = 0; function < 256; ++function) {
        addFunction((5U << 8U) | function, 0x12AB, static_cast<std::uint16_t>(function));
    }
    EXPECT_EQ(listPciBusDevices(5, names_), enumerationFound);
    ASSERT_EQ(names_.size(), 256U);
    EXPECT_EQ(names_[255], "Unknown Device. VEN:12ABDEV:00FF");
    platform_.ring0.refuseCheckedPciReads = true;
    EXPECT_EQ(listPciBusDevices(5, names_), enumerationEmpty);
}

TEST_F(DeviceEnumerationTest, NamesOneFunction) {
    EXPECT_EQ(getPciDeviceName(0, 31, 0, name_), enumerationEmpty);
    EXPECT_EQ(name_, "");
    addFunction(pciAddress(0, 31, 0), 0x12AB, 0x2918);
    const int bridge = system_.add("PCI\\VEN_12AB&DEV_2918\\0", "Bridge");
    EXPECT_EQ(getPciDeviceName(0, 31, 0, name_), enumerationFound);
    EXPECT_EQ(name_, "Bridge");
    // Of a list only the first text counts.
    setProperty(bridge, DeviceProperty::hardwareId,
                std::string("PCI\\VEN_12AB&DEV_2919\0PCI\\VEN_12AB&DEV_2918\0", 44));
    EXPECT_EQ(getPciDeviceName(0, 31, 0, name_), enumerationFound);
    EXPECT_EQ(name_, "Unknown Device. VEN:12ABDEV:2918");
}

TEST_F(DeviceEnumerationTest, AsksForAPropertyWithTwiceTheReportedSize) {
    addFunction(0, 0x12AB, 1);
    system_.add("VEN_12AB&DEV_0001\\0", "0123456789");
    getPciDeviceName(0, 0, 0, name_);
    EXPECT_EQ(system_.bufferSizes, (std::vector<std::size_t>{0, 36, 0, 22}));
    system_.bufferSizes.clear();
    system_.reportedLess = 8;  // 3 bytes for the name, of which twice is still too little
    getPciDeviceName(0, 0, 0, name_);
    EXPECT_EQ(system_.bufferSizes, (std::vector<std::size_t>{0, 20, 0, 6, 22}));
    EXPECT_EQ(name_, "0123456789");
    system_.reportedLess = 11;  // a system that asks for nothing and takes nothing
    EXPECT_EQ(getPciDeviceName(0, 0, 0, name_), enumerationFound);
    EXPECT_EQ(name_, "Unknown Device. VEN:12ABDEV:0001");
}

TEST_F(DeviceEnumerationTest, ListsTheDisksOfAControllerElseAllControllers) {
    addController();
    EXPECT_EQ(listChildFriendlyNames(0, 31, 2, names_), enumerationEmpty);
    const int other = system_.add("PCI\\VEN_9999&DEV_0001\\1", "Elsewhere");
    const int unlike = system_.add("ROOT\\X\\1", "Of another class");
    setProperty(other, DeviceProperty::classGuid, "{4D36E96A-e325-11ce-bfc1-08002be10318}");
    setProperty(unlike, DeviceProperty::classGuid, "{4d36e967-e325-11ce-bfc1-08002be10318}");
    for (const int device : {controller_, other, unlike}) {
        setProperty(device, DeviceProperty::friendlyName, "Device " + std::to_string(device));
    }
    EXPECT_EQ(listChildFriendlyNames(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, (NameList{"Device 0", "Device 3"}));

    addDisk(std::string(191, 'x'), firstChannel_);  // an identifier of 200 characters: too long
    addDisk(std::string(190, 'y'), secondChannel_);
    addDisk("Gamma", secondChannel_);  // not the first child of its channel
    EXPECT_EQ(listChildFriendlyNames(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{std::string(190, 'y')});
    EXPECT_EQ(listChildFriendlyNames(0, 31, 1, names_), enumerationEmpty) << "an absent function";
    EXPECT_TRUE(names_.empty());
}

TEST_F(DeviceEnumerationTest, ListsDescriptionsOfChildrenElseOfTheDevicesThemselves) {
    addController();
    setProperty(controller_, DeviceProperty::friendlyName, "Not asked for");
    EXPECT_EQ(listChildDescriptions(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, (NameList{"Channel A", "Channel B"}));
    addDisk("Beta", secondChannel_);
    system_.opened.clear();
    EXPECT_EQ(listChildDescriptions(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Disk drive Beta"});
    EXPECT_EQ(system_.opened, (std::vector<std::string>{"", "IDE\\DISK\\Beta"}));
    EXPECT_EQ(listChildDescriptions(0, 31, 1, names_), enumerationEmpty);
    addFunction(pciAddress(0, 28, 0), 0x12AB, 0x2940);
    EXPECT_EQ(listChildDescriptions(0, 28, 0, names_), enumerationEmpty);
}

TEST_F(DeviceEnumerationTest, ListsUsbDevicesUpToTheLimit) {
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationEmpty);
    EXPECT_TRUE(names_.empty());
    for (int number = 0; number < 300; ++number) {
        system_.add("USB\\VID_0627&PID_0001\\" + std::to_string(number), std::to_string(number));
        system_.devices.back().usb = number != 1;
    }
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationFound);
    ASSERT_EQ(names_.size(), 256U);
    EXPECT_EQ(names_[1], "2");
    EXPECT_EQ(names_[255], "256");
    EXPECT_EQ(system_.opened.back(), "(usb)");
}

TEST_F(DeviceEnumerationTest, FailsWithoutNamesWhereverTheSystemFails) {
    addController();
    addDisk("Alpha", firstChannel_);
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
