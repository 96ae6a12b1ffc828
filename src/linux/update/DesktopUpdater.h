#pragma once

#include "base/async/Task.h"
#include "platform/Bundle.h"
#include "platform/StandardUpdaterController.h"
#include "updater/driver/UserDriver.h"
#include "updater/tree/InstallRecovery.h"

#include <functional>
#include <memory>
#include <string>

namespace kelo::update {

/// Makes and starts the updater of this program on this desktop. Main thread only.
///   bundle          read once, here
///   makeUserDriver  called once, when the first window is needed
///   openLink        opens a web page in the user's browser
///   terminate       ends the program in an orderly way
std::unique_ptr<platform::StandardUpdaterController> makeStandardUpdaterController(
    platform::Bundle& bundle, std::function<std::unique_ptr<updater::UserDriver>()> makeUserDriver,
    std::function<void(const std::string& address)> openLink, std::function<void()> terminate);

/// Tells the user that the update did not start, and that the version before is back
/// in its place. Automatic checks do not offer that version again. Main thread only.
Task<void> tellOfFailedUpdate(platform::Bundle& bundle, updater::TreeUpdate failed,
                              std::unique_ptr<updater::UserDriver> driver);

/// Has the program started once this process has ended, with the environment that this process
/// found.
void relaunchAfterThisProcess(const std::string& program);

} // namespace kelo::update
