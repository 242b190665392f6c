#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "hw/cpuid.h"
#include "tests/cpu/genuine_processor_test.h"

namespace vorn {
namespace {

TEST(GenuineProcessorTest, PassesOnTheGenuineVendor) {
    FakePlatform platform;
    const CapturedConsole console;
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    EXPECT_EQ(testGenuineProcessor(result, Settings(), record, log), "0");
    EXPECT_EQ(result, VORN_PASS);
    EXPECT_EQ(console.text(),
              "\n --- Reading CPU Manufacturer --- \n\n"
              "Expected --> GenuineOvrin\n"
              "Detected --> GenuineOvrin\n"
              "Found --- Genuine Ovrin Processor ---\n");
    EXPECT_EQ(log, console.text());
    EXPECT_EQ(record.name, "CPU Manufacturer");
    EXPECT_EQ(record.description, "Processor installed is NOT a Genuine Ovrin Processor");
    EXPECT_EQ(record.version, "V1");
    EXPECT_EQ(record.status, "Pass");
    EXPECT_EQ(record.code, "0");
    EXPECT_EQ(record.message, "CPU MFG Test Passed!!!");
}

TEST(GenuineProcessorTest, FailsOnAnyOtherVendor) {
    for (const char* vendor : {"SomeoneElse!", "genuineOvrin", "GenuineOvri", ""}) {
        SCOPED_TRACE(vendor);
        FakePlatform platform;
        platform.processor.setVendor(vendor);
        const CapturedConsole console;
        VORNTestResult result = VORN_NOT_RUN;
        TestRecord record;
        std::string log;
        EXPECT_EQ(testGenuineProcessor(result, Settings(), record, log), "1");
        EXPECT_EQ(result, VORN_FAIL);
        const std::string lines = std::string("\n --- Reading CPU Manufacturer --- \n\n") +
                                  "Expected --> GenuineOvrin\nDetected --> " + vendor + "\n" +
                                  "\n!!! ---  Processor installed is NOT a Genuine Ovrin Processor "
                                  "--- !!!";
        EXPECT_EQ(console.text(), lines + "\n");
        EXPECT_EQ(log, lines + " --- FAIL\n");
        EXPECT_EQ(record.status, "Fail");
        EXPECT_EQ(record.code, "1");
        EXPECT_EQ(record.message, "CPU MFG Test Failed!!!");
    }
}

TEST(GenuineProcessorTest, ReadsTheVendorWhenBuiltAndKeepsItForTheProcess) {
    FakePlatform platform;
    GenuineProcessorTest test;
    EXPECT_EQ(test.result(), VORN_NOT_RUN);
    platform.processor.setVendor("SomeoneElse!");
    const CapturedConsole console;
    TestRecord record;
    std::string log;
    test.run(record, log);
    EXPECT_EQ(test.result(), VORN_PASS);
    EXPECT_EQ(cachedCpuVendor(), "GenuineOvrin");
}

}  // namespace
}  // namespace vorn
