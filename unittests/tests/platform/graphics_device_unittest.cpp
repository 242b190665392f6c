#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

#include "fakes/captured_console.h"
#include "tests/platform/graphics_device_test.h"

namespace vorn {
namespace {

TEST(GraphicsGeneration, FollowsBrandFamilyAndModel) {
    const std::string core = "Ovrin(R) Core2 CPU";
    const std::string arvo = "Ovrin(R) Arvo(TM) CPU";
    const std::string quintor = "Ovrin(R) Quintor(R) CPU";
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

TEST(ReportIgdOutcome, FlagsProcessorsThatDoNotSupportTheDeviceAndKnowsTheReservedOutcome) {
    const CapturedConsole console;
    std::map<int, std::string> logs;
    for (const int outcome : {701, 702, 703, 704, 705, 706, 777, 9099}) {
        IgdTestResult result{VORN_PASS, 1};
        TestRecord record;
        reportIgdOutcome(static_cast<IgdOutcome>(outcome), result, record, logs[outcome]);
        EXPECT_EQ(result.notSupported, outcome >= 703 && outcome <= 706 ? 1 : 0) << outcome;
    }
    EXPECT_EQ(logs[706], logs[705].replace(logs[705].find("Query 5"), 7, "Query 6"));
}

}  // namespace
}  // namespace vorn
