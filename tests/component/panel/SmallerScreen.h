#pragma once

#include "testing/screen/XConnection.h"

#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include <memory>
#include <string>

namespace kelo::test {

/// The one monitor of a virtual screen with fewer pixels than before, as after a change in the
/// display settings. The destructor gives it all its pixels again.
class SmallerScreen {
public:
    SmallerScreen(unsigned width, unsigned height) : before(resources()) {
        const std::string name = std::to_string(width) + "x" + std::to_string(height);
        XRRModeInfo mode{};
        mode.width = mode.hTotal = width;
        mode.height = mode.vTotal = height;
        mode.dotClock = 60UL * width * height;
        std::string writable = name;
        mode.name = writable.data();
        mode.nameLength = static_cast<unsigned>(name.size());
        added = XRRCreateMode(x(), own.root(), &mode);
        XRRAddOutputMode(x(), output(), added);
        show(added, width, height);
    }
    ~SmallerScreen() {
        const int screen = DefaultScreen(x());
        show(modeBefore, static_cast<unsigned>(DisplayWidth(x(), screen)),
             static_cast<unsigned>(DisplayHeight(x(), screen)));
        XRRDeleteOutputMode(x(), output(), added);
        XRRDestroyMode(x(), added);
        own.sync();
    }
    SmallerScreen(const SmallerScreen&) = delete;
    SmallerScreen& operator=(const SmallerScreen&) = delete;

private:
    struct Free {
        void operator()(XRRScreenResources* resources) const { XRRFreeScreenResources(resources); }
        void operator()(XRRCrtcInfo* crtc) const { XRRFreeCrtcInfo(crtc); }
    };
    using Resources = std::unique_ptr<XRRScreenResources, Free>;

    Display* x() const { return own.display(); }
    Resources resources() { return Resources(XRRGetScreenResources(x(), own.root())); }
    RROutput output() const { return before->outputs[0]; }

    // The server refuses a screen that is smaller than what the monitor shows of it.
    void show(RRMode mode, unsigned width, unsigned height) {
        const RRCrtc crtc = before->crtcs[0];
        const std::unique_ptr<XRRCrtcInfo, Free> now(XRRGetCrtcInfo(x(), before.get(), crtc));
        if (modeBefore == None)
            modeBefore = now->mode;
        XRRSetCrtcConfig(x(), before.get(), crtc, CurrentTime, 0, 0, None, RR_Rotate_0, nullptr, 0);
        XRRSetScreenSize(x(), own.root(), static_cast<int>(width), static_cast<int>(height), 300,
                         200);
        RROutput shown = output();
        XRRSetCrtcConfig(x(), before.get(), crtc, CurrentTime, 0, 0, mode, RR_Rotate_0, &shown, 1);
        own.sync();
    }

    screen::XConnection own;
    Resources before;
    RRMode added = None;
    RRMode modeBefore = None;
};

} // namespace kelo::test
