#pragma once

#include "linux/input/evdev/DeviceSeats.h"
#include "linux/input/evdev/EvdevNode.h"
#include "linux/input/evdev/UdevSeats.h"
#include "linux/session/SeatSession.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace kelo::input {

/// Where the devices and their descriptions are, how a device is opened, and whose it is.
struct EvdevDevices {
    std::filesystem::path folder = "/dev/input";
    std::filesystem::path descriptions = "/sys/class/input";
    EvdevOpener open = EvdevNode::open;
    std::function<std::unique_ptr<DeviceSeats>(DeviceSeats::Changed)> seats = UdevSeats::follow;
    std::function<std::unique_ptr<session::SeatSession>(session::SeatSession::Changed)> session =
        session::followSeatSession;
};

} // namespace kelo::input
