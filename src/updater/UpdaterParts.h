#pragma once

#include "base/Clock.h"
#include "base/Url.h"
#include "base/async/Worker.h"
#include "updater/Journal.h"
#include "updater/UpdateSelection.h"
#include "updater/UpdaterSettings.h"
#include "updater/UpdaterState.h"
#include "updater/archive/Transport.h"
#include "updater/archive/UpdateInstaller.h"
#include "updater/driver/UserDriver.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace kelo::updater {

/// What an updater is made of. What is referred to must outlive it.
struct UpdaterParts {
    UpdaterSettings settings;
    SystemDescription system;
    /// Where downloads are kept: a folder of the updater's own.
    std::filesystem::path downloads;
    Transport& transport;
    UpdateInstaller& installer;
    Worker& worker;
    const Clock& clock;
    std::shared_ptr<UpdaterStateStore> store;
    /// Called when the first window is needed, once.
    std::function<std::unique_ptr<UserDriver>()> makeUserDriver;
    /// Opens a web page in the user's browser.
    std::function<void(const Url&)> openLink;
    std::function<std::uint32_t()> randomNumber;
    Journal journal;
};

} // namespace kelo::updater
