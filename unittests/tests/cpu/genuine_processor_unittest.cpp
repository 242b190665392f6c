#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "hw/cpuid.h"
#include "tests/cpu/genuine_processor_test.h"

namespace vorn {
namespace {

TEST(GenuineProcessorTest, ReadsTheVendorWhenBuiltAndKeepsItForTheProcess) {
    FakePlatform platform;
    GenuineProcessorTest test;
    EXPECT_EQ(test.result(), VORN_NOT_RUN);
    platform.processor.setVendor("SomeoneElse!");
    const CapturedConsole console;
    TestRecord record;
    std::string log;
    EXPECT_EQ(test.run(record, log), "0");
    EXPECT_EQ(test.result(), VORN_PASS);
    EXPECT_EQ(cachedCpuVendor(), "GenuineOvrin");
}

}  // namespace
}  // namespace vorn
