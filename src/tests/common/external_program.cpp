#include "tests/common/external_program.h"

#include <cstdint>

#include "platform/platform.h"
#include "report/report.h"
#include "report/text.h"

namespace vorn {

namespace {

constexpr double shareOfExpectedTime = 0.9;

/// Both times are compared in single precision.
bool endedEarly(std::int64_t milliseconds, int expectedSeconds) {
    const auto elapsed = static_cast<float>(static_cast<double>(milliseconds) / 1000.0);
    return elapsed < static_cast<float>(expectedSeconds * shareOfExpectedTime);
}

}  // namespace

int runExternalProgram(const std::string& path, const std::vector<std::string>& arguments,
                       const std::string& expectedSecondsText, const ExternalProgramLines& lines) {
    CommandInterpreter& interpreter = platform().interpreter;
    Report::console();
    if (!interpreter.fileExists(path)) {
        Report::console(path, " ", lines.notFound);
        return externalProgramNotFound;
    }
    Report::console(path, " ", lines.found);
    Report::console(lines.executing, " ", path);

    std::string commandLine = interpreter.programWord(path);
    for (const std::string& argument : arguments) {
        commandLine += " " + argument;
    }
    Clock& clock = platform().clock;
    const std::int64_t start = clock.processMilliseconds();
    interpreter.execute(commandLine);
    const std::int64_t end = clock.processMilliseconds();
    if (!endedEarly(end - start, leadingInteger(expectedSecondsText))) {
        return externalProgramRan;
    }
    for (const std::string& line : lines.endedEarly) {
        Report::console(line);
    }
    return externalProgramEndedEarly;
}

}  // namespace vorn
