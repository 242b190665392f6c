// The mode of the primary display.
#pragma once

#include <cstdint>

namespace vorn {

/// Size in pixels as it is seen, and orientation in quarter turns: 0 as the display is built, 1 to
/// 3 for 90, 180 and 270 degrees (DMDO_DEFAULT, DMDO_90, DMDO_180 and DMDO_270).
struct DisplayMode {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t orientation = 0;
};

class Display {
public:
    virtual ~Display() = default;

    /// Reads the mode in force. False, with `mode` as it was, when there is no display.
    virtual bool readMode(DisplayMode& mode) = 0;

    /// Puts a mode in force until the next change or the end of the session; what a mode has
    /// besides size and orientation stays as the last readMode() found it. False when the display
    /// refuses it.
    virtual bool changeMode(const DisplayMode& mode) = 0;
};

}  // namespace vorn
