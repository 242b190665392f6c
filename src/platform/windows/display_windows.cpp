#include "platform/windows/display_windows.h"

#include <windows.h>

namespace vorn {

struct WindowsDisplay::Record {
    DEVMODEW mode{};
};

WindowsDisplay::WindowsDisplay() : record_(std::make_unique<Record>()) {}
WindowsDisplay::~WindowsDisplay() = default;

bool WindowsDisplay::readMode(DisplayMode& mode) {
    DEVMODEW& record = record_->mode;
    record = {};
    record.dmSize = sizeof record;
    if (EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &record) == 0) {
        return false;
    }
    mode.width = record.dmPelsWidth;
    mode.height = record.dmPelsHeight;
    mode.orientation = record.dmDisplayOrientation;
    return true;
}

bool WindowsDisplay::changeMode(const DisplayMode& mode) {
    DEVMODEW& record = record_->mode;
    record.dmPelsWidth = mode.width;
    record.dmPelsHeight = mode.height;
    record.dmDisplayOrientation = mode.orientation;
    // Flags 0: in force at once, for this session, not stored.
    return ChangeDisplaySettingsW(&record, 0) == DISP_CHANGE_SUCCESSFUL;
}

}  // namespace vorn
