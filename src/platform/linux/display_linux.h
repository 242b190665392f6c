// The primary display on Linux: the primary monitor of the X server that DISPLAY names, through the
// server's extension for resizing and rotating (1.3 or later).
#pragma once

#include "platform/display.h"

namespace vorn {

/// Connects afresh for each call. Without the extension's library at build time, without a server,
/// or where the server does not have the size or the orientation, nothing happens.
class LinuxDisplay : public Display {
public:
    bool readMode(DisplayMode& mode) override;
    bool changeMode(const DisplayMode& mode) override;
};

}  // namespace vorn
