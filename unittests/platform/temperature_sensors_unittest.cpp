#include <gtest/gtest.h>

#include <sstream>

#include "fakes/temporary_directory.h"
#include "platform/linux/temperature_sensors_linux.h"

namespace vorn {
namespace {

TEST(LinuxTemperatureSensors, ReadsTheProcessorsOwnChannelsThatHaveBothValues) {
    const TemporaryDirectory directory;
    const auto readings = [] {
        std::vector<std::pair<long, long>> result;
        for (const TemperatureSensor& sensor : LinuxTemperatureSensors("sys").processorSensors()) {
            result.emplace_back(sensor.current, sensor.critical);
        }
        return result;
    };
    EXPECT_TRUE(readings().empty()) << "no sysfs";
    std::istringstream recorded(
        "0/name=acpitz 0/temp1_input=99000 0/temp1_crit=99000 "  // not the processor's
        "1/name=coretemp 1/temp1_input=46000 1/temp1_crit=100000 1/temp1_label=Package "
        "1/temp2_input=44000 1/temp2_crit=101000 1/temp2_max=80000 1/temp3_input=43000 "
        "1/temp4_input= 1/temp4_crit=100000 1/in1_input=1000 1/in1_crit=1000 "
        "2/name=k10temp 2/temp1_input=-5000 2/temp1_crit=70000 "
        "3/temp1_input=1 3/temp1_crit=2");
    for (std::string file; recorded >> file;) {
        const std::size_t equals = file.find('=');
        TemporaryDirectory::write("sys/class/hwmon/hwmon" + file.substr(0, equals),
                                  file.substr(equals + 1) + "\n");
    }
    EXPECT_EQ(readings(), (std::vector<std::pair<long, long>>{
                              {46000, 100000}, {44000, 101000}, {-5000, 70000}}));
}

}  // namespace
}  // namespace vorn
