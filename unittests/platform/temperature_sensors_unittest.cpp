#include <gtest/gtest.h>

#include <filesystem>

#include "fakes/temporary_directory.h"
#include "platform/linux/temperature_sensors_linux.h"

namespace vorn {
namespace {

/// Files of a recorded sysfs tree, below class/hwmon.
void record(const std::string& device,
            const std::vector<std::pair<std::string, std::string>>& files) {
    const std::string folder = "sys/class/hwmon/" + device;
    std::filesystem::create_directories(folder);
    for (const auto& [name, text] : files) {
        TemporaryDirectory::write(folder + "/" + name, text);
    }
}

std::vector<std::pair<long, long>> readingsOf(const std::string& root) {
    std::vector<std::pair<long, long>> readings;
    for (const TemperatureSensor& sensor : LinuxTemperatureSensors(root).processorSensors()) {
        readings.emplace_back(sensor.current, sensor.critical);
    }
    return readings;
}

TEST(LinuxTemperatureSensors, ReadsTheProcessorsOwnChannelsThatHaveBothValues) {
    const TemporaryDirectory directory;
    EXPECT_TRUE(readingsOf("sys").empty()) << "no sysfs";
    record("hwmon0", {{"name", "acpitz\n"}, {"temp1_input", "99000\n"}, {"temp1_crit", "99000\n"}});
    EXPECT_TRUE(readingsOf("sys").empty()) << "not the processor's";
    record("hwmon1", {{"name", "coretemp\n"},
                      {"temp1_input", "46000\n"},
                      {"temp1_crit", "100000\n"},
                      {"temp1_label", "Package id 0\n"},
                      {"temp2_input", "44000\n"},
                      {"temp2_crit", "101000\n"},
                      {"temp2_max", "80000\n"},
                      {"temp3_input", "43000\n"},
                      {"temp4_input", ""},
                      {"temp4_crit", "100000\n"},
                      {"in1_input", "1000\n"},
                      {"in1_crit", "1000\n"}});
    record("hwmon2",
           {{"name", "k10temp\n"}, {"temp1_input", "-5000\n"}, {"temp1_crit", "70000\n"}});
    record("hwmon3", {{"temp1_input", "1\n"}, {"temp1_crit", "2\n"}});
    EXPECT_EQ(readingsOf("sys"), (std::vector<std::pair<long, long>>{
                                     {46000, 100000}, {44000, 101000}, {-5000, 70000}}));
}

}  // namespace
}  // namespace vorn
