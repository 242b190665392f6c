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

const std::string unknownLine = "Unknown error from vorn library in catch (...) block\n";

class VornTest : public testing::Test {
protected:
    VornTest() { TemporaryDirectory::write("VORNconfig.xml", "<VORN SkipConfig='YES'/>"); }

    /// Runs a test; its result and what it wrote.
    std::string run(VORN& vorn, vorn::Test test) {
        out_.str("");
        const VORNTestResult result = vorn.runTest(test, out_.rdbuf());
        return std::to_string(result) + " " + out_.str();
    }

    TemporaryDirectory directory_;
    FakePlatform platform_;
    CapturedConsole console_;  // puts the report stream back, which runTest() does not
    std::stringstream out_;
};

TEST_F(VornTest, RegistersWhatTheCatalogueSaysAndKeepsEmptyEntriesOfTheRest) {
    for (const CatalogueEntry& row : catalogue()) {
        VORN vorn;
        EXPECT_EQ(RegistryPeer::registry(vorn).count(row.test) == 1, row.registered) << row.test;
    }
    for (const vorn::Test test : {GFX, static_cast<vorn::Test>(99), static_cast<vorn::Test>(-1)}) {
        VORN vorn;
        EXPECT_EQ(run(vorn, test), "1 " + unknownLine);
        ASSERT_EQ(RegistryPeer::registry(vorn).count(test), 1U);
        EXPECT_FALSE(RegistryPeer::registry(vorn).at(test));
    }
}

TEST_F(VornTest, KeepsPrerequisitesApartFromTheTestsThatNeedThem) {
    for (const CatalogueEntry& row : catalogue()) {
        if (!row.prerequisite) {
            continue;
        }
        SCOPED_TRACE(row.test);
        VORN vorn;
        auto& registry = RegistryPeer::registry(vorn);
        registry[row.test] = [](TextData&, TextData&) {
            reportStream() << "runs";
            return VORN_PASS;
        };
        for (const auto& [answer, shown] :
             {std::pair(VORN_PASS, "0 runs"), {VORN_FAIL, "2 "}, {VORN_NOT_RUN, "2 "}}) {
            registry[*row.prerequisite] = [answer = answer](TextData&, TextData&) {
                return answer;
            };
            EXPECT_EQ(run(vorn, row.test), shown);
        }
        registry[*row.prerequisite] = [](TextData&, TextData&) -> VORNTestResult {
            throw std::string("prerequisite failed");
        };
        EXPECT_EQ(run(vorn, row.test),
                  "2 Failure reported from vorn library:prerequisite failed\n");
    }
}

TEST_F(VornTest, HandsEveryEntryOfACopyTwoEmptyTexts) {
    auto original = std::make_unique<VORN>();
    RegistryPeer::registry(*original)[FSB] = [](TextData& first, TextData& second) {
        EXPECT_TRUE(first.text.empty() && second.text.empty());
        EXPECT_FALSE(first.stream.is_open() || second.stream.is_open());
        return VORN_NOT_RUN;
    };
    VORN copy(*original);
    VORN assigned;
    assigned = *original;
    original.reset();
    EXPECT_EQ(run(copy, FSB), "2 ");
    EXPECT_EQ(run(assigned, FSB), "2 ");
    EXPECT_EQ(run(copy, CPU_MANUFACTURER).substr(0, 2), "0 ");
    RegistryPeer::registry(copy)[FSB] = [](TextData&, TextData&) -> VORNTestResult { throw 1; };
    EXPECT_EQ(run(copy, FSB), "1 " + unknownLine);
}

TEST_F(VornTest, LeavesTheBufferBoundAndRaisesOnlyWhatTheStreamItselfRaises) {
    VORN vorn;
    EXPECT_EQ(run(vorn, CPU_MANUFACTURER).substr(0, 2), "0 ");
    EXPECT_EQ(reportStream().rdbuf(), out_.rdbuf());
    EXPECT_EQ(console_.text(), "");
    EXPECT_EQ(vorn.runTest(CPU_MANUFACTURER, nullptr), VORN_PASS);
    EXPECT_TRUE(reportStream().bad());
    bindReportStream(out_.rdbuf());
    reportStream().exceptions(std::ios::badbit);
    EXPECT_THROW(vorn.runTest(CPU_MANUFACTURER, nullptr), std::ios_base::failure);
    reportStream().exceptions(std::ios::goodbit);
}

}  // namespace
}  // namespace vorn
