#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "fakes/ran_test.h"
#include "tests/platform/graphics_visual_test.h"

namespace vorn {
namespace {

const std::string title = "\n --- Running 2D/3D Graphics Visual Test --- \n\n";
const std::string found2d =
    "\nflat.exe ..2D Graphics Visual Test Binary found..\n..Executing.. flat.exe\n";
const std::string found3d =
    "\nC:\\3 d\\x.exe ..3D Graphics Visual Test Binary found..\n..Executing.. C:\\3 d\\x.exe\n";
const std::string passed2d = "..2D Graphics Visual Test Passed..\n";
const std::string passed3d = "..3D Graphics Visual Test Passed..\n";
const std::string failed3d = "..3D Graphics Visual Test Failed..\n";
const std::string passed = "\n2D/3D Graphics Visual Test Passed!!!\n\n";
const std::string failed = "\n2D/3D Graphics Visual Test Failed!!!\n\n";
const char* const pass = "0|Pass|Code 123|2D/3D Graphics Visual Test Passed!!!";
const char* const fail = "1|Fail|Code 123|2D/3D Graphics Visual Test Failed!!!";

/// Runs the test with programs that run for so many milliseconds; one that is not to be found runs
/// for less than 0.
RanTest runPrograms(const std::string& name2d, int time2d, const std::string& name3d, int time3d,
                    std::vector<std::string>* commandLines = nullptr) {
    FakePlatform platform;
    FakeCommandInterpreter& interpreter = platform.interpreter;
    interpreter.existingFiles = {time2d < 0 ? "" : name2d, time3d < 0 ? "" : name3d};
    interpreter.program = [&] {
        const bool is2d = interpreter.commandLines.back().find("flat") != std::string::npos;
        platform.clock.sleepMilliseconds(static_cast<std::uint32_t>(is2d ? time2d : time3d));
    };
    Settings settings;
    settings.gfx2dTestExe = name2d;
    settings.gfxTestExe = name3d;
    settings.gfxTime = "10 s";
    settings.gfxSpin = "5";
    RanTest ran = runTestFunction(testGraphicsVisual, settings);
    EXPECT_EQ(ran.record, "2D/3D Graphics Visual Test|V1");
    if (commandLines != nullptr) {
        *commandLines = interpreter.commandLines;
    }
    return ran;
}

TEST(GraphicsVisualTest, RunsBothProgramsForTheirTime) {
    std::vector<std::string> commandLines;
    const RanTest ran = runPrograms("flat.exe", 9000, "C:\\3 d\\x.exe", 9000, &commandLines);
    EXPECT_EQ(ran.console, title + found2d + passed2d + found3d + passed3d + passed);
    EXPECT_EQ(ran.log, title + passed2d + passed3d + passed);
    EXPECT_EQ(ran.verdict, pass);
    EXPECT_EQ(commandLines,
              (std::vector<std::string>{"{flat.exe} 10 s 5", "{C:\\3 d\\x.exe} 10 s 5"}));
}

TEST(GraphicsVisualTest, FailsWhenEitherEndsEarlyOrIsMissing) {
    const RanTest early = runPrograms("flat.exe", 8999, "C:\\3 d\\x.exe", 9000);
    EXPECT_EQ(early.console,
              title + found2d +
                  "..2D Graphics Visual Test window closed unexpectedly..\n..Exiting Test..\n"
                  "..2D Graphics Visual Test Failed..\n" +
                  found3d + passed3d + failed);
    EXPECT_EQ(early.verdict, fail);
    const RanTest missing = runPrograms("flat.exe", 9000, "C:\\3 d\\x.exe", -1);
    EXPECT_EQ(missing.console,
              title + found2d + passed2d +
                  "\nC:\\3 d\\x.exe ..3D Graphics Visual Test Binary not found..\n" + failed3d +
                  failed);
    EXPECT_EQ(missing.log, title + passed2d + failed3d + failed);
    EXPECT_EQ(missing.verdict, fail);
}

TEST(GraphicsVisualTest, SkipsAProgramThatIsNotNamed) {
    const std::string skipped2d = "..2D Graphics Visual Test program not named - Skipping..\n";
    const std::string skipped3d = "..3D Graphics Visual Test program not named - Skipping..\n";
    const RanTest one = runPrograms("", 0, "C:\\3 d\\x.exe", 9000);
    EXPECT_EQ(one.console, title + skipped2d + found3d + passed3d + passed);
    EXPECT_EQ(one.verdict, pass);
    const RanTest none = runPrograms("", 0, "", 0);
    EXPECT_EQ(none.console, title + skipped2d + skipped3d);
    EXPECT_EQ(none.log, none.console);
    EXPECT_EQ(none.verdict, "2|||");
}

}  // namespace
}  // namespace vorn
