// The enumeration over the devices that Linux describes: recorded trees.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
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

/// The configuration registers of the functions that are laid out.
void fillRegisters(FakeRing0& ring0) {
    for (const fs::directory_entry& entry : fs::directory_iterator("bus/pci/devices")) {
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
        TemporaryDirectory::write(
            "pci.ids",
            "# a list\n1af4  Maker A\n\t1041  Card\n\t\t1af4 1100  Card of a machine\n"
            "1b36  Maker B\n8086  Maker C\n\t2918  Hub\n\t2922  SATA\n"
            "C 06  Bridge\n\t000c  Not a device\n");
        TemporaryDirectory::write("usb.ids", "0627  Maker D\n\t0001  Keyboard\n");
    }

    void use(const std::string& recording, const std::string& nameFolder = ".") {
        layOut(recording);
        setup_.emplace(".", std::vector<std::string>{"absent", nameFolder, "/also/absent"});
        platform_.emplace(&*setup_);
        platform_->ring0.initialize();
        fillRegisters(platform_->ring0);
    }

    /// What an operation put into names_; its status in brackets where it found nothing.
    NameList found(EnumerationStatus status) const {
        return status == enumerationFound ? names_ : NameList{textOf("(", status, ")")};
    }

    TemporaryDirectory directory_;
    std::optional<LinuxDeviceSetup> setup_;
    std::optional<FakePlatform> platform_;
    NameList names_;
};

TEST_F(LinuxDeviceTest, EnumeratesAMachineWithDiskCardAndKeyboard) {
    use("machine.sysfs");
    EXPECT_EQ(found(listPciBusDevices(0, names_)),
              (NameList{"Maker C device 29C0", "Maker B device 000C", "Maker B device 000D",
                        "Maker C Hub", "Maker C SATA", "Maker C device 2930"}));
    EXPECT_EQ(found(listPciBusDevices(1, names_)), NameList{"Maker A Card"});
    EXPECT_EQ(found(listChildFriendlyNames(0, 31, 2, names_)), NameList{"DISK-500"});
    EXPECT_EQ(found(listChildDescriptions(0, 31, 2, names_)), NameList{"DISK-500"});
    EXPECT_EQ(found(listChildDescriptions(0, 4, 0, names_)), NameList{"Maker A Card"});  // a bridge
    EXPECT_EQ(found(listChildDescriptions(0, 5, 0, names_)), NameList{"Maker D Keyboard"});
    EXPECT_EQ(found(listUsbDeviceDescriptions(names_)), NameList{"Maker D Keyboard"}) << "no hubs";

    // What the system takes away is gone at once; a controller stands in for want of a disk.
    fs::remove("block/sda");
    EXPECT_EQ(found(listChildFriendlyNames(0, 31, 2, names_)), NameList{"Maker C SATA"});
    EXPECT_EQ(found(listChildDescriptions(0, 31, 2, names_)), NameList{"(0)"});
}

TEST_F(LinuxDeviceTest, NamesDevicesByTheirNumbersWhereNothingElseDoes) {
    use("virtual_server.sysfs", "no names here");
    EXPECT_EQ(found(listPciBusDevices(0, names_)),
              (NameList{"PCI device 8086:0D57", "PCI device 1AF4:1045", "PCI device 1AF4:1042",
                        "PCI device 1AF4:1041", "PCI device 1AF4:1053", "PCI device 1AF4:1044"}));
    EXPECT_EQ(found(listChildDescriptions(0, 2, 0, names_)), NameList{"vda"}) << "without a model";
    EXPECT_EQ(found(listChildFriendlyNames(0, 1, 0, names_)), NameList{"(0)"});
    EXPECT_EQ(found(listUsbDeviceDescriptions(names_)), NameList{"(0)"});
    TemporaryDirectory::write("devices/pci0000:00/0000:00:01.0/device", "0x9999\n");
    EXPECT_EQ(found(listPciBusDevices(0, names_))[1], "Unknown Device. VEN:1AF4DEV:1045");
}

TEST_F(LinuxDeviceTest, TakesTheKeyboardsOwnNameAndFailsWithoutADescriptionOfTheSystem) {
    use("machine.sysfs", "no names here");
    EXPECT_EQ(found(listUsbDeviceDescriptions(names_)), NameList{"QEMU USB Keyboard"});
    fs::remove_all("bus");
    EXPECT_EQ(found(listPciBusDevices(0, names_)), NameList{"(-1)"});
    EXPECT_EQ(found(listUsbDeviceDescriptions(names_)), NameList{"(-1)"});
}

}  // namespace
}  // namespace vorn
