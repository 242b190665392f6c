#include "platform/platform.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

TEST(Advice, KeepsEachLineOnceInOrder) {
    Advice advice;
    advice.add("second");
    advice.add("first");
    advice.add("second");
    EXPECT_EQ(advice.lines(), (std::vector<std::string>{"second", "first"}));
}

TEST(NativePlatform, AnswersOnThisMachine) {
    Platform& native = nativePlatform();
    EXPECT_GE(native.processor.packageCount(), 1U);
    EXPECT_NE(native.processor.cpuid(1).edx & (1U << 26U), 0U) << "every x86-64 has SSE2";
    const std::uint64_t ticks = native.processor.timestampCounter();
    EXPECT_GT(native.processor.timestampCounter(), ticks);

    const std::int64_t before = native.clock.performanceCounter();
    const std::int64_t millisecondsBefore = native.clock.processMilliseconds();
    native.clock.sleepMilliseconds(20);
    const std::int64_t slept = native.clock.performanceCounter() - before;
    EXPECT_GE(slept * 1000 / native.clock.performanceFrequency(), 19);
    EXPECT_GE(native.clock.processMilliseconds() - millisecondsBefore, 15);
    EXPECT_GT(native.clock.wallSeconds(), 1700000000);
}

#if defined(_WIN32)
const char* const echoScript = "@echo off\r\necho [%~1][%~2]> answer.txt\r\n";
const std::string scriptName = "program.bat";
const std::string plainPath = "C:\\Tools\\stress-1.0_x64.exe";
#else
const char* const echoScript = "#!/bin/sh\necho \"[$1][$2]\" > answer.txt\n";
const std::string scriptName = "program.sh";
const std::string plainPath = "/opt/tools/stress-1.0_x64";
#endif

TEST(NativeInterpreter, StartsAProgramWhateverItsPathHolds) {
    const TemporaryDirectory directory;
    CommandInterpreter& interpreter = nativePlatform().interpreter;
    for (const char* folder : {"", "plain/", "two words/", "it's/", "a&b (c)/", "x=1/",
                               "semi;colon,^/", "-x/", "$HOME/", "!#~`[]{}+@/"}) {
        SCOPED_TRACE(folder);
        const std::string path = folder + scriptName;
        TemporaryDirectory::write(path, echoScript);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        EXPECT_TRUE(interpreter.fileExists(path));
        interpreter.execute(interpreter.programWord(path) + " \"80 -x\" 2");
        EXPECT_EQ(TemporaryDirectory::read("answer.txt"), "[80 -x][2]\n");
        std::filesystem::remove("answer.txt");
    }
    EXPECT_FALSE(interpreter.fileExists("absent"));
    EXPECT_FALSE(interpreter.fileExists(""));
    EXPECT_EQ(interpreter.programWord(plainPath), plainPath);
    EXPECT_NE(interpreter.programWord(plainPath + " 2"), plainPath + " 2");
}

TEST(NativePlatform, GivesMemoryOfThisMachine) {
    PhysicalMemory& memory = nativePlatform().memory;
    EXPECT_TRUE(memory.systemVersion().has_value());
    const std::optional<MemoryStatus> status = memory.status();
    ASSERT_TRUE(status.has_value());
    EXPECT_GE(status->total, status->available);
    EXPECT_GT(status->available, 0U);
    EXPECT_GT(memory.installedKilobytes().value_or(0), status->total / 1024U / 2U);
}

}  // namespace
}  // namespace vorn
