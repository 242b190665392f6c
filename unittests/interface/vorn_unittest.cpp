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
