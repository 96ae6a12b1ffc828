#pragma once

#include "component/passkey/SessionBus.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelo::test {

/// A bus that starts its services for whoever asks. They only leave a file to tell that they ran,
/// and take no name.
class StartingBus {
public:
    StartingBus(std::filesystem::path folder, const std::vector<std::string>& services);

    const std::string& address() const { return address_; }
    bool hasStarted(const std::string& service) const;
    /// Waits until the service has run.
    bool waitUntilStarted(const std::string& service) const;
    /// Has one service started, as a user of it would, and waits until it has run. Every request
    /// that reached the bus before has had its effect then.
    bool start(const std::string& service) const;

private:
    std::filesystem::path fileOf(const std::string& service) const;

    std::filesystem::path folder;
    Child daemon;
    std::string address_;
};

} // namespace kelo::test
