#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "fakes/test_scene.h"
#include "hw/ring0.h"
#include "tests/platform/qpi_test.h"

namespace vorn {
namespace {

using Calls = std::vector<std::string>;

const std::string running = " --- Running QPI Test  ---\n";
const std::string skipping = "..Skipping QPI rate Test..\n";
const std::string skipped =
    "2|(nothing)|QPI Test|V1|Skipping QPI rate Test|999|Skipping QPI rate Test";
const std::string skippedLogEnd = "\nSkipping QPI rate Test\n\n";

struct Link {
    std::uint32_t bus;
    std::uint16_t id;
    std::uint16_t rateRegister;
};

/// A server of ratio 20 and a nominal base clock of 100 MHz, with a measured one in kHz.
struct Scene : TestScene {
    explicit Scene(const std::vector<Link>& links = {}, std::uint64_t kilohertz = 100000) {
        platform.processor.setSignature(6, 0x2D);
        platform.ring0.msrs[0xCE] = {20U << 8U};
        platform.clock.nanosecondsPerLook = 250000000;
        for (const Link& link : links) {
            platform.ring0.setPciWord(pciAddress(link.bus, 8, 0), 0x02, link.id);
            platform.ring0.setPciWord(pciAddress(link.bus, 8, 0), 0xD4, link.rateRegister);
            platform.processor.timestamps.push_back(0);
            platform.processor.timestamps.push_back(kilohertz * 20000);
        }
    }
    void runWith(const std::string& tolerance) {
        Settings settings;
        settings.qpiTolerance = tolerance;
        run(testQpi, settings);
    }
};

std::string processor(int number, const char* expected, const char* detected, bool console) {
    const std::string blank = console ? " " : "";
    return blank + "--- Processor #" + std::to_string(number) + "  ---" + blank + "\n" + blank +
           "Expected QPI rate: " + expected + " GT/s\n" + blank + "Detected QPI rate: " + detected +
           " GT/s\n" + (console ? "\n" : "");
}

TEST(QpiTest, SkipsProcessorsWithoutLinks) {
    struct Row {
        std::uint32_t family;
        std::uint32_t model;
        bool hasLinks;
    };
    for (const Row& row : {Row{6, 0x2D, true}, Row{6, 0x3E, true}, Row{6, 0x3F, true},
                           Row{6, 0x2C, false}, Row{6, 0x3D, false}, Row{15, 0x2D, false}}) {
        SCOPED_TRACE(testing::Message() << row.family << " " << row.model);
        Scene scene({{0x0F, 0x3C80, 7}});
        scene.platform.processor.setSignature(row.family, row.model);
        scene.runWith("5");
        if (row.hasLinks) {
            EXPECT_EQ(scene.result, VORN_PASS);
            continue;
        }
        const std::string lines = "..QPI rate Test not supported..\n" + skipping;
        EXPECT_EQ(scene.console.text(), running + lines);
        EXPECT_EQ(scene.log, lines + skippedLogEnd);
        EXPECT_EQ(scene.outcome(), skipped);
        EXPECT_EQ(scene.platform.ring0.calls, (Calls{"initialize", "status", "deinitialize"}));
    }
}

TEST(QpiTest, SkipsWhereNothingIsReadOrNothingIsFound) {
    Scene refused({{0x0F, 0x3C80, 7}});
    refused.platform.ring0.refuseCheckedPciReads = true;
    refused.runWith("5");
    const std::string unable = " --- Unable to retrieve any QPI Link device id  ---\n" + skipping;
    EXPECT_EQ(refused.console.text(), running + unable);
    EXPECT_EQ(refused.log, unable + skippedLogEnd);
    EXPECT_EQ(refused.outcome(), skipped);
    EXPECT_EQ(refused.code, "999");

    Scene empty;
    empty.runWith("5");
    EXPECT_EQ(empty.console.text(), running + "....QPI rate Test - Not supported....\n" + skipping);
    EXPECT_EQ(empty.log, "..QPI rate Test - Not supported..\n" + skipping + skippedLogEnd);
    EXPECT_EQ(empty.outcome(), skipped);
    Calls calls{"initialize", "status"};
    for (int bus = 0x0F; bus <= 0xFF; bus += 0x10) {
        char read[16];
        std::snprintf(read, sizeof read, "pci 0x%x40+0x2", bus);
        calls.emplace_back(read);
    }
    calls.emplace_back("deinitialize");
    EXPECT_EQ(empty.platform.ring0.calls, calls);
}

TEST(MeasureQpiRates, AcceptsTheListedDevicesAlone) {
    struct Row {
        std::uint16_t id;
        bool accepted;
    };
    std::vector<Row> rows{{0x3C7F, false}, {0x3C80, true},  {0x3C9F, true},  {0x3CA0, false},
                          {0x0E7F, false}, {0x0E80, true},  {0x0E9F, true},  {0x0EA0, false},
                          {0x2F31, false}, {0x2F34, false}, {0x2F41, false}, {0x2F81, false}};
    for (const int id : {0x2F32, 0x2F33, 0x2F3A, 0x2F40, 0x2F43, 0x2F80, 0x2F83, 0x2F90, 0x2F93}) {
        rows.push_back({static_cast<std::uint16_t>(id), true});
    }
    for (const Row& row : rows) {
        Scene scene({{0xFF, row.id, 7}});
        openRing0();
        std::vector<QpiRate> rates;
        EXPECT_EQ(measureQpiRates(rates), row.accepted ? 1 : qpiNoLinkFound) << row.id;
        EXPECT_EQ(rates.size(), row.accepted ? 1U : 0U);
    }
}

TEST(MeasureQpiRates, DecodesTheRateAndCorrectsItByTheBaseClock) {
    const std::vector<double> rates{0.0, 0.0, 5.6, 6.4, 7.2, 8.0, 0.0, 9.6};
    for (std::uint16_t code = 0; code < 8; ++code) {
        Scene scene({{0x1F, 0x3C80, static_cast<std::uint16_t>(0xFFF8U | code)}}, 110000);
        openRing0();
        std::vector<QpiRate> measured;
        ASSERT_EQ(measureQpiRates(measured), 1);
        EXPECT_EQ(measured[0].expected, rates[code]);
        EXPECT_DOUBLE_EQ(measured[0].detected, rates[code] * 1.1);
    }
}

TEST(MeasureQpiRates, TakesNineLinksAndMeasuresDisturbedOnesAgain) {
    std::vector<Link> links;
    for (std::uint32_t bus = 0x0F; bus <= 0xFF; bus += 0x10) {
        links.push_back({bus, 0x0E80, 5});
    }
    Scene scene(links);
    scene.platform.processor.timestamps.push_front(0);
    scene.platform.processor.timestamps.push_front(9);
    openRing0();
    std::vector<QpiRate> rates;
    EXPECT_EQ(measureQpiRates(rates), 9);
    EXPECT_EQ(rates.size(), 9U);
    const Calls& calls = scene.platform.ring0.calls;
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "msr 0xce"), 10);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "deinitialize"), 0);
    EXPECT_EQ(calls[17], "pci 0xff40+0x2") << "all sixteen are read";
}

TEST(QpiTest, PassesWhenOneProcessorIsWithinTheTolerance) {
    Scene scene({{0x0F, 0x3C80, 0}, {0x1F, 0x3C80, 7}}, 98000);
    scene.platform.processor.setSignature(6, 0x3F);
    scene.runWith("2");
    const std::string pass = "---  QPI link rate test Pass---\n";
    EXPECT_EQ(scene.console.text(), running + "\n\n" + processor(0, "0", "0", true) +
                                        processor(1, "9.6", "9.408", true) + pass + "\n\n");
    EXPECT_EQ(scene.log, processor(0, "0", "0", false) + processor(1, "9.6", "9.408", false) +
                             "QPI rate test Pass ---\n\n\n\n");
    EXPECT_EQ(scene.outcome(), "0|(nothing)|QPI Test|V1|pass||");
    EXPECT_EQ(scene.platform.ring0.calls.back(), "deinitialize");
}

TEST(QpiTest, FailsWhenNoProcessorIsWithinTheTolerance) {
    Scene scene({{0x0F, 0x3C80, 0}, {0x1F, 0x3C80, 7}}, 98000);
    scene.runWith("1.99");
    EXPECT_EQ(scene.console.text(), running + "\n\n" + processor(0, "0", "0", true) +
                                        processor(1, "9.6", "9.408", true) +
                                        "\n!!! ---  QPI rate test Fail --- !!!\n");
    EXPECT_EQ(scene.log, processor(0, "0", "0", false) + processor(1, "9.6", "9.408", false) +
                             "\n!!! ---  QPI test Fail --- !!!\n\nQPI Test Fail\n\n");
    EXPECT_EQ(scene.outcome(), "1|(nothing)|QPI Test|V1|Fail|123|QPI Test Fail");
    EXPECT_EQ(scene.code, "123");
}

TEST(QpiTest, JudgesByTheToleranceOnBothSidesOrShowsOnly) {
    const std::string pass = "---  QPI link rate test Pass---\n";
    struct Row {
        std::uint64_t kilohertz;
        const char* tolerance;
        bool passes;
        bool passLine;
    };
    for (const Row& row :
         {Row{105000, "5", true, true}, Row{105001, "5", false, false}, Row{95000, "5", true, true},
          Row{94999, "5", false, false}, Row{100000, "", true, true}, Row{100001, "", false, false},
          Row{100001, "close", false, false}, Row{100000, "DisplayOnly", true, true},
          Row{120000, "displayonly", true, false}, Row{120000, "DISPLAYONLY ", false, false}}) {
        SCOPED_TRACE(testing::Message() << row.kilohertz << " " << row.tolerance);
        Scene scene({{0x0F, 0x3C80, 5}}, row.kilohertz);
        scene.runWith(row.tolerance);
        EXPECT_EQ(scene.result, row.passes ? VORN_PASS : VORN_FAIL);
        EXPECT_EQ(scene.console.text().find(pass) != std::string::npos, row.passLine);
    }

    Scene shown({{0x0F, 0x3C80, 5}}, 120000);
    shown.runWith("DISPLAYONLY");
    EXPECT_EQ(shown.console.text(), running + "\n\n" + processor(0, "8", "9.6", true) + "\n\n");
    EXPECT_EQ(shown.log, processor(0, "8", "9.6", false) + "QPI test Pass ---\n\n\n\n");
    EXPECT_EQ(shown.outcome(), "0|(nothing)|QPI Test|V1|pass||");
}

TEST(QpiTest, RaisesWhenItCannotOpenTheDriverItself) {
    Scene scene({{0x0F, 0x3C80, 5}});
    scene.platform.ring0.statusResults = {1};
    scene.runWith("5");
    EXPECT_EQ(scene.console.text(), driverFailureConsole);
    EXPECT_EQ(scene.log, driverFailureLog);
    EXPECT_EQ(scene.outcome(),
              "1|VORN encountered problem loading driver..|QPI Test|V1|VORN load driver error|"
              "Fail|VORN load driver error");
    EXPECT_EQ(scene.platform.ring0.calls, (Calls{"initialize", "status"}));
}

TEST(QpiTest, FillsItsOwnRecordWhenAMeasurementCannotOpenTheDriver) {
    Scene scene({{0x0F, 0x3C80, 5}, {0x1F, 0x3C80, 5}});
    scene.platform.ring0.statusResults = {0, 0, 1};
    scene.runWith("5");
    EXPECT_EQ(scene.console.text(), running + driverFailureConsole);
    EXPECT_EQ(scene.log, driverFailureLog + "\nVORN encountered problem loading driver..\n\n");
    EXPECT_EQ(scene.outcome(),
              "1|(nothing)|QPI Test|V1|Fail|VORN load driver error|"
              "VORN encountered problem loading driver..");
    const Calls& calls = scene.platform.ring0.calls;
    EXPECT_EQ(Calls(calls.end() - 6, calls.end()), (Calls{"status", "msr 0xce", "pci 0x1f40+0xd4",
                                                          "initialize", "status", "deinitialize"}));
}

}  // namespace
}  // namespace vorn
