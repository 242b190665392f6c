#include "tests/common/external_program.h"

#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"

namespace vorn {
namespace {

const ExternalProgramLines lines{"is absent", "is there", "Starting", {"Too early", "Leaving"}};

TEST(RunExternalProgram, SaysThatThereIsNoProgramAndStartsNothing) {
    for (const char* path : {"tools/absent", ""}) {
        FakePlatform platform;
        const CapturedConsole console;
        EXPECT_EQ(runExternalProgram(path, {"1"}, "0", lines), externalProgramNotFound);
        EXPECT_EQ(console.text(), "\n" + std::string(path) + " is absent\n");
        EXPECT_TRUE(platform.interpreter.commandLines.empty());
    }
}

TEST(RunExternalProgram, QuotesThePathAloneAndJudgesTheRunningTimeAlone) {
    struct Row {
        const char* time;
        std::int64_t milliseconds;
        int expected;
    };
    for (const Row& row :
         {Row{"10", 8000, externalProgramEndedEarly}, Row{"10", 8999, externalProgramEndedEarly},
          Row{"10", 9000, externalProgramRan}, Row{"10", 9500, externalProgramRan},
          Row{"10 minutes", 8000, externalProgramEndedEarly}, Row{"0", 0, externalProgramRan},
          Row{"ten", 0, externalProgramRan}, Row{"", 0, externalProgramRan},
          Row{"-10", 0, externalProgramRan},
          Row{"99999999999", 1000000, externalProgramEndedEarly}}) {
        SCOPED_TRACE(testing::Message() << row.time << ", " << row.milliseconds << " ms");
        FakePlatform platform;
        const CapturedConsole console;
        platform.clock.nowNanoseconds = 123456789;
        platform.interpreter.existingFiles = {"tools/a b"};
        platform.interpreter.result = 77;
        platform.interpreter.program = [&] {
            EXPECT_EQ(console.text(), "\ntools/a b is there\nStarting tools/a b\n");
            platform.clock.nowNanoseconds += row.milliseconds * 1000000;
        };
        EXPECT_EQ(runExternalProgram("tools/a b", {"4 &", row.time}, row.time, lines),
                  row.expected);
        EXPECT_EQ(platform.interpreter.commandLines,
                  (std::vector<std::string>{std::string("{tools/a b} 4 & ") + row.time}));
        const bool early = row.expected == externalProgramEndedEarly;
        EXPECT_EQ(console.text(), std::string("\ntools/a b is there\nStarting tools/a b\n") +
                                      (early ? "Too early\nLeaving\n" : ""));
    }
}

}  // namespace
}  // namespace vorn
