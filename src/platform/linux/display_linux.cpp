#include "platform/linux/display_linux.h"

#if defined(VORN_XRANDR)

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

namespace vorn {

namespace {

/// A request that the server refuses must not end the process, which Xlib's own handler does.
int ignoreError(::Display* /*server*/, XErrorEvent* /*event*/) {
    return 0;
}

/// The screen that the server shows, and what it can be set to; empty when there is none.
class Screen {
public:
    Screen() : server_(XOpenDisplay(nullptr)) {
        if (server_ == nullptr) {
            return;
        }
        formerHandler_ = XSetErrorHandler(ignoreError);
        int event = 0;
        int error = 0;
        if (XRRQueryExtension(server_, &event, &error) != 0) {
            settings_ = XRRGetScreenInfo(server_, XDefaultRootWindow(server_));
        }
    }
    ~Screen() {
        if (server_ == nullptr) {
            return;
        }
        if (settings_ != nullptr) {
            XRRFreeScreenConfigInfo(settings_);
        }
        XSync(server_, False);
        XSetErrorHandler(formerHandler_);
        XCloseDisplay(server_);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool isThere() const { return settings_ != nullptr && !sizes().empty(); }

    /// The sizes it can take, as it is built: a turn does not exchange their sides.
    std::span<const XRRScreenSize> sizes() const {
        int count = 0;
        const XRRScreenSize* const first = XRRConfigSizes(settings_, &count);
        return {first, static_cast<std::size_t>(std::max(count, 0))};
    }

    std::pair<std::size_t, Rotation> current() const {
        Rotation rotation = RR_Rotate_0;
        const SizeID size = XRRConfigCurrentConfiguration(settings_, &rotation);
        return {size, rotation};
    }

    bool canTurnTo(Rotation rotation) const {
        Rotation now = RR_Rotate_0;
        return (XRRConfigRotations(settings_, &now) & rotation) != 0;
    }

    bool set(std::size_t size, Rotation rotation) {
        const bool taken = XRRSetScreenConfig(server_, settings_, XDefaultRootWindow(server_),
                                              static_cast<SizeID>(size), rotation,
                                              CurrentTime) == RRSetConfigSuccess;
        XSync(server_, False);
        return taken;
    }

private:
    ::Display* server_;
    XErrorHandler formerHandler_ = nullptr;
    XRRScreenConfiguration* settings_ = nullptr;
};

/// RR_Rotate_0 to RR_Rotate_270 are bits 0 to 3.
Rotation rotationOf(std::uint32_t orientation) {
    return static_cast<Rotation>(RR_Rotate_0 << (orientation & 3U));
}

bool isSideways(std::uint32_t orientation) {
    return (orientation & 1U) != 0;
}

}  // namespace

bool LinuxDisplay::readMode(DisplayMode& mode) {
    const Screen screen;
    if (!screen.isThere()) {
        return false;
    }
    const auto [size, rotation] = screen.current();
    if (size >= screen.sizes().size()) {
        return false;
    }
    mode.width = static_cast<std::uint32_t>(screen.sizes()[size].width);
    mode.height = static_cast<std::uint32_t>(screen.sizes()[size].height);
    mode.orientation = 0;
    while (mode.orientation < 3 && (rotation & rotationOf(mode.orientation)) == 0) {
        ++mode.orientation;
    }
    if (isSideways(mode.orientation)) {
        std::swap(mode.width, mode.height);
    }
    return true;
}

bool LinuxDisplay::changeMode(const DisplayMode& mode) {
    Screen screen;
    const Rotation rotation = rotationOf(mode.orientation);
    if (!screen.isThere() || !screen.canTurnTo(rotation)) {
        return false;
    }
    std::uint32_t width = mode.width;
    std::uint32_t height = mode.height;
    if (isSideways(mode.orientation)) {
        std::swap(width, height);
    }
    const auto sizes = screen.sizes();
    const auto size = std::find_if(sizes.begin(), sizes.end(), [&](const XRRScreenSize& offered) {
        return static_cast<std::uint32_t>(offered.width) == width &&
               static_cast<std::uint32_t>(offered.height) == height;
    });
    return size != sizes.end() &&
           screen.set(static_cast<std::size_t>(size - sizes.begin()), rotation);
}

}  // namespace vorn

#else

namespace vorn {

bool LinuxDisplay::readMode(DisplayMode& /*mode*/) {
    return false;
}

bool LinuxDisplay::changeMode(const DisplayMode& /*mode*/) {
    return false;
}

}  // namespace vorn

#endif
