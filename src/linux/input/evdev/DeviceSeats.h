#pragma once

#include <functional>
#include <string>

namespace kelo::input {

/// Which seat each input device belongs to. Main thread only.
class DeviceSeats {
public:
    /// Receives the kernel's name ("event3") of a device whose seat may have changed. May destroy
    /// the object.
    using Changed = std::function<void(const std::string& device)>;

    virtual ~DeviceSeats() = default;

    /// The name of the seat; session::firstSeat if nobody knows.
    virtual std::string seatOf(const std::string& device) const = 0;
};

} // namespace kelo::input
