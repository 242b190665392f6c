#include <gtest/gtest.h>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "tests/platform/rotation_test.h"

namespace vorn {
namespace {

// The pause belongs to the process and grows with each run, so one test runs them in order.
TEST(RotateDisplay, TurnsOnceRoundAndPausesAThousandTimesLongerEachRun) {
    const CapturedConsole console;
    FakePlatform platform;
    std::string changes;  // the second of each and the mode asked for
    platform.display.asked = [&](const DisplayMode& mode) {
        changes += textOf(platform.clock.nowNanoseconds / 1000000000, "s ", mode.width, "x",
                          mode.height, "/", mode.orientation, " ");
    };
    const auto turn = [&](std::uint32_t width, std::uint32_t height) {
        platform.display.mode = {width, height, 2};  // whatever it starts with
        platform.clock.nowNanoseconds = 0;
        changes.clear();
        EXPECT_EQ(rotateDisplay(), 0);
        return changes;
    };
    EXPECT_EQ(turn(1920, 1080), "3s 1080x1920/1 6s 1920x1080/2 9s 1080x1920/3 12s 1920x1080/0 ");
    EXPECT_EQ(platform.clock.sleeps, std::vector<std::uint32_t>(4, 3000));
    EXPECT_EQ(turn(600, 800), "2999s 800x600/1 5998s 600x800/2 8997s 800x600/3 11996s 600x800/0 ");
    platform.display.there = false;
    EXPECT_EQ(turn(0, 0), "2998999s 0x0/1 5997998s 0x0/2 8996997s 0x0/3 11995996s 0x0/0 ");
}

}  // namespace
}  // namespace vorn
