#include "scenes/machine_description.h"

#include <algorithm>
#include <functional>
#include <iterator>
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

    std::uint64_t hex() { return std::stoull(word(), nullptr, 16); }
    std::uint64_t decimal() { return std::stoull(word()); }
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
    bool done() { return (input_ >> std::ws).eof(); }
    /// All that are left.
    template <typename Value>
    std::deque<Value> all(std::uint64_t (Values::*next)()) {
        std::deque<Value> values;
        while (!done()) {
            values.push_back(static_cast<Value>((this->*next)()));
        }
        return values;
    }
    std::uint32_t hex32() { return static_cast<std::uint32_t>(hex()); }
    /// BUS:DEVICE.FUNCTION as a packed address.
    std::uint32_t address() {
        const std::string place = word();
        unsigned bus = 0;
        unsigned device = 0;
        unsigned function = 0;
        if (std::sscanf(place.c_str(), "%x:%x.%x", &bus, &device, &function) != 3) {
            throw std::runtime_error("not a place on the bus: " + place);
        }
        return pciAddress(bus, device, function);
    }
    std::optional<std::uint64_t> decimalOrNone() {
        const std::string value = word();
        return value == "none" ? std::nullopt : std::optional<std::uint64_t>(std::stoull(value));
    }

private:
    std::istringstream input_;
};

using Word = void (*)(FakePlatform& machine, Values& values);

const std::map<std::string, Word>& words() {
    static const std::map<std::string, Word> table{
        {"vendor", [](auto& m, auto& v) { m.processor.setVendor(v.rest()); }},
        {"brand", [](auto& m, auto& v) { m.processor.setBrand(v.rest()); }},
        {"signature",
         [](auto& m, auto& v) {
             const std::uint32_t family = v.hex32();
             const std::uint32_t model = v.hex32();
             m.processor.setSignature(family, model, v.done() ? 0 : v.hex32());
         }},
        {"features",
         [](auto& m, auto& v) {
             const std::uint32_t ecx = v.hex32();
             m.processor.setFeatures(ecx, v.hex32());
         }},
        {"leaf",
         [](auto& m, auto& v) {
             const std::uint32_t leaf = v.hex32();
             CpuidRegisters& registers = m.processor.leaves[{leaf, v.hex32()}];
             for (std::uint32_t* part :
                  {&registers.eax, &registers.ebx, &registers.ecx, &registers.edx}) {
                 *part = v.hex32();
             }
         }},
        {"xcr0", [](auto& m, auto& v) { m.processor.xcr0 = v.hex(); }},
        {"packages",
         [](auto& m, auto& v) { m.processor.packages = static_cast<unsigned>(v.decimal()); }},
        {"ticks",
         [](auto& m, auto& v) {
             for (const std::uint64_t stamp : v.template all<std::uint64_t>(&Values::decimal)) {
                 m.processor.timestamps.push_back(stamp);
             }
         }},
        {"ticks-per-reading",
         [](auto& m, auto& v) {
             const std::uint64_t step = v.decimal();
             for (std::uint64_t reading = 0; reading < 40; ++reading) {
                 m.processor.timestamps.push_back(reading * step);
             }
         }},
        {"initialize",
         [](auto& m, auto& v) {
             m.ring0.initializeResults = v.template all<std::uint32_t>(&Values::decimal);
         }},
        {"status",
         [](auto& m, auto& v) {
             m.ring0.statusResults = v.template all<std::uint32_t>(&Values::decimal);
         }},
        {"msr",
         [](auto& m, auto& v) {
             const std::uint32_t index = v.hex32();
             m.ring0.msrs[index] = v.template all<std::uint64_t>(&Values::hex);
         }},
        {"refuse-msr-writes", [](auto& m, auto&) { m.ring0.refuseMsrWrites = true; }},
        {"pci-word",
         [](auto& m, auto& v) {
             const std::uint32_t address = v.address();
             const std::uint32_t offset = v.hex32();
             m.ring0.setPciWord(address, offset, static_cast<std::uint16_t>(v.hex()));
         }},
        {"pci-dword",
         [](auto& m, auto& v) {
             const std::uint32_t address = v.address();
             const std::uint32_t offset = v.hex32();
             m.ring0.setPciDword(address, offset, v.hex32());
         }},
        {"refuse-checked-pci", [](auto& m, auto&) { m.ring0.refuseCheckedPciReads = true; }},
        {"now",
         [](auto& m, auto& v) { m.clock.nowNanoseconds = static_cast<std::int64_t>(v.decimal()); }},
        {"per-look",
         [](auto& m, auto& v) {
             m.clock.nanosecondsPerLook = static_cast<std::int64_t>(v.decimal());
         }},
        {"counter-frequency",
         [](auto& m, auto& v) { m.clock.frequency = static_cast<std::int64_t>(v.decimal()); }},
        {"system-version",
         [](auto& m, auto& v) {
             const std::optional<std::uint64_t> major = v.decimalOrNone();
             m.memory.version.reset();
             if (major.has_value()) {
                 const auto minor = static_cast<std::uint32_t>(v.decimal());
                 const auto pack = v.done() ? 0U : static_cast<std::uint32_t>(v.decimal());
                 m.memory.version = SystemVersion{static_cast<std::uint32_t>(*major), minor, pack};
             }
         }},
        {"installed-kilobytes", [](auto& m, auto& v) { m.memory.installed = v.decimalOrNone(); }},
        {"managed-bytes",
         [](auto& m, auto& v) {
             const std::optional<std::uint64_t> total = v.decimalOrNone();
             m.memory.managed.reset();
             if (total.has_value()) {
                 m.memory.managed = MemoryStatus{*total, v.decimal()};
             }
         }},
        {"granted-blocks", [](auto& m, auto& v) { m.memory.grantedBlocks = v.decimal(); }},
        {"granted-locks", [](auto& m, auto& v) { m.memory.grantedLocks = v.decimal(); }},
        {"program", [](auto& m, auto& v) { m.interpreter.existingFiles.push_back(v.rest()); }},
        {"program-answers",
         [](auto& m, auto& v) { m.interpreter.result = static_cast<int>(v.decimal()); }},
        {"sensor",
         [](auto& m, auto& v) {
             const auto current = static_cast<long>(v.decimal());
             m.temperatureSensors.sensors.push_back({current, static_cast<long>(v.decimal())});
         }},
        {"display",
         [](auto& m, auto& v) {
             m.display.there = v.word() == "present";
             if (!v.done()) {
                 m.display.mode.width = static_cast<std::uint32_t>(v.decimal());
                 m.display.mode.height = static_cast<std::uint32_t>(v.decimal());
                 m.display.mode.orientation = static_cast<std::uint32_t>(v.decimal());
             }
         }},
    };
    return table;
}

}  // namespace

void describeMachine(FakePlatform& machine, const std::string& line) {
    Values values(line);
    const auto found = words().find(values.word());
    if (found == words().end()) {
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
