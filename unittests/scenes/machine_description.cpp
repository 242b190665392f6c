#include "scenes/machine_description.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "hw/ring0.h"

namespace vorn {

namespace {

/// The values of a line, read in turn.
class Values {
public:
    explicit Values(const std::string& text) : input_(text) {}

    bool done() { return (input_ >> std::ws).eof(); }
    std::string word() {
        std::string value;
        if (!(input_ >> value)) {
            throw std::runtime_error("a value is missing");
        }
        return value;
    }
    /// The text after one blank, with the blanks that it begins and ends with.
    std::string rest() {
        std::string value;
        input_.get();
        std::getline(input_, value);
        return value;
    }
    template <typename Number = std::uint32_t>
    Number hex() {
        return static_cast<Number>(std::stoull(word(), nullptr, 16));
    }
    template <typename Number>
    Number decimal() {
        return static_cast<Number>(std::stoull(word()));
    }
    /// All that are left.
    template <typename Number>
    std::deque<Number> all(int base) {
        std::deque<Number> values;
        while (!done()) {
            values.push_back(static_cast<Number>(std::stoull(word(), nullptr, base)));
        }
        return values;
    }
    /// BUS:DEVICE.FUNCTION as a packed address.
    std::uint32_t address() {
        unsigned bus = 0;
        unsigned device = 0;
        unsigned function = 0;
        if (std::sscanf(word().c_str(), "%x:%x.%x", &bus, &device, &function) != 3) {
            throw std::runtime_error("not a place on the bus");
        }
        return pciAddress(bus, device, function);
    }
    /// The numbers that are left; nothing for "none".
    std::optional<std::vector<std::uint64_t>> numbersOrNone() {
        const std::string first = word();
        if (first == "none") {
            return std::nullopt;
        }
        const std::deque<std::uint64_t> more = all<std::uint64_t>(10);
        std::vector<std::uint64_t> numbers{std::stoull(first)};
        numbers.insert(numbers.end(), more.begin(), more.end());
        numbers.resize(3);
        return numbers;
    }

private:
    std::istringstream input_;
};

void setLeaf(FakePlatform& machine, Values& values) {
    const auto leaf = values.hex();
    CpuidRegisters& registers = machine.processor.leaves[{leaf, values.hex()}];
    for (std::uint32_t* part : {&registers.eax, &registers.ebx, &registers.ecx, &registers.edx}) {
        *part = values.hex();
    }
}

void setVersion(FakePlatform& machine, Values& values) {
    machine.memory.version.reset();
    if (const auto numbers = values.numbersOrNone()) {
        const auto part = [&](std::size_t i) { return static_cast<std::uint32_t>((*numbers)[i]); };
        machine.memory.version = SystemVersion{part(0), part(1), part(2)};
    }
}

void setInstalled(FakePlatform& machine, Values& values) {
    const auto numbers = values.numbersOrNone();
    machine.memory.installed = numbers ? std::optional(numbers->front()) : std::nullopt;
}

void setManaged(FakePlatform& machine, Values& values) {
    const auto numbers = values.numbersOrNone();
    machine.memory.managed =
        numbers ? std::optional(MemoryStatus{(*numbers)[0], (*numbers)[1]}) : std::nullopt;
}

void setDisplay(FakePlatform& machine, Values& values) {
    machine.display.there = values.word() == "present";
    if (const std::deque<std::uint32_t> mode = values.all<std::uint32_t>(10); mode.size() == 3) {
        machine.display.mode = {mode[0], mode[1], mode[2]};
    }
}

void addDevice(FakePlatform& machine, Values& values) {
    const std::vector<FakeDevice>& devices = machine.devices.devices;
    const std::string instanceId = values.word();
    const std::string parent = values.word();
    const auto found = std::find_if(devices.begin(), devices.end(), [&](const FakeDevice& device) {
        return device.instanceId == parent;
    });
    if (found == devices.end() && parent != "-") {
        throw std::runtime_error("no device " + parent);
    }
    machine.devices.add(instanceId, values.rest(),
                        parent == "-" ? -1 : static_cast<int>(found - devices.begin()));
}

using M = FakePlatform;
using V = Values;

// Values are read in the order in which they stand: no two of them in one call.
const std::map<std::string, void (*)(M& machine, V& values)> words{
    {"vendor", [](M& m, V& v) { m.processor.setVendor(v.rest()); }},
    {"brand", [](M& m, V& v) { m.processor.setBrand(v.rest()); }},
    {"signature",
     [](M& m, V& v) {
         std::deque<std::uint32_t> parts = v.all<std::uint32_t>(16);
         parts.resize(3);
         m.processor.setSignature(parts[0], parts[1], parts[2]);
     }},
    {"features",
     [](M& m, V& v) {
         const auto ecx = v.hex();
         m.processor.setFeatures(ecx, v.hex());
     }},
    {"leaf", setLeaf},
    {"xcr0", [](M& m, V& v) { m.processor.xcr0 = v.hex(); }},
    {"packages", [](M& m, V& v) { m.processor.packages = v.decimal<unsigned>(); }},
    {"ticks", [](M& m, V& v) { m.processor.timestamps = v.all<std::uint64_t>(10); }},
    {"ticks-per-reading",
     [](M& m, V& v) {
         const auto step = v.decimal<std::uint64_t>();
         for (std::uint64_t reading = 0; reading < 40; ++reading) {
             m.processor.timestamps.push_back(reading * step);
         }
     }},
    {"initialize", [](M& m, V& v) { m.ring0.initializeResults = v.all<std::uint32_t>(10); }},
    {"status", [](M& m, V& v) { m.ring0.statusResults = v.all<std::uint32_t>(10); }},
    {"msr",
     [](M& m, V& v) {
         const auto index = v.hex();
         m.ring0.msrs[index] = v.all<std::uint64_t>(16);
     }},
    {"refuse-msr-writes", [](M& m, V&) { m.ring0.refuseMsrWrites = true; }},
    {"pci-word",
     [](M& m, V& v) {
         const auto address = v.address();
         const auto offset = v.hex();
         m.ring0.setPciWord(address, offset, v.hex<std::uint16_t>());
     }},
    {"pci-dword",
     [](M& m, V& v) {
         const auto address = v.address();
         const auto offset = v.hex();
         m.ring0.setPciDword(address, offset, v.hex());
     }},
    {"refuse-checked-pci", [](M& m, V&) { m.ring0.refuseCheckedPciReads = true; }},
    {"now", [](M& m, V& v) { m.clock.nowNanoseconds = v.decimal<std::int64_t>(); }},
    {"per-look", [](M& m, V& v) { m.clock.nanosecondsPerLook = v.decimal<std::int64_t>(); }},
    {"breaks-at", [](M& m, V& v) { m.clock.breaksAt = v.decimal<std::int64_t>(); }},
    {"counter-frequency", [](M& m, V& v) { m.clock.frequency = v.decimal<std::int64_t>(); }},
    {"system-version", setVersion},
    {"installed-kilobytes", setInstalled},
    {"managed-bytes", setManaged},
    {"granted-blocks", [](M& m, V& v) { m.memory.grantedBlocks = v.decimal<std::uint64_t>(); }},
    {"granted-locks", [](M& m, V& v) { m.memory.grantedLocks = v.decimal<std::uint64_t>(); }},
    {"program", [](M& m, V& v) { m.interpreter.existingFiles.push_back(v.rest()); }},
    {"program-answers", [](M& m, V& v) { m.interpreter.result = v.decimal<int>(); }},
    {"program-takes",
     [](M& m, V& v) {
         m.interpreter.program = [&m, times = v.all<std::uint32_t>(10)]() mutable {
             m.clock.sleepMilliseconds(times.front());
             times.pop_front();
         };
     }},
    {"device", addDevice},
    {"device-name",
     [](M& m, V& v) {
         m.devices.devices.back().properties[DeviceProperty::friendlyName] = v.rest();
     }},
    {"device-class",
     [](M& m, V& v) { m.devices.devices.back().properties[DeviceProperty::classGuid] = v.rest(); }},
    {"device-on-usb", [](M& m, V&) { m.devices.devices.back().usb = true; }},
    {"failing-opening", [](M& m, V& v) { m.devices.failOpening = v.decimal<int>(); }},
    {"sensor",
     [](M& m, V& v) {
         const auto current = v.decimal<long>();
         m.temperatureSensors.sensors.push_back({current, v.decimal<long>()});
     }},
    {"display", setDisplay},
    {"decimal-comma", [](M& m, V&) { m.hostLocale.emplace(); }},
};

}  // namespace

void describeMachine(FakePlatform& machine, const std::string& line) {
    Values values(line);
    const auto found = words.find(values.word());
    if (found == words.end()) {
        throw std::runtime_error("what of the machine is this: " + line);
    }
    found->second(machine, values);
    if (!values.done()) {
        throw std::runtime_error("more than is understood: " + line);
    }
}

void describeSetting(Settings& settings, const std::string& line) {
    const std::string key = "@" + line.substr(0, line.find('='));
    const auto fill = [&](const auto& keys) {
        const auto found = std::find_if(std::begin(keys), std::end(keys),
                                        [&](const SettingKey& row) { return row.key == key; });
        if (found == std::end(keys) || line.find('=') == std::string::npos) {
            return false;
        }
        settings.*(found->setting) = line.substr(line.find('=') + 1);
        return true;
    };
    if (!fill(generalKeys) && !fill(processorKeys)) {
        throw std::runtime_error("no setting: " + line);
    }
}

}  // namespace vorn
