#include "tests/platform/qpi_test.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "hw/cpuid.h"
#include "hw/ring0.h"
#include "platform/platform.h"
#include "report/report.h"
#include "tests/common/base_clock.h"
#include "tests/common/tolerance.h"

namespace vorn {

namespace {

constexpr std::uint32_t linkDevice = 8;
constexpr std::uint32_t firstBus = 0x0F;
constexpr std::uint32_t lastBus = 0xFF;
constexpr std::uint32_t busStep = 0x10;
constexpr std::size_t mostLinks = 9;

constexpr std::uint32_t registerDeviceId = 0x02;
constexpr std::uint32_t registerLinkRate = 0xD4;
constexpr std::uint16_t linkRateMask = 0x7;  // bits 2..0

// GT/s of each link rate code.
constexpr std::array<double, 8> linkRates{0.0, 0.0, 5.6, 6.4, 7.2, 8.0, 0.0, 9.6};

bool isLinkDevice(std::uint16_t id) {
    constexpr std::array<std::uint16_t, 9> others{0x2F32, 0x2F33, 0x2F3A, 0x2F40, 0x2F43,
                                                  0x2F80, 0x2F83, 0x2F90, 0x2F93};
    return (id >= 0x3C80 && id <= 0x3C9F) || (id >= 0x0E80 && id <= 0x0E9F) ||
           std::find(others.begin(), others.end(), id) != others.end();
}

bool hasLinks(const FamilyModel& processor) {
    return processor.family == 6 &&
           (processor.model == 0x2D || processor.model == 0x3E || processor.model == 0x3F);
}

/// The PCI addresses of the link devices, in bus order, and whether any bus could be read at all.
struct LinkSearch {
    std::vector<std::uint32_t> links;
    bool anyRead = false;
};

LinkSearch findLinks() {
    LinkSearch search;
    for (std::uint32_t bus = firstBus; bus <= lastBus; bus += busStep) {
        const std::uint32_t address = pciAddress(bus, linkDevice, 0);
        std::uint16_t id = 0xFFFF;
        if (platform().ring0.readPciConfigWordChecked(address, registerDeviceId, id) == 0) {
            continue;
        }
        search.anyRead = true;
        if (isLinkDevice(id) && search.links.size() < mostLinks) {
            search.links.push_back(address);
        }
    }
    return search;
}

double nominalRate(std::uint32_t link) {
    std::uint16_t rateRegister = 0;
    platform().ring0.readPciConfigWordChecked(link, registerLinkRate, rateRegister);
    return linkRates[rateRegister & linkRateMask];
}

/// The three texts of the record that the test works on.
struct WorkingTexts {
    std::string status = "Pass";
    std::string code = "Code 123";
    std::string message = "--- QPI Test Completed!!! ---";
};

void skip(WorkingTexts& texts, VORNTestResult& result) {
    texts = {"Skipping QPI rate Test", "999", "Skipping QPI rate Test"};
    result = VORN_NOT_RUN;
}

enum class Mode { failed, displayOnly, passed };

/// Shows the rates of each processor. Passed when one of them is within the tolerance, whatever the
/// others are; else `mode` as it was.
Mode showRates(Report& report, const std::vector<QpiRate>& rates, Mode mode, double tolerance) {
    Report::console();
    Report::console();
    for (std::size_t processor = 0; processor < rates.size(); ++processor) {
        const QpiRate& rate = rates[processor];
        Report::console(" --- Processor #", processor, "  --- ");
        Report::console(" Expected QPI rate: ", rate.expected, " GT/s");
        Report::console(" Detected QPI rate: ", rate.detected, " GT/s");
        Report::console();
        report.log("--- Processor #", processor, "  ---\n");
        report.log("Expected QPI rate: ", rate.expected, " GT/s\n");
        report.log("Detected QPI rate: ", rate.detected, " GT/s\n");
        if (isWithinPercent(rate.detected, rate.expected, tolerance)) {
            mode = Mode::passed;
        }
    }
    return mode;
}

void giveVerdict(Report& report, Mode mode, WorkingTexts& texts, VORNTestResult& result) {
    switch (mode) {
        case Mode::passed:
            report.line("---  QPI link rate test Pass---", "QPI rate test Pass ---\n");
            texts = {"pass", "", ""};
            break;
        case Mode::displayOnly:
            report.log("QPI test Pass ---\n");
            texts = {"pass", "", ""};
            break;
        case Mode::failed:
            Report::console();
            report.line("!!! ---  QPI rate test Fail --- !!!",
                        "\n!!! ---  QPI test Fail --- !!!\n");
            texts = {"Fail", "123", "QPI Test Fail"};
            result = VORN_FAIL;
            break;
    }
}

void testLinks(VORNTestResult& result, const Settings& settings, WorkingTexts& texts,
               std::string& log) {
    Report report(log);
    Report::console(" --- Running QPI Test  ---");
    if (!hasLinks(cpuFamilyModel())) {
        report.both("..QPI rate Test not supported..");
        report.both("..Skipping QPI rate Test..");
        skip(texts, result);
        return;
    }
    std::vector<QpiRate> rates;
    switch (measureQpiRates(rates)) {
        case qpiNoReadSucceeded:
            report.both(" --- Unable to retrieve any QPI Link device id  ---");
            report.both("..Skipping QPI rate Test..");
            skip(texts, result);
            return;
        case qpiNoLinkFound:
            report.line("....QPI rate Test - Not supported....",
                        "..QPI rate Test - Not supported..\n");
            report.both("..Skipping QPI rate Test..");
            skip(texts, result);
            return;
        case qpiDriverUnavailable:
            reportDriverFailureOnConsole();
            reportDriverFailureInLog(log);
            texts = {"Fail", "VORN load driver error", driverFailureError};
            result = VORN_FAIL;
            return;
        default:
            break;
    }
    const bool displayOnly = holdsWord(settings.qpiTolerance, "DISPLAYONLY");
    const double tolerance = displayOnly ? 0.0 : leadingDouble(settings.qpiTolerance);
    const Mode mode =
        showRates(report, rates, displayOnly ? Mode::displayOnly : Mode::failed, tolerance);
    giveVerdict(report, mode, texts, result);
}

}  // namespace

int measureQpiRates(std::vector<QpiRate>& rates) {
    rates.clear();
    const LinkSearch search = findLinks();
    if (!search.anyRead) {
        return qpiNoReadSucceeded;
    }
    if (search.links.empty()) {
        return qpiNoLinkFound;
    }
    for (const std::uint32_t link : search.links) {
        const double expected = nominalRate(link);
        BaseClock clock = measureBaseClockKeepingDriver();
        while (clock.measured == baseClockDisturbed) {
            clock = measureBaseClockKeepingDriver();
        }
        if (clock.measured == driverUnavailable) {
            return qpiDriverUnavailable;
        }
        rates.push_back({expected, expected / clock.expected * clock.measured});
    }
    return static_cast<int>(rates.size());
}

std::string testQpi(VORNTestResult& result, const Settings& settings, TestRecord& record,
                    std::string& log) {
    record.name = "QPI Test";
    record.version = "V1";
    if (!openRing0()) {
        reportDriverFailure(log, record, result);
        throw std::string(driverFailureError);
    }
    WorkingTexts texts;
    testLinks(result, settings, texts, log);
    closeRing0();

    Report report(log);
    if (upperCase(texts.status) == "PASS") {
        Report::console();
        Report::console(texts.message);
        result = VORN_PASS;
    }
    report.log("\n", texts.message, "\n\n");
    record.status = texts.status;
    record.code = texts.code;
    record.message = texts.message;
    return record.code;
}

}  // namespace vorn
