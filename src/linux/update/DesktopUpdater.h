#pragma once

#include "platform/Bundle.h"
#include "platform/StandardUpdaterController.h"
#include "updater/driver/UserDriver.h"

#include <functional>
#include <memory>
#include <string>

namespace kelo::update {

/// What the updater needs of the program around it.
struct UpdaterSurroundings {
    /// Read once. Must outlive the updater.
    platform::Bundle& bundle;
    /// Called when the first window is needed, once.
    std::function<std::unique_ptr<updater::UserDriver>()> makeUserDriver;
    /// Opens a web page in the user's browser.
    std::function<void(const std::string& address)> openLink;
    /// Ends the program in good order.
    std::function<void()> terminate;
};

/// Makes and starts the updater of this program on this desktop.
std::unique_ptr<platform::StandardUpdaterController>
makeStandardUpdaterController(UpdaterSurroundings surroundings);

} // namespace kelo::update
