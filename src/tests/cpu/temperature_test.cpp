#include "tests/cpu/temperature_test.h"

#include "report/report.h"

namespace vorn {

namespace {

constexpr double defaultWarningMargin = 5.0;  // degrees

double warningMargin(const Settings& settings) {
    const std::string& text = settings.temperatureWarningTolerance;
    return text.empty() ? defaultWarningMargin : leadingDouble(text);
}

void listSamples(Report& report, const TemperatureMonitor& monitor) {
    for (const TemperatureSample& sample : monitor.samples()) {
        report.both(textOf(" - ", sample.time, " ", sample.test, " --> ", sample.margin,
                           " degrees below maximum"));
    }
    const TemperatureSample& smallest = monitor.smallest();
    report.both(textOf("Smallest margin --> ", smallest.margin, " degrees at ", smallest.time, " (",
                       smallest.test, ")"));
}

}  // namespace

std::string testTemperature(VORNTestResult& result, const Settings& settings, TestRecord& record,
                            std::string& log, TemperatureMonitor& monitor) {
    record.description = "Processor is NOT below its maximum junction temperature";
    record.name = "Temperature Test";
    record.version = "V1";

    Report report(log);
    report.header("Reading Temperature");
    if (monitor.sample(record.name, log) == noTemperatureReading) {
        report.both("There is no valid temperature reading on this machine");
        report.both("Temperature Test Stop.");
        result = VORN_NOT_RUN;
        return {};
    }
    listSamples(report, monitor);
    const double margin = monitor.smallest().margin;
    if (margin <= 0.0) {
        Report::console();
        report.line("Temperature Test Failed!!!", "\nTemperature Test Failed!!!\n\n");
        Report::conclude(result, record,
                         {"Fail", "Code 123", "Temperature Test Failed!!!", VORN_FAIL});
    } else {
        if (margin <= warningMargin(settings)) {
            report.both(textOf("Warning: the margin is not above ", warningMargin(settings),
                               " degrees!!!"));
        }
        Report::console();
        report.line("Temperature Test Passed!!!", "\nTemperature Test Passed!!!\n\n");
        Report::conclude(result, record,
                         {"Pass", "Code 123", "Temperature Test Passed!!!", VORN_PASS});
    }
    Report::console();
    return record.code;
}

}  // namespace vorn
