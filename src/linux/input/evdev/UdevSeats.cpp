#include "linux/input/evdev/UdevSeats.h"

#include "linux/session/SeatSession.h"

#include <utility>
#include <vector>

namespace kelo::input {

namespace {

constexpr const char* subsystem = "input";

} // namespace

UdevSeats::UdevSeats(Changed wanted) : changed(std::move(wanted)), context(udev_new()) {
    if (!changed || !context)
        return;
    // Of udev and not of the kernel, which tells before the seat is known.
    monitor.reset(udev_monitor_new_from_netlink(context.get(), "udev"));
    if (!monitor ||
        udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), subsystem, nullptr) < 0 ||
        udev_monitor_enable_receiving(monitor.get()) < 0)
        return;
    readable.emplace(udev_monitor_get_fd(monitor.get()), [this] { read(); });
}

std::string UdevSeats::seatOf(const std::string& device) const {
    const Owned<udev_device> found(
        context ? udev_device_new_from_subsystem_sysname(context.get(), subsystem, device.c_str())
                : nullptr);
    const char* const seat =
        found ? udev_device_get_property_value(found.get(), "ID_SEAT") : nullptr;
    return seat && *seat ? seat : session::firstSeat;
}

void UdevSeats::read() {
    std::vector<std::string> devices;
    while (const Owned<udev_device> device{udev_monitor_receive_device(monitor.get())})
        devices.emplace_back(udev_device_get_sysname(device.get()));
    // A copy, because it may destroy this object.
    const Changed told = changed;
    for (const std::string& device : devices)
        told(device);
}

} // namespace kelo::input
