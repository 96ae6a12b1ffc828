#pragma once

#include "platform/Clock.h"
#include "platform/Url.h"
#include "platform/Worker.h"
#include "updater/Journal.h"
#include "updater/Transport.h"
#include "updater/UpdateInstaller.h"
#include "updater/UpdateSelection.h"
#include "updater/UpdaterSettings.h"
#include "updater/UpdaterState.h"
#include "updater/UserDriver.h"

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
    platform::Worker& worker;
    const platform::Clock& clock;
    std::shared_ptr<UpdaterStateStore> store;
    /// Called when the first window is needed, once.
    std::function<std::unique_ptr<UserDriver>()> makeUserDriver;
    /// Opens a web page in the user's browser.
    std::function<void(const platform::Url&)> openLink;
    std::function<std::uint32_t()> randomNumber;
    Journal journal;
};

} // namespace kelo::updater
