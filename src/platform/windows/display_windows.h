// The primary display on Windows.
#pragma once

#include <memory>

#include "platform/display.h"

namespace vorn {

/// Keeps the whole mode record of the last reading: a change alters three fields of it.
class WindowsDisplay : public Display {
public:
    WindowsDisplay();
    ~WindowsDisplay() override;

    bool readMode(DisplayMode& mode) override;
    bool changeMode(const DisplayMode& mode) override;

private:
    struct Record;
    std::unique_ptr<Record> record_;
};

}  // namespace vorn
