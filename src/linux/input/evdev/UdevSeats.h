#pragma once

#include "linux/gobject/MainLoopSource.h"
#include "linux/input/evdev/DeviceSeats.h"

#include <libudev.h>

#include <memory>
#include <optional>

namespace kelo::input {

/// The seats as udev assigns them (its property ID_SEAT). udev describes a device a moment after
/// its node has appeared: until then, the device belongs to the first seat.
class UdevSeats final : public DeviceSeats {
public:
    static std::unique_ptr<DeviceSeats> follow(Changed changed) {
        return std::make_unique<UdevSeats>(std::move(changed));
    }

    /// changed: called from the main loop; may be empty.
    explicit UdevSeats(Changed changed);

    std::string seatOf(const std::string& device) const override;

private:
    struct Release {
        void operator()(udev* each) const { udev_unref(each); }
        void operator()(udev_device* each) const { udev_device_unref(each); }
        void operator()(udev_monitor* each) const { udev_monitor_unref(each); }
    };
    template <typename Handle>
    using Owned = std::unique_ptr<Handle, Release>;

    void read();

    Changed changed;
    Owned<udev> context;
    Owned<udev_monitor> monitor;
    std::optional<gobject::DescriptorWatch> readable;
};

} // namespace kelo::input
