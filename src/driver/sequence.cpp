#include "driver/sequence.h"

namespace vorn {

const std::vector<RunStep>& runSequence() {
    static const std::vector<RunStep> steps{
        // test, switch rule, switch, guard, disabled line
        {TEMPERATURE, SwitchRule::enabled, &Settings::temperatureTest, StepGuard::none, nullptr},
        {FSB, SwitchRule::always, nullptr, StepGuard::none, nullptr},
        {BASE_CLOCK, SwitchRule::enabled, &Settings::baseClock, StepGuard::none,
         "--- Base Clock Test Disabled ---"},
        {QPI, SwitchRule::enabled, &Settings::qpiTest, StepGuard::none,
         "--- QPI Test Disabled ---"},
        {FLOATING_POINT, SwitchRule::enabled, &Settings::floatingPoint, StepGuard::none,
         "--- Math Floating Point Test Disabled ---"},
        {PRIME_NUMBER, SwitchRule::enabled, &Settings::primeNumGen, StepGuard::none,
         "--- Math Prime Number Generation Test Disabled ---"},
        {CACHE, SwitchRule::enabled, &Settings::cacheTest, StepGuard::none,
         "--- Cache Size Test Disabled ---"},
        {MMX_SSE, SwitchRule::enabled, &Settings::mmxSse, StepGuard::none,
         "--- MMX SSE Test Disabled ---"},
        {AVX_AES_PCLMULQDQ, SwitchRule::enabled, &Settings::avx, StepGuard::none,
         "--- AVX AES PCLMULQDQ Tests Disabled ---"},
        {IMC, SwitchRule::unlessDisabled, &Settings::imcTest, StepGuard::none,
         "--- Integrated Memory Controller Test Disabled ---"},
        {PCH, SwitchRule::enabled, &Settings::pchTest, StepGuard::none,
         "--- Platform Controller Hub Test Disabled ---"},
        {IGD, SwitchRule::enabled, &Settings::igdTest, StepGuard::none,
         "--- Integrated Graphics Device Test Disabled ---"},
        {GFX, SwitchRule::enabled, &Settings::gfxTest, StepGuard::graphicsDevicePassed,
         "--- 2D/3D Graphics Visual Test Disabled ---"},
        {ROTATION, SwitchRule::enabled, &Settings::rotation, StepGuard::graphicsDevicePassed,
         "--- Rotation Visual Test Disabled ---"},
        {CPU_LOAD, SwitchRule::enabled, &Settings::stressTest, StepGuard::singleProcessor,
         "--- CPU Stress Test Disabled ---"},
    };
    return steps;
}

bool isStepEnabled(const RunStep& step, const Settings& settings) {
    switch (step.rule) {
        case SwitchRule::enabled:
            return holdsWord(settings.*step.switchSetting, "ENABLE");
        case SwitchRule::unlessDisabled:
            return !holdsWord(settings.*step.switchSetting, "DISABLE");
        case SwitchRule::always:
            break;
    }
    return true;
}

}  // namespace vorn
