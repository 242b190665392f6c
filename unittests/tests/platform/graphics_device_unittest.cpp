#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "fakes/ran_test.h"
#include "hw/ring0.h"
#include "tests/platform/graphics_device_test.h"

namespace vorn {
namespace {

constexpr std::uint16_t ivd = 0x2;
const std::string core = "Ovrin(R) Core2 CPU";
const std::string arvo = "Ovrin(R) Arvo(TM) CPU";
const std::string quintor = "Ovrin(R) Quintor(R) CPU";

/// A processor with a graphics device whose every register is told apart.
struct Machine : FakePlatform {
    Machine(const std::string& brand, std::uint32_t model, std::uint16_t control = 0,
            std::uint16_t vendor = 0x7A6E) {
        processor.setBrand(brand);
        processor.setSignature(6, model);
        ring0.setPciDword(0x10, 0x00, 0x01260000U | vendor);
        ring0.setPciDword(0x10, 0x08, 0x0300000C);
        ring0.setPciDword(0x10, 0x10, 0xF0000004);
        ring0.setPciDword(0x10, 0x18, 0xE000000C);
        ring0.setPciDword(0x10, 0x2C, 0x00AB1234);
        ring0.setPciDword(0x10, 0x30, 0x98765432);
        // The register of the other generations holds the other answer.
        ring0.setPciWord(0, 0x50, static_cast<std::uint16_t>(model == 0x25 ? ~control : control));
        ring0.setPciWord(0, 0x52, static_cast<std::uint16_t>(model == 0x25 ? control : ~control));
    }
};

TEST(GraphicsGeneration, FollowsBrandFamilyAndModel) {
    for (std::uint32_t model = 0; model < 0x100; ++model) {
        const auto isOneOf = [model](std::initializer_list<std::uint32_t> models) {
            return std::find(models.begin(), models.end(), model) != models.end();
        };
        const int cerun = isOneOf({0x25})               ? 1
                          : isOneOf({0x2A})             ? 2
                          : isOneOf({0x3A})             ? 3
                          : isOneOf({0x3C, 0x45, 0x46}) ? 4
                                                        : 0;
        const bool isArvo = isOneOf({0x1C, 0x26, 0x27, 0x35, 0x36, 0x37});
        EXPECT_EQ(graphicsGeneration(core, 6, model), cerun) << model;
        EXPECT_EQ(graphicsGeneration(quintor, 6, model), model == 0x37 ? 80 : cerun) << model;
        EXPECT_EQ(graphicsGeneration(arvo, 6, model), isArvo ? 90 : cerun) << model;
        EXPECT_EQ(graphicsGeneration(arvo + quintor, 15, model), 0) << model;
    }
}

TEST(FrameBufferMegabytes, FollowsTheTableOfTheGeneration) {
    const std::vector<std::uint32_t> first{0,   0,   0,  0,   0,   32,  48, 64,
                                           128, 256, 96, 160, 224, 352, 0,  0};
    for (std::uint32_t select = 0; select < 32; ++select) {
        EXPECT_EQ(frameBufferMegabytes(graphicsCerunGen1, select), select < 16 ? first[select] : 0);
        const std::uint32_t size = select < 17 ? 32 * select : select == 17 ? 1024 : 0;
        EXPECT_EQ(frameBufferMegabytes(graphicsCerunGen2, select), size);
        EXPECT_EQ(frameBufferMegabytes(graphicsQuintorKv, select), size);
    }
}

const std::string titleLine = " --- Querying for Ovrin(R) Integrated Graphics Device (IGD) ---\n";
const std::string presence =
    "\n" + titleLine + "..Ovrin(R) Integrated Graphics Device presence detected..\n";
const std::string passedLine =
    "\n..Ovrin(R) Integrated Graphics Device Presence Detection Passed..\n\n";

TEST(GraphicsDeviceTest, ShowsADeviceThatIsPresentAndPasses) {
    struct Row {
        const std::string& brand;
        std::uint32_t model;
        std::uint16_t control;  // bits around GMS and IVD are set
        std::string product;
        const char* modeSelect;
        const char* size;
    };
    for (const Row& row :
         {Row{core, 0x25, 0xFFAD, "Cerun Gen 1", "a", "96"},
          Row{core, 0x25, 0xFFFD, "Cerun Gen 1", "f", "0"},
          Row{core, 0x2A, 0xFF8D, "Cerun Gen 2", "11", "1024"},
          Row{core, 0x3A, 0xFF85, "Cerun Gen 3", "10", "512"},
          Row{core, 0x45, 0xFF0D, "Cerun Gen 4", "1", "32"},
          Row{quintor, 0x37, 0, "Quintor KV", "0", "0"}, Row{arvo, 0x26, ivd, "Arvo", "", ""}}) {
        SCOPED_TRACE(row.product);
        Machine machine(row.brand, row.model, row.control);
        const RanTest ran = runTestFunction(testGraphicsDevice);
        const std::string dump =
            "\n..IGD Vendor ID --> 7a6eh\n"
            "..IGD Device ID --> 126h\n"
            "..IGD Revision ID --> ch\n"
            "..IGD Graphics Translation Table, Memory Mapped Range Address --> f0000004h\n"
            "..IGD Graphics Memory Range Address --> e000000ch\n"
            "..IGD Subsystem Vendor ID --> 1234h\n"
            "..IGD Subsystem ID --> abh\n"
            "..IGD Video BIOS ROM Address --> 5432h\n"
            "..IGD Graphics Mode Select --> " +
            std::string(row.modeSelect) +
            "h\n..IGD VGA Disable (IVD) --> 0b\n"
            "..IGD Frame Buffer Size based upon returned GMS value --> " +
            row.size + "MB\n";
        const bool isArvo = row.product == "Arvo";
        EXPECT_EQ(ran.console, presence + "..on " + row.product + " product..\n" +
                                   (isArvo ? "" : dump) + passedLine);
        EXPECT_EQ(ran.log,
                  "\n\n" + titleLine +
                      "\n..Detected 7A6E as Vendor ID on Device 2 on Ovrin(R) processor.." +
                      passedLine);
        EXPECT_EQ(ran.record, "IGD Test|V1");
        EXPECT_EQ(ran.verdict,
                  "0|Pass|Code 123|Ovrin(R) Integrated Graphics Device Presence Passed");
        std::vector<std::string> calls{
            "initialize",    "status",        "pci 0x10+0x0",  "pci 0x10+0x2",  "pci 0x10+0x8",
            "pci 0x10+0x10", "pci 0x10+0x18", "pci 0x10+0x2c", "pci 0x10+0x2e", "pci 0x10+0x30"};
        if (!isArvo) {
            calls.emplace_back(row.model == 0x25 ? "pci 0x0+0x52" : "pci 0x0+0x50");
        }
        calls.emplace_back("deinitialize");
        EXPECT_EQ(machine.ring0.calls, calls);
    }
}

TEST(GraphicsDeviceTest, SaysWhyADeviceDoesNotCountAndGivesNoVerdict) {
    struct Row {
        const std::string& brand;
        std::uint32_t model;
        std::uint16_t control;
        std::uint16_t vendor;
        IgdOutcome outcome;
    };
    const std::string skipping =
        "..Skipping Ovrin(R) Integrated Graphics Device Presence Test..\n..\n";
    const std::string advice =
        "..Did not detect Ovrin(R) Integrated Graphics Device (IGD).\n"
        "..This could be that the test platform is using a discrete graphics card.\n"
        "..To test IGD, verify that there is an onboard video connector, \n"
        "..shutdown the test platform, remove the graphics card, and \n"
        "..move video cable from graphics card to onboard video connector \n";
    const std::string unsupported =
        titleLine + "..Ovrin(R) Integrated Graphics Device not supported on this processor..\n" +
        skipping;
    const std::string status = "Skipping Ovrin(R) Integrated Graphics Device Presence Test";
    for (const Row& row :
         {Row{core, 0x2A, ivd, 0x7A6E, igdDisabled}, Row{core, 0x25, ivd, 0x7A6E, igdDisabled},
          Row{core, 0x2A, ivd, 0x1234, igdOtherVendorDisabled},
          Row{core, 0x2A, ivd, 0xFFFF, igdOtherVendorDisabled},
          Row{core, 0x2A, 0xFFFD, 0x1234, igdOtherVendor},
          Row{arvo, 0x26, ivd, 0x1234, igdOtherVendor},
          Row{core, 0x17, ivd, 0x1234, igdOtherVendorNoGraphics},
          Row{core, 0x17, 0, 0x7A6E, igdNoGraphics}}) {
        SCOPED_TRACE(row.outcome);
        const Machine machine(row.brand, row.model, row.control, row.vendor);
        const RanTest ran = runTestFunction(testGraphicsDevice);
        const std::string query = textOf("\n..\n..Query ", row.outcome - 700, "..\n..\n");
        if (row.outcome > igdOtherVendorDisabled) {
            EXPECT_EQ(ran.console, query + unsupported);
            EXPECT_EQ(ran.log, ran.console);
        } else {
            EXPECT_EQ(ran.console, (row.outcome == igdDisabled ? "\n" + titleLine : "") + query +
                                       titleLine + advice + "..\n" + skipping);
            EXPECT_EQ(ran.log, query + titleLine.substr(1) + advice + skipping);
        }
        EXPECT_EQ(ran.verdict, "2|" + status + "|Code 999|" + status);
    }
    const CapturedConsole console;
    for (const int outcome : {701, 703, 704, 705, 706, 777}) {
        IgdTestResult result{VORN_PASS, 1};
        TestRecord record;
        std::string log;
        reportIgdOutcome(static_cast<IgdOutcome>(outcome), result, record, log);
        EXPECT_EQ(result.notSupported, outcome >= 703 && outcome <= 706 ? 1 : 0) << outcome;
        if (outcome == 706) {
            EXPECT_EQ(log, "\n..\n..Query 6..\n..\n" + unsupported);
            EXPECT_EQ(result.result, VORN_NOT_RUN);
        }
    }
}

TEST(GraphicsDeviceTest, RaisesTheDriverFailureAfterItsBlock) {
    Machine machine(core, 0x2A);
    machine.ring0.statusResults = {1};
    const RanTest ran = runTestFunction(testGraphicsDevice);
    EXPECT_EQ(ran.raised, driverFailureError);
    const std::string start =
        "\n\n..VORN encountered problem loading VORN0drv.dll..\n"
        "\n --- VORN encountered problem loading driver ---\nThis";
    EXPECT_EQ(ran.console.substr(0, start.size()), start);
    EXPECT_EQ(ran.log.substr(0, 6), "\n --- ");
    EXPECT_EQ(ran.verdict, "1|VORN load driver error|Fail|VORN load driver error");
    EXPECT_EQ(machine.ring0.calls, (std::vector<std::string>{"initialize", "status"}));
}

}  // namespace
}  // namespace vorn
