#include "tests/platform/rotation_test.h"

#include <cstdint>
#include <utility>

#include "platform/platform.h"
#include "report/report.h"

namespace vorn {

namespace {

constexpr std::uint32_t orientationDefault = 0;
constexpr std::uint32_t orientationLast = 3;  // 270 degrees

/// In seconds before the first run, in milliseconds from then on.
std::uint32_t& stepDelay() {
    static std::uint32_t delay = 4;
    return delay;
}

void turnTo(DisplayMode& mode, std::uint32_t orientation) {
    std::swap(mode.width, mode.height);
    mode.orientation = orientation;
    platform().display.changeMode(mode);
}

}  // namespace

int rotateDisplay() {
    const std::string dashes(41, '-');
    Report::console();
    Report::console(" --- Preparing for Rotation Test ---");
    Report::console();
    Report::console(dashes);
    Report::console("..Do not interrupt test during rotation..");
    Report::console(dashes);

    std::uint32_t& delay = stepDelay();
    delay = delay * 1000U - 1000U;
    Clock& clock = platform().clock;
    clock.sleepMilliseconds(delay);

    DisplayMode mode;
    platform().display.readMode(mode);
    for (std::uint32_t orientation = 1; orientation <= orientationLast; ++orientation) {
        turnTo(mode, orientation);
        clock.sleepMilliseconds(delay);
    }
    turnTo(mode, orientationDefault);
    return 0;
}

std::string testRotation(VORNTestResult& result, const Settings& /*settings*/, TestRecord& record,
                         std::string& log) {
    record.name = "Rotation Test";
    record.version = "V1";
    rotateDisplay();

    Report report(log);
    Report::console();
    report.line("..Rotating Display Passed..", "\n..Rotating Display Passed..\n\n");
    Report::console();
    Report::conclude(result, record, {"Pass", "Code 123", "Rotating Display Passed", VORN_PASS});
    return record.code;
}

}  // namespace vorn
