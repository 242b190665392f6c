#include "vorn/vorn.h"

#include <gtest/gtest.h>

#include <sstream>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "fakes/temporary_directory.h"
#include "interface/catalogue.h"

namespace vorn {

/// Reaches the registry, so that tests can put entries of their own into it.
struct RegistryPeer {
    static std::map<Test, VORN::Entry>& registry(VORN& vorn) { return vorn.registry_; }
};

namespace {

const char* const failureLine = "Failure reported from vorn library:";
const char* const unknownLine = "Unknown error from vorn library in catch (...) block\n";

class VornTest : public testing::Test {
protected:
    VornTest() { TemporaryDirectory::write("VORNconfig.xml", "<VORN SkipConfig='YES'/>"); }

    TemporaryDirectory directory_;
    FakePlatform platform_;
    CapturedConsole console_;  // puts the report stream back, which runTest() does not
    std::stringstream out_;
};

TEST_F(VornTest, RegistersTheCatalogueInOrder) {
    VORN vorn;
    std::vector<vorn::Test> registered;
    for (const auto& [test, entry] : RegistryPeer::registry(vorn)) {
        registered.push_back(test);
        EXPECT_TRUE(entry);
    }
    std::vector<vorn::Test> listed;
    for (const CatalogueEntry& entry : catalogue()) {
        if (entry.registered) {
            listed.push_back(entry.test);
        }
    }
    EXPECT_EQ(registered, listed);
}

TEST_F(VornTest, RunsATestIntoTheGivenBufferAndLeavesItBound) {
    VORN vorn;
    EXPECT_EQ(vorn.runTest(CPU_MANUFACTURER, out_.rdbuf()), VORN_PASS);
    EXPECT_NE(out_.str().find("Found --- Genuine Ovrin Processor ---\n"), std::string::npos);
    EXPECT_EQ(out_.str().find(failureLine), std::string::npos);
    EXPECT_EQ(reportStream().rdbuf(), out_.rdbuf());
    EXPECT_EQ(console_.text(), "");
}

TEST_F(VornTest, ReportsAFailingTest) {
    platform_.processor.setVendor("SomeoneElse!");
    VORN vorn;
    EXPECT_EQ(vorn.runTest(CPU_MANUFACTURER, out_.rdbuf()), VORN_FAIL);
    const std::string end = "--- !!!\nFailure reported from vorn library:CPU MFG Test Failed!!!\n";
    ASSERT_GE(out_.str().size(), end.size());
    EXPECT_EQ(out_.str().substr(out_.str().size() - end.size()), end);
}

TEST_F(VornTest, ReportsADriverFailureWithItsRaisedText) {
    platform_.processor.setBrand("Ovrin");
    platform_.ring0.statusResults = {1};
    VORN vorn;
    EXPECT_EQ(vorn.runTest(FSB, out_.rdbuf()), VORN_FAIL);
    EXPECT_NE(out_.str().find("adminstrator and re-run VORN.\nFailure reported from vorn library:"
                              "VORN encountered problem loading driver..\n"),
              std::string::npos);
}

TEST_F(VornTest, GivesEveryTemperatureTestAMonitorOfItsOwn) {
    platform_.ring0.msrs[0x19C] = {0x802D0000};
    VORN vorn;
    EXPECT_EQ(vorn.runTest(TEMPERATURE, out_.rdbuf()), VORN_PASS);
    const std::string first = out_.str();
    out_.str("");
    EXPECT_EQ(vorn.runTest(TEMPERATURE, out_.rdbuf()), VORN_PASS);
    EXPECT_EQ(out_.str(), first);
}

TEST_F(VornTest, FailsTheFrequencyTestWithoutTheDriverAndRunsNothingThatNeedsIt) {
    platform_.processor.setBrand("Ovrin i7 3.40GHz");
    platform_.processor.leaves[{6, 0}].ecx = 1;
    platform_.ring0.initializeResults = {0};
    VORN vorn;
    const std::string report = "\nDriver failed to initialize...\n";
    EXPECT_EQ(vorn.runTest(CPU_FREQUENCY, out_.rdbuf()), VORN_FAIL);
    EXPECT_EQ(out_.str(), report) << "and no failure line, since nothing was raised";
    for (const vorn::Test test : {BASE_CLOCK, QPI}) {
        out_.str("");
        EXPECT_EQ(vorn.runTest(test, out_.rdbuf()), VORN_NOT_RUN);
        EXPECT_EQ(out_.str(), report);
    }
}

TEST_F(VornTest, AnswersAnUnregisteredTestWithAnErrorAndKeepsItsEmptyEntry) {
    for (const vorn::Test test : {GFX, static_cast<vorn::Test>(99), static_cast<vorn::Test>(-1)}) {
        VORN vorn;
        out_.str("");
        EXPECT_EQ(vorn.runTest(test, out_.rdbuf()), VORN_FAIL);
        EXPECT_EQ(out_.str(), unknownLine);
        const auto& registry = RegistryPeer::registry(vorn);
        ASSERT_EQ(registry.count(test), 1U);
        EXPECT_FALSE(registry.at(test));
    }
}

TEST_F(VornTest, KeepsPrerequisitesApartFromTheTestsThatNeedThem) {
    // The rows that need another test, by their entries in the registry.
    for (const CatalogueEntry& row : catalogue()) {
        if (!row.prerequisite) {
            continue;
        }
        SCOPED_TRACE(row.test);
        VORN vorn;
        auto& registry = RegistryPeer::registry(vorn);
        int runs = 0;
        registry[row.test] = [&runs](TextData&, TextData&) {
            ++runs;
            return VORN_PASS;
        };
        registry[*row.prerequisite] = [](TextData&, TextData&) { return VORN_PASS; };
        EXPECT_EQ(vorn.runTest(row.test, out_.rdbuf()), VORN_PASS);
        EXPECT_EQ(runs, 1);
        registry[*row.prerequisite] = [](TextData&, TextData&) { return VORN_FAIL; };
        EXPECT_EQ(vorn.runTest(row.test, out_.rdbuf()), VORN_NOT_RUN);
        registry[*row.prerequisite] = [](TextData&, TextData&) { return VORN_NOT_RUN; };
        EXPECT_EQ(vorn.runTest(row.test, out_.rdbuf()), VORN_NOT_RUN);
        registry[*row.prerequisite] = [](TextData&, TextData&) -> VORNTestResult {
            throw std::string("prerequisite failed");
        };
        out_.str("");
        EXPECT_EQ(vorn.runTest(row.test, out_.rdbuf()), VORN_NOT_RUN);
        EXPECT_EQ(out_.str(), std::string(failureLine) + "prerequisite failed\n");
        EXPECT_EQ(runs, 1);
    }
}

TEST_F(VornTest, EndsALoadTestWithItsOwnLinesWhateverHappens) {
    platform_.clock.nanosecondsPerLook = 1000000;
    const auto runLoad = [this](const char* minutes) {
        TemporaryDirectory::write("VORNconfig.xml",
                                  std::string("<VORN SkipConfig='YES' StressLoadLevel='3' "
                                              "StressTestTime='") +
                                      minutes + "'/>");
        VORN vorn;
        RegistryPeer::registry(vorn)[CPU_FREQUENCY] = [](TextData&, TextData&) {
            return VORN_PASS;
        };
        out_.str("");
        return vorn.runTest(CPU_LOAD, out_.rdbuf());
    };
    const std::string head =
        "\n --- CPU Load ---\n\n --- Load Level =3\n\nExecuting CPU Load ... \n";
    EXPECT_EQ(runLoad("0"), VORN_PASS);
    EXPECT_EQ(out_.str(), head + "CPU Load Passed!!!\nCPU Load Complete!\nPASS\n");
    platform_.clock.breaksAt = 2000000000;
    EXPECT_EQ(runLoad("1"), VORN_FAIL);
    EXPECT_EQ(out_.str(), head +
                              "-------------------------------\n"
                              "Fail!  CPU Load encountered an error!\n");
}

TEST_F(VornTest, EndsTheMultiProcessorStressTestWithItsOwnLines) {
    TemporaryDirectory::write("VORNconfig.xml",
                              "<VORN SkipConfig='YES' MPLoadExe='/opt/stress' "
                              "MultiProcStressLoad='80' MultiProcStressTime='0'/>");
    VORN vorn;
    const std::string level =
        " --- Multi Processor Load Level set to -80 - for -0 - minutes ---\n\n\n";
    EXPECT_EQ(vorn.runTest(MP_STRESS, out_.rdbuf()), VORN_FAIL);
    EXPECT_EQ(out_.str(),
              "\n --- Multi Proc Load ---\n\n"
              "\n/opt/stress ..Multi-Processor Stress Binary not found..\n" +
                  level +
                  "..Multi Proc Stress Load Failed..\n"
                  "-------------------------------\n"
                  "Fail!  Multi Processor Stress Load encountered an error!\n");
    out_.str("");
    platform_.interpreter.existingFiles = {"/opt/stress"};
    EXPECT_EQ(vorn.runTest(MP_STRESS, out_.rdbuf()), VORN_PASS);
    EXPECT_EQ(out_.str(),
              "\n --- Multi Proc Load ---\n\n"
              "\n/opt/stress ..Multi-Processor Stress Binary found..\n"
              "..Executing.. /opt/stress\n" +
                  level +
                  "..Multi Proc Stress Load Passed..\n"
                  "Multi Processor Stress Load Complete!\nPASS\n");
}

TEST_F(VornTest, AnswersATimerThatIsNoNumberWithAnError) {
    TemporaryDirectory::write("VORNconfig.xml",
                              "<VORN SkipConfig='YES' FloatingPointTimer='ten'/>");
    for (const vorn::Test test : {FLOATING_POINT, PRIME_NUMBER}) {
        VORN vorn;
        out_.str("");
        EXPECT_EQ(vorn.runTest(test, out_.rdbuf()), VORN_FAIL);
        EXPECT_EQ(out_.str().substr(out_.str().rfind(unknownLine)), unknownLine);
    }
}

TEST_F(VornTest, HandsEveryEntryTwoEmptyTexts) {
    VORN vorn;
    RegistryPeer::registry(vorn)[FSB] = [](TextData& first, TextData& second) {
        EXPECT_TRUE(first.text.empty() && second.text.empty());
        EXPECT_FALSE(first.stream.is_open() || second.stream.is_open());
        return VORN_NOT_RUN;
    };
    EXPECT_EQ(vorn.runTest(FSB, out_.rdbuf()), VORN_NOT_RUN);
    RegistryPeer::registry(vorn)[FSB] = [](TextData&, TextData&) -> VORNTestResult { throw 1; };
    EXPECT_EQ(vorn.runTest(FSB, out_.rdbuf()), VORN_FAIL);
    EXPECT_EQ(out_.str(), unknownLine);
}

TEST_F(VornTest, RunsWithoutABufferAndRaisesOnlyWhatTheStreamItselfRaises) {
    VORN vorn;
    EXPECT_EQ(vorn.runTest(CPU_MANUFACTURER, nullptr), VORN_PASS);
    EXPECT_TRUE(reportStream().bad());
    bindReportStream(out_.rdbuf());
    reportStream().exceptions(std::ios::badbit);
    EXPECT_THROW(vorn.runTest(CPU_MANUFACTURER, nullptr), std::ios_base::failure);
    reportStream().exceptions(std::ios::goodbit);
}

TEST_F(VornTest, CopiesTheRegistryAndSharesTheConfiguration) {
    auto original = std::make_unique<VORN>();
    RegistryPeer::registry(*original)[FSB] = [](TextData&, TextData&) { return VORN_PASS; };
    VORN copy(*original);
    VORN assigned;
    assigned = *original;
    original.reset();
    EXPECT_EQ(copy.runTest(FSB, out_.rdbuf()), VORN_PASS);
    EXPECT_EQ(assigned.runTest(FSB, out_.rdbuf()), VORN_PASS);
    EXPECT_EQ(copy.runTest(CPU_MANUFACTURER, out_.rdbuf()), VORN_PASS);
}

}  // namespace
}  // namespace vorn
