// The order in which a run goes through its tests.
#pragma once

#include <string>
#include <vector>

#include "config/settings.h"
#include "vorn/vorn.h"

namespace vorn {

/// What, besides its switch, decides whether a step takes place.
enum class StepGuard {
    none,                  ///< nothing
    graphicsDevicePassed,  ///< the graphics device test passed in this run; else nothing is printed
    singleProcessor,       ///< no multi-processor system; on one a line of its own is shown
};

/// How a step reads its switch.
enum class SwitchRule {
    always,          ///< the step has no switch
    enabled,         ///< runs when the switch holds "ENABLE" in any letter case
    unlessDisabled,  ///< runs unless the switch holds "DISABLE" in any letter case
};

struct RunStep {
    Test test;
    SwitchRule rule;
    std::string Settings::*switchSetting;  ///< null for a step without a switch
    StepGuard guard;
    const char* disabledLine;  ///< shown when the switch is off; null for none
};

/// The steps, in their order.
const std::vector<RunStep>& runSequence();

/// Whether the step's switch lets it run.
bool isStepEnabled(const RunStep& step, const Settings& settings);

}  // namespace vorn
