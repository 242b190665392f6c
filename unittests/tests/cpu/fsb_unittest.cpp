#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "hw/ring0.h"
#include "tests/cpu/fsb_test.h"

namespace vorn {
namespace {

const std::string desktopBrand = "Ovrin(R) Core2 CPU 6600 @ 2.40GHz";
const std::string serverBrand = "Ovrin(R) Zelk(R) CPU 3.20GHz";

const std::vector<std::string> oneFsbReading{"initialize", "status", "msr 0xcd", "deinitialize"};

const std::string failureBlock =
    "\n --- VORN encountered problem loading driver ---\n"
    "This could be related to VORN.exe not having administrator privileges.\n"
    "Check the property settings for VORN.exe and set privilege setting to\n"
    "adminstrator and re-run VORN.\n";

struct Machine {
    FakePlatform platform;
    CapturedConsole console;

    Machine(const std::string& brand, std::uint32_t family, std::uint32_t model,
            std::uint32_t stepping = 0) {
        platform.processor.setBrand(brand);
        platform.processor.setSignature(family, model, stepping);
    }
};

struct Classified {
    const char* what;
    std::string brand;
    std::uint32_t family;
    std::uint32_t model;
    std::uint32_t stepping;
    bool hasBus;
};

// Each row of the two classifications, with its nearest neighbour on the other side.
const std::vector<Classified> classified{
    {"integrated clock, 0x3C", desktopBrand, 6, 0x3C, 0, false},
    {"integrated clock, 0x3F", desktopBrand, 6, 0x3F, 0, false},
    {"integrated clock, 0x45", desktopBrand, 6, 0x45, 0, false},
    {"integrated clock, 0x46", desktopBrand, 6, 0x46, 0, false},
    {"integrated clock, 0x3A", desktopBrand, 6, 0x3A, 0, false},
    {"integrated clock, 0x2D", desktopBrand, 6, 0x2D, 0, false},
    {"integrated clock, 0x2A", desktopBrand, 6, 0x2A, 0, false},
    {"integrated clock, 0x3E", desktopBrand, 6, 0x3E, 0, false},
    {"model listed, another family", desktopBrand, 15, 0x3C, 0, true},
    {"model not listed", desktopBrand, 6, 0x17, 0, true},
    {"brand i7", "Ovrin(R) Core(TM) i7 CPU", 15, 2, 0, false},
    {"brand i5", "Ovrin(R) Core(TM) i5 CPU", 6, 0x17, 0, false},
    {"brand i3", "Ovrin(R) Core(TM) i3 CPU", 6, 0x17, 0, false},
    {"brand I5 is another word", "Ovrin(R) Core(TM) I5 CPU", 6, 0x17, 0, true},
    {"Arvo 0x26", "Ovrin(R) Arvo(TM) CPU", 6, 0x26, 0, false},
    {"Arvo 0x35", "Ovrin(R) Arvo(TM) CPU", 6, 0x35, 0, false},
    {"Arvo 0x37", "Ovrin(R) Arvo(TM) CPU", 6, 0x37, 0, false},
    {"Arvo 0x1C", "Ovrin(R) Arvo(TM) CPU", 6, 0x1C, 0, true},
    {"Arvo of another family", "Ovrin(R) Arvo(TM) CPU", 15, 0x26, 0, true},
    {"Quintor 0x25", "Ovrin(R) Quintor(R) CPU", 6, 0x25, 0, false},
    {"Quintor 0x17", "Ovrin(R) Quintor(R) CPU", 6, 0x17, 0, true},
    {"Quintor of another family", "Ovrin(R) Quintor(R) CPU", 15, 0x25, 0, true},
    {"Quintor and Arvo", "Ovrin(R) Arvo(TM) Quintor(R) CPU", 6, 0x25, 0, true},
    {"server 0x26 stepping 5", serverBrand, 6, 0x26, 5, false},
    {"server 0x26 stepping 4", serverBrand, 6, 0x26, 4, true},
    {"server 0x1A", serverBrand, 6, 0x1A, 0, false},
    {"server 0x1E", serverBrand, 6, 0x1E, 0, false},
    {"server 0x1F", serverBrand, 6, 0x1F, 0, false},
    {"server 0x2E", serverBrand, 6, 0x2E, 0, false},
    {"server 0x25", serverBrand, 6, 0x25, 0, false},
    {"server 0x2C", serverBrand, 6, 0x2C, 0, false},
    {"server 0x2D", serverBrand, 6, 0x2D, 0, false},
    {"server 0x2A", serverBrand, 6, 0x2A, 0, false},
    {"server 0x3A", serverBrand, 6, 0x3A, 0, false},
    {"server 0x3C", serverBrand, 6, 0x3C, 0, false},
    {"server 0x3E", serverBrand, 6, 0x3E, 0, false},
    {"server 0x3F", serverBrand, 6, 0x3F, 0, false},
    {"server with an integrated clock that no server list has", serverBrand, 6, 0x45, 0, true},
    {"server listed, another family", serverBrand, 15, 0x1A, 0, true},
    {"server named i7", "Ovrin(R) Zelk(R) i7", 6, 0x17, 0, true},
};

TEST(MeasureFsb, ClassifiesProcessorsByBrandFamilyAndModel) {
    for (const Classified& row : classified) {
        SCOPED_TRACE(row.what);
        Machine machine(row.brand, row.family, row.model, row.stepping);
        machine.platform.ring0.msrs[0xCD] = {4};
        machine.platform.ring0.msrs[0x2C] = {0};
        EXPECT_EQ(measureFsb(row.brand), row.hasBus ? 1333.0F : fsbNotPresent);
        EXPECT_EQ(machine.platform.ring0.calls.empty(), !row.hasBus);
        EXPECT_EQ(machine.console.text(), "");
    }
}

TEST(MeasureFsb, ReadsTheBusTableAtEveryCode) {
    const std::vector<float> expected{1067, 533, 800, 667, 1333, 400, 1600, 0};
    for (std::uint32_t code = 0; code < 8; ++code) {
        Machine machine(desktopBrand, 6, 0x17);
        // Bits above the code belong to other fields.
        machine.platform.ring0.msrs[0xCD] = {0xFFFFFFFFFFFFFFF8U | code};
        EXPECT_EQ(measureFsb(desktopBrand), expected[code]) << "code " << code;
        EXPECT_EQ(machine.platform.ring0.calls, oneFsbReading);
    }
}

TEST(MeasureFsb, ReadsTheServerTableAtEveryCodeAndOpensAgainForCodeZero) {
    const std::vector<float> expected{800, 532, 800, 664, 1332, 0, 0, 0};
    for (const std::uint32_t model : {1U, 2U, 3U, 4U}) {
        for (std::uint32_t code = 0; code < 8; ++code) {
            SCOPED_TRACE(testing::Message() << "model " << model << " code " << code);
            Machine machine(serverBrand, 15, model);
            machine.platform.ring0.msrs[0x2C] = {0xFFFFFFFFFFF8FFFFU | (code << 16U)};
            machine.platform.ring0.msrs[0xCD] = {2};
            EXPECT_EQ(measureFsb(serverBrand), expected[code]);
            std::vector<std::string> calls{"initialize", "status", "msr 0x2c", "deinitialize"};
            if (code == 0) {
                calls.insert(calls.end(), oneFsbReading.begin(), oneFsbReading.end());
            }
            EXPECT_EQ(machine.platform.ring0.calls, calls);
        }
    }
}

TEST(MeasureFsb, LooksAtTheDriversStatusAlone) {
    Machine machine(desktopBrand, 6, 0x17);
    machine.platform.ring0.initializeResults = {0};
    machine.platform.ring0.msrs[0xCD] = {5};
    EXPECT_EQ(measureFsb(desktopBrand), 400.0F);
}

TEST(MeasureFsb, SaysWhichDriverFailedAndLeavesItAsItIs) {
    const std::vector<std::string> opened{"initialize", "status"};
    {
        Machine machine(desktopBrand, 6, 0x17);
        machine.platform.ring0.statusResults = {2};
        EXPECT_EQ(measureFsb(desktopBrand), fsbDriverUnavailable);
        EXPECT_EQ(machine.console.text(), "VORN encountered problem loading driver..\n");
        EXPECT_EQ(machine.platform.ring0.calls, opened);
    }
    const std::string serverText = "Encountered problem loading VORN driver...\nExiting...\n";
    {
        Machine machine(serverBrand, 15, 2);
        machine.platform.ring0.statusResults = {2};
        EXPECT_EQ(measureFsb(serverBrand), fsbDriverUnavailable);
        EXPECT_EQ(machine.console.text(), serverText);
        EXPECT_EQ(machine.platform.ring0.calls, opened);
    }
    {
        Machine machine(serverBrand, 15, 2);
        machine.platform.ring0.statusResults = {0, 2};
        machine.platform.ring0.msrs[0x2C] = {0};
        EXPECT_EQ(measureFsb(serverBrand), fsbDriverUnavailable);
        EXPECT_EQ(machine.console.text(), serverText);
        const std::vector<std::string> calls{"initialize",   "status",     "msr 0x2c",
                                             "deinitialize", "initialize", "status"};
        EXPECT_EQ(machine.platform.ring0.calls, calls);
    }
}

TEST(MeasureFsb, EndsTheProcessWithoutModelSpecificRegisters) {
    Machine machine("Ovrin(R) Core(TM) i7", 6, 0x3C);  // also where no register would be read
    machine.platform.processor.setFeatures(0, 0);
    try {
        measureFsb("Ovrin(R) Core(TM) i7");
        FAIL() << "the process goes on";
    } catch (const ProcessEnded& end) {
        EXPECT_EQ(end.status, 0);
    }
    EXPECT_EQ(machine.console.text(),
              "\n..MSR NOT supported on this processor..\n..Exiting Test..\n");
    EXPECT_TRUE(machine.platform.ring0.calls.empty());
}

struct Ran {
    VORNTestResult result = VORN_NOT_RUN;
    TestRecord record;
    std::string log;
    std::string code;
};

Ran runFsb(const Settings& settings) {
    Ran ran;
    ran.code = testFsb(ran.result, settings, ran.record, ran.log);
    return ran;
}

Settings withBusSpeed(const std::string& speed) {
    Settings settings;
    settings.busSpeed = speed;
    return settings;
}

TEST(FsbTest, PassesWithinTwoPerCentAndShowsTheConfiguredText) {
    Machine machine(desktopBrand, 6, 0x17);
    machine.platform.ring0.msrs[0xCD] = {4};
    const Ran ran = runFsb(withBusSpeed("1333 MHz"));
    EXPECT_EQ(machine.console.text(),
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 1333 MHz\n"
              "\nDetected FSB : --> 1333\n"
              "\nCPU FSB Test Passed!!!\n\n");
    EXPECT_EQ(ran.log,
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 1333 MHz\n"
              "\nDetected FSB : --> 1333\n"
              "\nCPU FSB Test Passed!!!\n\n");
    EXPECT_EQ(ran.result, VORN_PASS);
    EXPECT_EQ(ran.code, "Code 123");
    EXPECT_EQ(ran.record.name, "FSB");
    EXPECT_EQ(ran.record.version, "V1");
    EXPECT_EQ(ran.record.status, "Pass");
    EXPECT_EQ(ran.record.message, "CPU FSB Test Passed!!!");
}

TEST(FsbTest, FailsBeyondTwoPerCentOnEitherSide) {
    struct Bound {
        std::uint64_t code;
        const char* speed;
        bool passes;
    };
    // 800 lies on the bounds of 784.3138 (upper) and 816.3265 (lower).
    for (const Bound& bound :
         {Bound{4, "1300", false}, Bound{2, "784.3", false}, Bound{2, "784.4", true},
          Bound{2, "816.3", true}, Bound{2, "816.4", false}, Bound{5, "400", true},
          Bound{7, "1", false}, Bound{2, "", false}, Bound{2, "fast", false}}) {
        SCOPED_TRACE(bound.speed);
        Machine machine(desktopBrand, 6, 0x17);
        machine.platform.ring0.msrs[0xCD] = {bound.code};
        EXPECT_EQ(runFsb(withBusSpeed(bound.speed)).result, bound.passes ? VORN_PASS : VORN_FAIL);
    }

    Machine machine(desktopBrand, 6, 0x17);
    machine.platform.ring0.msrs[0xCD] = {4};
    const Ran ran = runFsb(withBusSpeed("1300"));
    EXPECT_EQ(machine.console.text(),
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 1300\n"
              "\nDetected FSB : --> 1333\n"
              "CPU FSB Test Failed!!!\n\n");
    EXPECT_EQ(ran.log,
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 1300\n"
              "\nDetected FSB : --> 1333\n"
              "\nCPU FSB Test Failed!!!\n\n");
    EXPECT_EQ(ran.record.status, "Fail");
    EXPECT_EQ(ran.record.code, "Code 123");
    EXPECT_EQ(ran.record.message, "CPU FSB Test Failed!!!");
}

TEST(FsbTest, PassesWhateverIsDetectedWhenTheConfigurationIsSkipped) {
    Machine machine(desktopBrand, 6, 0x17);
    machine.platform.ring0.msrs[0xCD] = {7};
    Settings settings = withBusSpeed("1333");
    settings.skipConfig = "yEs";
    const Ran ran = runFsb(settings);
    EXPECT_EQ(ran.result, VORN_PASS);
    EXPECT_EQ(machine.console.text(),
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 0\n"
              "\nDetected FSB : --> 0\n"
              "\nCPU FSB Test Passed!!!\n\n");
    EXPECT_EQ(ran.log,
              "\n --- Reading FSB --- \n\n"
              "\nExpected FSB : --> 0\n"
              "\nDetected) FSB : --> 0\n"
              "\nCPU FSB Test Passed!!!\n\n");
}

TEST(FsbTest, GivesNoVerdictWithoutABus) {
    Machine machine("Ovrin(R) Core(TM) i5", 6, 0x17);
    const Ran ran = runFsb(withBusSpeed("1333"));
    EXPECT_EQ(machine.console.text(), "\n --- FSB NOT Supported on this Processor ---\n\n");
    EXPECT_EQ(ran.log, "\n --- FSB NOT Supported on this Processor --- \n\n");
    EXPECT_EQ(ran.result, VORN_NOT_RUN);
    EXPECT_EQ(ran.record.status, "FSB N/A on this Processor");
    EXPECT_EQ(ran.record.code, "Code 999");
    EXPECT_EQ(ran.record.message, "FSB NOT Supported on this Processor");
}

TEST(FsbTest, RaisesTheDriverFailureAfterItsBlock) {
    Machine machine(desktopBrand, 6, 0x17);
    machine.platform.ring0.statusResults = {2};
    Ran ran;
    try {
        testFsb(ran.result, Settings(), ran.record, ran.log);
        FAIL() << "nothing raised";
    } catch (const std::string& failure) {
        EXPECT_EQ(failure, "VORN encountered problem loading driver..");
    }
    EXPECT_EQ(machine.console.text(), "VORN encountered problem loading driver..\n" + failureBlock);
    EXPECT_EQ(ran.log,
              "\n --- VORN encountered problem loading driver --- \n"
              "This could be related to VORN.exe not having administrator privileges.\n"
              "Check the property settings for VORN.exe and set privilege setting to\n"
              "adminstrator and re-run VORN.\n");
    EXPECT_EQ(ran.result, VORN_FAIL);
    EXPECT_EQ(ran.record.status, "VORN load driver error");
    EXPECT_EQ(ran.record.code, "Fail");
    EXPECT_EQ(ran.record.message, "VORN load driver error");
}

}  // namespace
}  // namespace vorn
