#include "tests/platform/graphics_device_test.h"

#include <algorithm>
#include <array>
#include <ios>
#include <vector>

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr std::uint32_t hostBridge = pciAddress(0, 0, 0);
constexpr std::uint32_t graphicsDevice = pciAddress(0, 2, 0);
constexpr std::uint16_t expectedVendor = 0x7A6E;

// Graphics control register (GGC) of the host bridge.
constexpr std::uint32_t graphicsControlGen1 = 0x52;
constexpr std::uint32_t graphicsControl = 0x50;

constexpr const char* queryTitle = "--- Querying for Ovrin(R) Integrated Graphics Device (IGD) ---";
constexpr const char* presenceLine = "..Ovrin(R) Integrated Graphics Device presence detected..";
constexpr const char* skippingLine =
    "..Skipping Ovrin(R) Integrated Graphics Device Presence Test..";
constexpr const char* skippingStatus = "Skipping Ovrin(R) Integrated Graphics Device Presence Test";

/// What the registers held.
struct IgdRegisters {
    std::uint16_t vendor = 0;
    std::uint16_t device = 0;
    std::uint8_t revision = 0;
    std::uint32_t translationTable = 0;
    std::uint32_t memoryRange = 0;
    std::uint16_t subsystemVendor = 0;
    std::uint16_t subsystem = 0;
    std::uint16_t videoBios = 0;
    std::uint16_t control = 0;  ///< 0 for a generation that is not asked for it

    /// IVD, bit 1: the device does not claim VGA cycles.
    unsigned vgaDisable() const { return (control >> 1U) & 1U; }

    /// GMS: bits 7..4 in generation 1, else 7..3.
    std::uint32_t modeSelect(GraphicsGeneration generation) const {
        return generation == graphicsCerunGen1 ? (control >> 4U) & 0xFU : (control >> 3U) & 0x1FU;
    }
};

bool hasGraphicsControl(GraphicsGeneration generation) {
    return generation != graphicsNone && generation != graphicsArvo;
}

IgdRegisters readRegisters(GraphicsGeneration generation) {
    Ring0Library& ring0 = platform().ring0;
    IgdRegisters registers;
    registers.vendor = ring0.readPciConfigWord(graphicsDevice, 0x00);
    registers.device = ring0.readPciConfigWord(graphicsDevice, 0x02);
    registers.revision = ring0.readPciConfigByte(graphicsDevice, 0x08);
    registers.translationTable = ring0.readPciConfigDword(graphicsDevice, 0x10);
    registers.memoryRange = ring0.readPciConfigDword(graphicsDevice, 0x18);
    registers.subsystemVendor = ring0.readPciConfigWord(graphicsDevice, 0x2C);
    registers.subsystem = ring0.readPciConfigWord(graphicsDevice, 0x2E);
    registers.videoBios = ring0.readPciConfigWord(graphicsDevice, 0x30);
    if (hasGraphicsControl(generation)) {
        registers.control = ring0.readPciConfigWord(
            hostBridge, generation == graphicsCerunGen1 ? graphicsControlGen1 : graphicsControl);
    }
    return registers;
}

void showPresence(GraphicsGeneration generation) {
    Report::console(presenceLine);
    if (generation == graphicsArvo) {
        Report::console("..on Arvo product..");
    } else if (generation == graphicsQuintorKv) {
        Report::console("..on Quintor KV product..");
    } else {
        Report::console("..on Cerun Gen ", static_cast<int>(generation), " product..");
    }
}

void showHex(const char* label, std::uint32_t value, const char* suffix = "h") {
    Report::console(label, textOf(std::hex, value), suffix);
}

void showRegisters(const IgdRegisters& registers, GraphicsGeneration generation) {
    const std::uint32_t modeSelect = registers.modeSelect(generation);
    Report::console();
    showHex("..IGD Vendor ID --> ", registers.vendor);
    showHex("..IGD Device ID --> ", registers.device);
    showHex("..IGD Revision ID --> ", registers.revision);
    showHex("..IGD Graphics Translation Table, Memory Mapped Range Address --> ",
            registers.translationTable);
    showHex("..IGD Graphics Memory Range Address --> ", registers.memoryRange);
    showHex("..IGD Subsystem Vendor ID --> ", registers.subsystemVendor);
    showHex("..IGD Subsystem ID --> ", registers.subsystem);
    showHex("..IGD Video BIOS ROM Address --> ", registers.videoBios);
    showHex("..IGD Graphics Mode Select --> ", modeSelect);
    showHex("..IGD VGA Disable (IVD) --> ", registers.vgaDisable(), "b");
    Report::console("..IGD Frame Buffer Size based upon returned GMS value --> ",
                    textOf(frameBufferMegabytes(generation, modeSelect)), "MB");
}

template <std::size_t count>
bool isOneOf(std::uint32_t model, const std::array<std::uint32_t, count>& models) {
    return std::find(models.begin(), models.end(), model) != models.end();
}

/// Which query ended the test, between lines of two dots.
void reportQuery(Report& report, IgdOutcome outcome) {
    const std::string query = textOf("..Query ", static_cast<int>(outcome) - 700, "..");
    Report::console();
    Report::console("..");
    Report::console(query);
    Report::console("..");
    report.log("\n..\n", query, "\n..\n");
}

void concludeSkipped(IgdTestResult& result, TestRecord& record) {
    Report::conclude(result.result, record,
                     {skippingStatus, "Code 999", skippingStatus, VORN_NOT_RUN});
}

void reportNotDetected(Report& report) {
    report.line(textOf(" ", queryTitle), textOf(queryTitle, "\n"));
    report.both("..Did not detect Ovrin(R) Integrated Graphics Device (IGD).");
    report.both("..This could be that the test platform is using a discrete graphics card.");
    report.both("..To test IGD, verify that there is an onboard video connector, ");
    report.both("..shutdown the test platform, remove the graphics card, and ");
    report.both("..move video cable from graphics card to onboard video connector ");
    Report::console("..");
    report.both(skippingLine);
    report.both("..");
}

void reportNotSupported(Report& report) {
    report.both(textOf(" ", queryTitle));
    report.both("..Ovrin(R) Integrated Graphics Device not supported on this processor..");
    report.both(skippingLine);
    report.both("..");
}

void reportPresent(Report& report) {
    report.log("\n\n ", queryTitle, "\n",
               "\n..Detected 7A6E as Vendor ID on Device 2 on Ovrin(R) processor..");
    Report::console();
    report.line("..Ovrin(R) Integrated Graphics Device Presence Detection Passed..",
                "\n..Ovrin(R) Integrated Graphics Device Presence Detection Passed..\n\n");
    Report::console();
}

}  // namespace

GraphicsGeneration graphicsGeneration(const std::string& brand, std::uint32_t family,
                                      std::uint32_t model) {
    constexpr std::array<std::uint32_t, 6> arvoModels{0x1C, 0x26, 0x27, 0x35, 0x36, 0x37};
    constexpr std::uint32_t quintorKvModel = 0x37;
    if (family != 6) {
        return graphicsNone;
    }
    if (brand.find("Arvo") != std::string::npos && isOneOf(model, arvoModels)) {
        return graphicsArvo;
    }
    if (brand.find("Quintor") != std::string::npos && model == quintorKvModel) {
        return graphicsQuintorKv;
    }
    switch (model) {
        case 0x25:
            return graphicsCerunGen1;
        case 0x2A:
            return graphicsCerunGen2;
        case 0x3A:
            return graphicsCerunGen3;
        case 0x3C:
        case 0x45:
        case 0x46:
            return graphicsCerunGen4;
        default:
            return graphicsNone;
    }
}

std::uint32_t frameBufferMegabytes(GraphicsGeneration generation, std::uint32_t modeSelect) {
    constexpr std::array<std::uint32_t, 14> gen1Sizes{0,  0,   0,   0,  0,   32,  48,
                                                      64, 128, 256, 96, 160, 224, 352};
    if (generation == graphicsCerunGen1) {
        return modeSelect < gen1Sizes.size() ? gen1Sizes[modeSelect] : 0;
    }
    if (modeSelect == 17) {
        return 1024;
    }
    return modeSelect <= 16 ? 32 * modeSelect : 0;
}

IgdOutcome queryIgd() {
    const FamilyModel processor = cpuFamilyModel();
    const GraphicsGeneration generation =
        graphicsGeneration(cpuBrandString(), processor.family, processor.model);
    if (!openRing0()) {
        Report::console();
        Report::console();
        Report::console("..VORN encountered problem loading VORN0drv.dll..");
        return igdDriverFailure;
    }
    const IgdRegisters registers = readRegisters(generation);
    closeRing0();

    const bool vgaDisabled = registers.vgaDisable() != 0;
    if (registers.vendor != expectedVendor) {
        if (generation == graphicsNone) {
            return igdOtherVendorNoGraphics;
        }
        return vgaDisabled ? igdOtherVendorDisabled : igdOtherVendor;
    }
    if (generation == graphicsNone) {
        return igdNoGraphics;
    }
    Report::console();
    Report::console(" ", queryTitle);
    if (generation == graphicsArvo) {
        showPresence(generation);
        return igdPresent;
    }
    if (vgaDisabled) {
        return igdDisabled;
    }
    showPresence(generation);
    showRegisters(registers, generation);
    return igdPresent;
}

void reportIgdOutcome(IgdOutcome outcome, IgdTestResult& result, TestRecord& record,
                      std::string& log) {
    result.notSupported = 0;
    Report report(log);
    switch (outcome) {
        case igdDriverFailure:
            reportDriverFailure(log, record, result.result);
            break;
        case igdDisabled:
        case igdOtherVendorDisabled:
            reportQuery(report, outcome);
            reportNotDetected(report);
            concludeSkipped(result, record);
            break;
        case igdOtherVendor:
        case igdOtherVendorNoGraphics:
        case igdNoGraphics:
        case igdReserved:
            reportQuery(report, outcome);
            reportNotSupported(report);
            concludeSkipped(result, record);
            result.notSupported = 1;
            break;
        case igdPresent:
            reportPresent(report);
            Report::conclude(result.result, record,
                             {"Pass", "Code 123",
                              "Ovrin(R) Integrated Graphics Device Presence Passed", VORN_PASS});
            break;
    }
}

std::string testGraphicsDevice(VORNTestResult& result, const Settings& /*settings*/,
                               TestRecord& record, std::string& log) {
    record.name = "IGD Test";
    record.version = "V1";
    const IgdOutcome outcome = queryIgd();
    IgdTestResult own;
    reportIgdOutcome(outcome, own, record, log);
    result = own.result;
    if (outcome == igdDriverFailure) {
        throw std::string(driverFailureError);
    }
    return record.code;
}

}  // namespace vorn
