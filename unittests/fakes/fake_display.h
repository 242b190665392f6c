// A simulated display.
#pragma once

#include <functional>

#include "platform/display.h"

namespace vorn {

/// Display that tells of every mode asked for; one that is not there takes none.
class FakeDisplay : public Display {
public:
    bool there = true;
    DisplayMode mode{1920, 1080, 0};
    std::function<void(const DisplayMode& wanted)> asked;  ///< called for each change, where set

    bool readMode(DisplayMode& current) override {
        current = there ? mode : current;
        return there;
    }
    bool changeMode(const DisplayMode& wanted) override {
        if (asked) {
            asked(wanted);
        }
        mode = there ? wanted : mode;
        return there;
    }
};

}  // namespace vorn
