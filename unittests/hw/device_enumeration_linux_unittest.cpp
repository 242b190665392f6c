// The enumeration over the devices that Linux describes: recorded trees, and this machine's own.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "fakes/fake_platform.h"
#include "fakes/temporary_directory.h"
#include "hw/device_enumeration.h"
#include "platform/linux/device_setup_linux.h"

namespace vorn {
namespace {

namespace fs = std::filesystem;

/// Lays a recording out below the current directory: "PATH -> TARGET" is a link, "PATH = TEXT" a
/// file.
void layOut(const std::string& recording) {
    std::ifstream file(VORN_RECORDED + recording);
    ASSERT_TRUE(file) << recording;
    for (std::string line; std::getline(file, line);) {
        const std::size_t arrow = line.find(" -> ");
        const std::size_t equals = line.find(" = ");
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const fs::path path = line.substr(0, std::min(arrow, equals));
        fs::create_directories(path.parent_path());
        if (arrow != std::string::npos) {
            const fs::path target = line.substr(arrow + 4);
            fs::create_directories(path.parent_path() / target);
            fs::create_symlink(target, path);
        } else {
            TemporaryDirectory::write(path.string(), line.substr(equals + 3) + "\n");
        }
    }
}

unsigned numberIn(const fs::path& path) {
    unsigned number = 0;
    std::ifstream(path) >> std::hex >> number;
    return number;
}

/// The configuration registers of the functions below `sysfs`.
void fillRegisters(const fs::path& sysfs, FakeRing0& ring0) {
    for (const fs::directory_entry& entry : fs::directory_iterator(sysfs / "bus/pci/devices")) {
        unsigned bus = 0;
        unsigned device = 0;
        unsigned function = 0;
        std::sscanf(entry.path().filename().c_str(), "%*x:%x:%x.%x", &bus, &device, &function);
        const std::uint32_t address = pciAddress(bus, device, function);
        ring0.setPciWord(address, 0, static_cast<std::uint16_t>(numberIn(entry.path() / "vendor")));
        ring0.setPciWord(address, 2, static_cast<std::uint16_t>(numberIn(entry.path() / "device")));
    }
}

class LinuxDeviceTest : public testing::Test {
protected:
    LinuxDeviceTest() {
        TemporaryDirectory::write("pci.ids",
                                  "# a list\n"
                                  "1af4  Maker A\n"
                                  "\t1041  Card\n"
                                  "\t\t1af4 1100  Card of a machine\n"
                                  "1b36  Maker B\n"
                                  "8086  Maker C\n"
                                  "\t2918  Hub\n"
                                  "\t2922  SATA\n"
                                  "C 06  Bridge\n"
                                  "\t000c  Not a device\n");
        TemporaryDirectory::write("usb.ids", "0627  Maker D\n\t0001  Keyboard\n");
        platform_.ring0.initialize();
    }

    void use(const std::string& recording, const std::string& nameFolder = ".") {
        layOut(recording);
        fillRegisters(".", platform_.ring0);
        setup_ = std::make_unique<LinuxDeviceSetup>(
            ".", std::vector<std::string>{"absent", nameFolder, "/also/absent"});
        platform_.devices.instead = setup_.get();
    }

    TemporaryDirectory directory_;
    FakePlatform platform_;
    std::unique_ptr<LinuxDeviceSetup> setup_;
    NameList names_;
    std::string name_;
};

TEST_F(LinuxDeviceTest, EnumeratesAMachineWithDiskCardAndKeyboard) {
    use("machine.sysfs");
    EXPECT_EQ(listPciBusDevices(0, names_), enumerationFound);
    EXPECT_EQ(names_, (NameList{"Maker C device 29C0", "Maker B device 000C", "Maker B device 000D",
                                "Maker C Hub", "Maker C SATA", "Maker C device 2930"}));
    EXPECT_EQ(listPciBusDevices(1, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Maker A Card"});
    EXPECT_EQ(getPciDeviceName(0, 31, 0, name_), enumerationFound);
    EXPECT_EQ(name_, "Maker C Hub");
    EXPECT_EQ(listChildFriendlyNames(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"DISK-500"});
    EXPECT_EQ(listChildDescriptions(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"DISK-500"});
    EXPECT_EQ(listChildDescriptions(0, 4, 0, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Maker A Card"}) << "behind a bridge";
    EXPECT_EQ(listChildDescriptions(0, 5, 0, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Maker D Keyboard"}) << "below a USB hub";
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Maker D Keyboard"}) << "without the hubs";

    // What the system takes away is gone at once.
    fs::remove("block/sda");
    EXPECT_EQ(listChildFriendlyNames(0, 31, 2, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"Maker C SATA"}) << "the controller for want of a disk";
    EXPECT_EQ(listChildDescriptions(0, 31, 2, names_), enumerationEmpty);
}

TEST_F(LinuxDeviceTest, NamesDevicesByTheirNumbersWhereNothingElseDoes) {
    use("virtual_server.sysfs", "no names here");
    EXPECT_EQ(listPciBusDevices(0, names_), enumerationFound);
    EXPECT_EQ(names_,
              (NameList{"PCI device 8086:0D57", "PCI device 1AF4:1045", "PCI device 1AF4:1042",
                        "PCI device 1AF4:1041", "PCI device 1AF4:1053", "PCI device 1AF4:1044"}));
    EXPECT_EQ(listChildDescriptions(0, 2, 0, names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"vda"}) << "a disk without a model";
    EXPECT_EQ(listChildFriendlyNames(0, 1, 0, names_), enumerationEmpty);
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationEmpty);
    TemporaryDirectory::write("devices/pci0000:00/0000:00:01.0/device", "0x9999\n");
    EXPECT_EQ(getPciDeviceName(0, 1, 0, name_), enumerationFound);
    EXPECT_EQ(name_, "Unknown Device. VEN:1AF4DEV:1045") << "gone from the system";
}

TEST_F(LinuxDeviceTest, TakesTheKeyboardsOwnNameAndFailsWithoutADescriptionOfTheSystem) {
    use("machine.sysfs", "no names here");
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationFound);
    EXPECT_EQ(names_, NameList{"QEMU USB Keyboard"});
    fs::remove_all("bus");
    EXPECT_EQ(listPciBusDevices(0, names_), enumerationFailed);
    EXPECT_EQ(listUsbDeviceDescriptions(names_), enumerationFailed);
}

TEST_F(LinuxDeviceTest, FindsThisMachinesOwnFunctions) {
    if (!fs::exists("/sys/bus/pci/devices/0000:00:00.0")) {
        GTEST_SKIP() << "this machine shows no PCI functions";
    }
    fillRegisters("/sys", platform_.ring0);
    LinuxDeviceSetup machine;
    platform_.devices.instead = &machine;
    std::size_t onBus0 = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator("/sys/bus/pci/devices")) {
        onBus0 += entry.path().filename().string().rfind("0000:00:", 0) == 0 ? 1 : 0;
    }
    EXPECT_EQ(listPciBusDevices(0, names_), enumerationFound);
    EXPECT_EQ(names_.size(), onBus0);
    for (const std::string& name : names_) {
        EXPECT_EQ(name.find("Unknown Device"), std::string::npos) << name;
    }
    EXPECT_NE(listUsbDeviceDescriptions(names_), enumerationFailed);
}

}  // namespace
}  // namespace vorn
