#include "platform/linux/temperature_sensors_linux.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

namespace vorn {

namespace {

namespace fs = std::filesystem;

// The kernel's hwmon drivers (Documentation/hwmon) whose sensors sit in the processor.
constexpr std::array<std::string_view, 5> processorDrivers{"coretemp", "k10temp", "k8temp",
                                                           "via_cputemp", "zenpower"};

bool measuresTheProcessor(const fs::path& device) {
    std::ifstream file(device / "name");
    std::string name;
    file >> name;
    return std::find(processorDrivers.begin(), processorDrivers.end(), name) !=
           processorDrivers.end();
}

/// The number in a file; none when the file is absent or the driver has no value at this moment.
std::optional<long> numberIn(const fs::path& path) {
    std::ifstream file(path);
    long number = 0;
    if (file >> number) {
        return number;
    }
    return std::nullopt;
}

/// The entries of a folder in the order of their names; empty when it cannot be read.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

}  // namespace

LinuxTemperatureSensors::LinuxTemperatureSensors(std::string sysfsRoot)
    : sysfsRoot_(std::move(sysfsRoot)) {}

std::vector<TemperatureSensor> LinuxTemperatureSensors::processorSensors() {
    constexpr std::string_view inputEnd = "_input";
    std::vector<TemperatureSensor> sensors;
    for (const fs::path& device : entriesOf(sysfsRoot_ + "/class/hwmon")) {
        if (!measuresTheProcessor(device)) {
            continue;
        }
        for (const fs::path& input : entriesOf(device)) {
            const std::string name = input.filename().string();
            if (!name.starts_with("temp") || !name.ends_with(inputEnd)) {
                continue;
            }
            const std::string channel = name.substr(0, name.size() - inputEnd.size());
            const std::optional<long> current = numberIn(input);
            const std::optional<long> critical = numberIn(device / (channel + "_crit"));
            if (current && critical) {
                sensors.push_back({*current, *critical});
            }
        }
    }
    return sensors;
}

}  // namespace vorn
