#include "platform/linux/display_linux.h"

#if defined(VORN_XRANDR)

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <algorithm>
#include <memory>
#include <span>
#include <tuple>
#include <utility>

namespace vorn {

namespace {

/// A request that the server refuses must not end the process, which Xlib's own handler does.
int ignoreError(::Display* /*server*/, XErrorEvent* /*event*/) {
    return 0;
}

template <auto release>
struct Release {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};
using Resources = std::unique_ptr<XRRScreenResources, Release<XRRFreeScreenResources>>;
using Controller = std::unique_ptr<XRRCrtcInfo, Release<XRRFreeCrtcInfo>>;
using Output = std::unique_ptr<XRROutputInfo, Release<XRRFreeOutputInfo>>;

struct Size {
    unsigned width = 0;
    unsigned height = 0;
};

/// RR_Rotate_0 to RR_Rotate_270 are bits 0 to 3.
constexpr unsigned allRotations = RR_Rotate_0 | RR_Rotate_90 | RR_Rotate_180 | RR_Rotate_270;

Rotation rotationOf(std::uint32_t orientation) {
    return static_cast<Rotation>(RR_Rotate_0 << (orientation & 3U));
}

/// A size as it is seen from the size as the display is built, and the other way round.
Size turned(Size size, std::uint32_t orientation) {
    return (orientation & 1U) != 0 ? Size{size.height, size.width} : size;
}

/// The primary monitor of the X server: the controller (CRTC) that drives its output.
class Monitor {
public:
    Monitor() : server_(XOpenDisplay(nullptr)) {
        if (server_ == nullptr) {
            return;
        }
        formerHandler_ = XSetErrorHandler(ignoreError);
        int event = 0;
        int error = 0;
        int major = 0;
        int minor = 0;
        if (XRRQueryExtension(server_, &event, &error) != 0 &&
            XRRQueryVersion(server_, &major, &minor) != 0 &&
            std::tie(major, minor) >= std::make_tuple(1, 3)) {
            root_ = XDefaultRootWindow(server_);
            resources_.reset(XRRGetScreenResourcesCurrent(server_, root_));
        }
        if (resources_ != nullptr) {
            find();
        }
    }
    ~Monitor() {
        if (server_ == nullptr) {
            return;
        }
        XSync(server_, False);
        XSetErrorHandler(formerHandler_);
        XCloseDisplay(server_);
    }
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    bool isThere() const { return controller_ != nullptr; }
    Size seenSize() const { return {controller_->width, controller_->height}; }
    Rotation rotation() const { return controller_->rotation; }

    /// Shows a mode of this size, as the monitor is built, in this rotation. The rate, a reflection
    /// and the other monitors stay as they are.
    bool set(Size size, std::uint32_t orientation) {
        const RRMode mode = modeOf(size);
        const Rotation rotation = rotationOf(orientation);
        if (mode == None || (controller_->rotations & rotation) == 0) {
            return false;
        }
        const Size former{static_cast<unsigned>(XDisplayWidth(server_, XDefaultScreen(server_))),
                          static_cast<unsigned>(XDisplayHeight(server_, XDefaultScreen(server_)))};
        const Size needed = extentWith(turned(size, orientation));
        // The screen must hold the monitor before and after the change.
        XGrabServer(server_);
        setScreen({std::max(former.width, needed.width), std::max(former.height, needed.height)});
        const auto reflection = static_cast<unsigned>(controller_->rotation) & ~allRotations;
        const bool taken =
            XRRSetCrtcConfig(server_, resources_.get(), number_, CurrentTime, controller_->x,
                             controller_->y, mode, static_cast<Rotation>(rotation | reflection),
                             controller_->outputs, controller_->noutput) == RRSetConfigSuccess;
        setScreen(taken ? needed : former);
        XUngrabServer(server_);
        return taken;
    }

private:
    std::span<const RRCrtc> controllers() const {
        return {resources_->crtcs, static_cast<std::size_t>(resources_->ncrtc)};
    }
    Controller controllerOf(RRCrtc number) const {
        Controller controller(XRRGetCrtcInfo(server_, resources_.get(), number));
        return controller != nullptr && controller->mode != None ? std::move(controller) : nullptr;
    }

    /// The controller of the primary output; without one, the first that shows anything.
    void find() {
        output_.reset(
            XRRGetOutputInfo(server_, resources_.get(), XRRGetOutputPrimary(server_, root_)));
        if (output_ != nullptr && output_->crtc != None) {
            number_ = output_->crtc;
            controller_ = controllerOf(number_);
        }
        for (const RRCrtc number : controllers()) {
            if (controller_ == nullptr) {
                number_ = number;
                controller_ = controllerOf(number);
            }
        }
        if (controller_ != nullptr && controller_->noutput > 0) {
            output_.reset(XRRGetOutputInfo(server_, resources_.get(), controller_->outputs[0]));
        }
    }

    /// The mode in force when it has this size, else the output's first that has; None without one.
    RRMode modeOf(Size size) const {
        const auto fits = [&](RRMode number) {
            const std::span<const XRRModeInfo> modes{resources_->modes,
                                                     static_cast<std::size_t>(resources_->nmode)};
            return std::any_of(modes.begin(), modes.end(), [&](const XRRModeInfo& mode) {
                return mode.id == number && mode.width == size.width && mode.height == size.height;
            });
        };
        if (fits(controller_->mode)) {
            return controller_->mode;
        }
        if (output_ == nullptr) {
            return None;
        }
        const std::span<const RRMode> offered{output_->modes,
                                              static_cast<std::size_t>(output_->nmode)};
        const auto found = std::find_if(offered.begin(), offered.end(), fits);
        return found == offered.end() ? RRMode{None} : *found;
    }

    /// What the screen must hold when this monitor is seen in that size.
    Size extentWith(Size size) const {
        Size extent{static_cast<unsigned>(controller_->x) + size.width,
                    static_cast<unsigned>(controller_->y) + size.height};
        for (const RRCrtc number : controllers()) {
            if (const Controller other = controllerOf(number);
                other != nullptr && number != number_) {
                extent.width =
                    std::max(extent.width, static_cast<unsigned>(other->x) + other->width);
                extent.height =
                    std::max(extent.height, static_cast<unsigned>(other->y) + other->height);
            }
        }
        return extent;
    }

    /// In the pixels to the millimetre that the screen has.
    void setScreen(Size size) {
        const int screen = XDefaultScreen(server_);
        const auto millimetres = [](unsigned pixels, int ofMillimetres, int ofPixels) {
            return std::max(1, static_cast<int>(pixels) * ofMillimetres / ofPixels);
        };
        XRRSetScreenSize(server_, root_, static_cast<int>(size.width),
                         static_cast<int>(size.height),
                         millimetres(size.width, XDisplayWidthMM(server_, screen),
                                     XDisplayWidth(server_, screen)),
                         millimetres(size.height, XDisplayHeightMM(server_, screen),
                                     XDisplayHeight(server_, screen)));
    }

    ::Display* server_;
    XErrorHandler formerHandler_ = nullptr;
    Window root_ = None;
    Resources resources_;
    RRCrtc number_ = None;
    Controller controller_;
    Output output_;
};

}  // namespace

bool LinuxDisplay::readMode(DisplayMode& mode) {
    const Monitor monitor;
    if (!monitor.isThere()) {
        return false;
    }
    mode.width = monitor.seenSize().width;
    mode.height = monitor.seenSize().height;
    mode.orientation = 0;
    while (mode.orientation < 3 && (monitor.rotation() & rotationOf(mode.orientation)) == 0) {
        ++mode.orientation;
    }
    return true;
}

bool LinuxDisplay::changeMode(const DisplayMode& mode) {
    Monitor monitor;
    return monitor.isThere() &&
           monitor.set(turned({mode.width, mode.height}, mode.orientation), mode.orientation);
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
