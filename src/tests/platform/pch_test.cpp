#include "tests/platform/pch_test.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "hw/device_enumeration.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

/// Place of a function on bus 0.
struct Place {
    std::uint32_t device;
    std::uint32_t function;

    std::uint32_t address() const { return pciAddress(0, device, function); }
};

constexpr Place hubPlace{31, 0};

// Base class and subclass of a function (PCI class codes).
constexpr std::uint32_t pciRegisterClass = 0x0A;
constexpr std::uint16_t classIde = 0x0101;
constexpr std::uint16_t classSata = 0x0106;
constexpr std::uint16_t classIsaBridge = 0x0601;
constexpr std::uint16_t classPciBridge = 0x0604;

/// None when the function is absent or may not be read.
std::optional<std::uint16_t> classOf(Place place) {
    std::uint16_t classCode = 0;
    if (!probePciFunction(place.address()) ||
        platform().ring0.readPciConfigWordChecked(place.address(), pciRegisterClass, classCode) ==
            0) {
        return std::nullopt;
    }
    return classCode;
}

bool isDiskController(std::uint16_t classCode) {
    return classCode == classIde || classCode == classSata;
}

/// "00:1f.2", as such places are usually written.
std::string textOfPlace(Place place) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "00:%02x.%x", static_cast<unsigned>(place.device),
                  static_cast<unsigned>(place.function));
    return text.data();
}

/// The sections of the census, each a title, its items and their count.
class Census {
public:
    explicit Census(Report& report) : report_(report) {}

    /// Whether every section could be enumerated.
    bool take() {
        NameList names;
        EnumerationStatus status = listPciBusDevices(0, names);
        addSection("Devices on PCI Bus 0", status, names);
        for (std::uint32_t device = 0; device < 32; ++device) {
            for (std::uint32_t function = 0; function < 8; ++function) {
                addFunction({device, function});
            }
        }
        status = listUsbDeviceDescriptions(names);
        addSection("USB Devices", status, names);
        return complete_;
    }

private:
    void addFunction(Place place) {
        const auto classCode = classOf(place);
        if (!classCode) {
            return;
        }
        NameList names;
        if (isDiskController(*classCode)) {
            const auto status = listChildFriendlyNames(0, place.device, place.function, names);
            addSection("Disks behind SATA Controller " + textOfPlace(place), status, names);
        } else if (*classCode == classPciBridge) {
            const auto status = listChildDescriptions(0, place.device, place.function, names);
            const auto bus = pciSecondaryBus(place.address());
            addSection("Devices behind PCI Bridge " + textOfPlace(place) +
                           (bus ? textOf(", PCI Bus ", static_cast<unsigned>(*bus)) : ""),
                       status, names);
        }
    }

    void addSection(const std::string& title, EnumerationStatus status, const NameList& names) {
        report_.header(title);
        if (status == enumerationFailed) {
            report_.both("..Device enumeration failed..");
            complete_ = false;
            return;
        }
        for (const std::string& name : names) {
            report_.both(".." + name);
        }
        report_.both(textOf("..Devices found --> ", names.size()));
    }

    Report& report_;
    bool complete_ = true;
};

/// Shows the hub and, where asked for, the census, and concludes; the driver is open.
void inspectHub(Report& report, bool withCensus, VORNTestResult& result, TestRecord& record) {
    report.header("Reading Platform Controller Hub");
    std::string name;
    EnumerationStatus status = enumerationEmpty;
    if (classOf(hubPlace) == classIsaBridge) {
        status = getPciDeviceName(0, hubPlace.device, hubPlace.function, name);
    }
    if (status == enumerationEmpty) {
        report.both("..Platform Controller Hub not detected..");
        result = VORN_NOT_RUN;
        return;
    }
    if (status == enumerationFailed) {
        report.both("..Device enumeration failed..");
    } else {
        report.both("Detected --> " + name);
    }
    const bool complete = !withCensus || Census(report).take();
    const bool passed = status == enumerationFound && complete;

    const std::string sentence = passed ? "Platform Controller Hub Test Passed!!!"
                                        : "Platform Controller Hub Test Failed!!!";
    Report::console();
    report.line(sentence, "\n" + sentence + "\n\n");
    Report::console();
    Report::conclude(result, record,
                     passed ? Verdict{"Pass", "Code 123", sentence, VORN_PASS}
                            : Verdict{"Fail", "Code 123", sentence, VORN_FAIL});
}

}  // namespace

std::string testPlatformControllerHub(VORNTestResult& result, const Settings& settings,
                                      TestRecord& record, std::string& log) {
    record.description = "Devices of the Platform Controller Hub could NOT be enumerated";
    record.name = "Platform Controller Hub Test";
    record.version = "V1";
    if (!openRing0()) {
        reportDriverFailure(log, record, result);
        throw std::string(driverFailureError);
    }
    Report report(log);
    inspectHub(report, holdsWord(settings.pchEnum, "ENABLE"), result, record);
    closeRing0();
    return record.code;
}

}  // namespace vorn
