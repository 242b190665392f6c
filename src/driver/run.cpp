#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include "config/configuration.h"
#include "config/settings.h"
#include "driver/output_files.h"
#include "driver/sequence.h"
#include "interface/catalogue.h"
#include "interface/common_runner.h"
#include "platform/numeric_locale.h"
#include "platform/platform.h"
#include "report/report.h"
#include "tests/cpu/genuine_processor_test.h"
#include "vorn/vorn.h"

namespace vorn {

namespace {

std::string localTime() {
    return localTimeText(platform().clock.wallSeconds());
}

/// Processors of this run: a positive "@CPUCount", else the packages of the machine.
std::int64_t processorCount(const Settings& settings) {
    const std::int64_t configured = leadingInteger64(settings.cpuCount);
    return configured > 0 ? configured : platform().processor.packageCount();
}

bool stopsOnFail(const Settings& settings) {
    return !holdsWord(settings.stopOnFail, "NO") && !holdsWord(settings.stopOnFail, "FALSE") &&
           !holdsWord(settings.stopOnFail, "DISABLE");
}

/// One call of run(): its own configuration, files, records and verdict.
class Run : private TestObserver {
public:
    explicit Run(std::string label);

    int execute();

private:
    void start();
    void runSteps();
    void runStep(const RunStep& step);
    void runOneTest(const CatalogueEntry& entry);
    bool watchesTemperature() const;
    void sampleTemperature();
    void writeNewSamples();
    void finish();
    int stopAfterFailure(const std::string& failure);

    void testBegins(Test test) override;
    void testEnded(const TestOutcome& outcome) override;

    void takeStatusFrom(const std::string& failure);
    void writeSummaryLine(const char* status);
    void showSummary();
    void waitForQuit();
    std::int64_t elapsedSeconds() const;
    void announce(const std::string& text, const std::string& fileEnds);

    std::string label_;
    bool mpMode_;
    std::int64_t startCount_;
    std::unique_ptr<Configuration> configuration_;
    const Settings& settings_;
    bool multiProcessor_;

    TextData reportData_;
    TextData resultsData_;
    TextData summaryData_;
    OutputFile report_;
    OutputFile summary_;
    ResultsFile results_;
    PassFailFile passFail_;

    // Filled by nobody: the sequence does not call these tests, and an empty code counts as 0.
    TestRecord genuineRecord_;
    TestRecord brandRecord_;
    TestRecord frequencyRecord_;

    TemperatureMonitor temperature_;
    std::size_t samplesWritten_ = 0;
    std::string lastTestName_;

    unsigned processorAtBegin_ = 0;
    bool graphicsDevicePassed_ = false;
    bool failed_ = false;
    int status_ = 0;
};

Run::Run(std::string label)
    : label_(std::move(label)),
      mpMode_(label_ == "MP" || label_ == "mp"),
      startCount_(platform().clock.performanceCounter()),
      configuration_(loadConfiguration()),
      settings_(configuration_->settings),
      multiProcessor_(processorCount(settings_) > 1),
      report_(reportData_),
      summary_(summaryData_),
      results_(resultsData_, ResultsFile::formatOf(settings_.outFileFormat)),
      passFail_(settings_) {}

int Run::execute() {
    start();
    try {
        runSteps();
    } catch (const std::string& failure) {
        return stopAfterFailure(failure);
    }
    finish();
    return status_;
}

void Run::start() {
    const GenuineProcessorTest genuineProcessor;  // reads the vendor into the process's cache
    passFail_.begin();
    const std::string startTime = localTime();
    results_.begin(label_, startTime);
    if (multiProcessor_) {
        report_.open(reportFileName, Opening::append);
        summary_.open(summaryFileName, Opening::append);
    } else {
        report_.open(reportFileName, Opening::replace);
        summary_.open(summaryFileName, Opening::replace);
        summary_.write(
            "\n    ---------------\n"
            "    --- Summary ---\n"
            "    ---------------\n"
            "\nProcessor\tStatus\n");
    }

    const std::string dashes(mpMode_ ? 35 : 27, '-');
    const std::string title = mpMode_ ? "--- Multi Processor Stress Test ---"
                                      : "--- Testing Processor " + label_ + " ---";
    Report::console();
    Report::console(dashes);
    Report::console(title);
    Report::console(dashes);
    Report::console();
    report_.write("\n" + dashes + "\n" + title + "\n" + dashes + "\n\n");

    announce(textOf("--- VORN64 - rev", revision, " ---"), "\n\n");
    announce("--- Start Time:" + startTime + "---", "\n\n");
    if (holdsWord(settings_.skipConfig, "YES")) {
        announce("--- Skipping Config ---", "\n\n");
    }
}

void Run::runSteps() {
    if (mpMode_) {
        runOneTest(*findInCatalogue(MP_STRESS));
        return;
    }
    for (const RunStep& step : runSequence()) {
        runStep(step);
    }
    temperature_.close();
}

void Run::runStep(const RunStep& step) {
    if (step.guard == StepGuard::graphicsDevicePassed && !graphicsDevicePassed_) {
        return;
    }
    if (step.guard == StepGuard::singleProcessor && multiProcessor_) {
        announce("--- Detected Multi-Processor System - CPU Stress Test Disabled ---", "\n\n");
        return;
    }
    if (!isStepEnabled(step, settings_)) {
        if (step.disabledLine != nullptr) {
            announce(step.disabledLine, "\n\n");
        }
        return;
    }
    const bool watched = watchesTemperature();
    runOneTest(*findInCatalogue(step.test));
    if (step.test == CPU_LOAD && watched) {
        runOneTest(*findInCatalogue(TEMPERATURE));
    }
}

void Run::runOneTest(const CatalogueEntry& entry) {
    VORNTestResult result = VORN_NOT_RUN;
    try {
        runCommon(entry, result, settings_, configuration_->document, resultsData_, reportData_,
                  {startCount_, watchesTemperature(), &temperature_}, this);
    } catch (const std::string& failure) {
        if (stopsOnFail(settings_)) {
            throw;
        }
        failed_ = true;
        takeStatusFrom(failure);
        sampleTemperature();
        return;
    }
    if (result == VORN_FAIL) {
        failed_ = true;
    }
    if (entry.test == IGD) {
        graphicsDevicePassed_ = result == VORN_PASS;
    }
    sampleTemperature();
}

/// Whether readings are wanted and there are any to be had.
bool Run::watchesTemperature() const {
    return holdsWord(settings_.temperatureTest, "ENABLE") && temperature_.holdsReading();
}

void Run::sampleTemperature() {
    if (watchesTemperature()) {
        std::string unused;
        temperature_.sample(lastTestName_, unused);
        writeNewSamples();
    }
}

void Run::writeNewSamples() {
    const std::vector<TemperatureSample>& samples = temperature_.samples();
    for (; samplesWritten_ < samples.size(); ++samplesWritten_) {
        results_.add(samples[samplesWritten_]);
    }
}

void Run::testBegins(Test /*test*/) {
    processorAtBegin_ = platform().processor.currentLogicalProcessor();
}

void Run::testEnded(const TestOutcome& outcome) {
    std::string processors;
    if (isSwitchedOn(settings_.trackCpu)) {
        processors =
            textOf(processorAtBegin_, " to ", platform().processor.currentLogicalProcessor());
    }
    results_.add(outcome, processors);
    lastTestName_ = outcome.record.name;
    writeNewSamples();
    if (isSwitchedOn(settings_.outputResultsText)) {
        report_.write(outcome.log);
    }
}

void Run::finish() {
    const std::string endTime = localTime();
    const std::int64_t seconds = elapsedSeconds();
    announce("--- Test End Time:" + endTime + "---", "\n\n\n\n");
    Report::console("Total VORN test execution time was", seconds, " seconds");
    writeSummaryLine(failed_ ? "Fail" : "Pass");
    results_.finish(endTime, seconds, failed_ ? "FAILED" : "PASSED");
    if (!failed_) {
        passFail_.pass();
    }
    CommandInterpreter& interpreter = platform().interpreter;
    if (passFail_.isWritten()) {
        interpreter.execute(interpreter.moveCommand() + " t_passfail.txt " + passFailFileName);
    }
    if (results_.format() == ResultsFile::Format::text && results_.isSound()) {
        interpreter.execute(interpreter.showCommand() + " " + resultsTextFileName);
    }
    Report::console(failed_ ? "\t\t--- VORN64 FAILED ---" : "\t\t--- VORN64 PASSED ---");
    showSummary();
    if (holdsWord(settings_.generatePauseApp, "TRUE")) {
        waitForQuit();
    }
}

int Run::stopAfterFailure(const std::string& failure) {
    const std::string endTime = localTime();
    report_.write("\n--- Test End Time: " + endTime + "---\n\n");
    writeSummaryLine("Fail");
    takeStatusFrom(failure);
    results_.finish(endTime, elapsedSeconds(), "FAILED");
    Report::console();
    Report::console("\t\t--- VORN64 FAILED ---");
    Report::console();
    showSummary();
    return status_;
}

void Run::takeStatusFrom(const std::string& failure) {
    struct Source {
        const char* word;
        const TestRecord& record;
    };
    for (const Source& source : {Source{"MFG", genuineRecord_}, Source{"Brand", brandRecord_},
                                 Source{"Frequency", frequencyRecord_}}) {
        if (failure.find(source.word) != std::string::npos) {
            status_ = std::atoi(source.record.code.c_str());
        }
    }
}

void Run::writeSummaryLine(const char* status) {
    if (multiProcessor_ && !mpMode_) {
        summary_.write("    " + label_ + "\t\t" + status + "\n");
    }
}

void Run::showSummary() {
    if (!isSwitchedOn(settings_.mpSummary)) {
        return;
    }
    std::ifstream summary(summaryFileName);
    const std::string failColumn = "\t\tFail";
    for (std::string line; std::getline(summary, line);) {
        const std::size_t column = line.rfind(failColumn);
        if (!settings_.mpFailText.empty() && column != std::string::npos &&
            column + failColumn.size() == line.size()) {
            line.replace(column + 2, std::string::npos, settings_.mpFailText);
        }
        Report::console(line);
    }
}

void Run::waitForQuit() {
    reportStream() << "Please press 'q' <ENTER> to quit:" << std::flush;
    std::string answer;
    while (std::cin >> answer && answer.front() != 'q' && answer.front() != 'Q') {
    }
}

std::int64_t Run::elapsedSeconds() const {
    Clock& clock = platform().clock;
    return (clock.performanceCounter() - startCount_) / clock.performanceFrequency();
}

/// A line of the run itself: on the console with an end of line, in the report file between a line
/// end and `fileEnds`.
void Run::announce(const std::string& text, const std::string& fileEnds) {
    Report::console(text);
    report_.write("\n" + text + fileEnds);
}

}  // namespace

}  // namespace vorn

int run(int argc, char** argv) {
    const vorn::NumericLocale numbers;
    // Before anything can fail, the configuration included.
    vorn::PassFailFile::removeFormer();
    return vorn::Run(argc < 2 ? "1" : argv[1]).execute();
}
