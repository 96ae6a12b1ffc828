#pragma once

#include "base/Clock.h"
#include "base/Url.h"
#include "base/async/Task.h"
#include "base/async/Worker.h"
#include "updater/UpdateSelection.h"
#include "updater/UpdaterSettings.h"
#include "updater/UpdaterState.h"
#include "updater/archive/Network.h"
#include "updater/archive/Transport.h"
#include "updater/archive/UpdateInstaller.h"
#include "updater/driver/UserDriver.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace kelo::updater {

/// What the updater and its checks work with: the services that its maker supplies, and the data
/// that one check leaves for the next. References must outlive it. Main thread only.
struct UpdaterContext {
    UpdaterSettings settings;
    SystemDescription system;
    /// Folder for downloads, used by the updater alone.
    std::filesystem::path downloads;
    Transport& transport;
    UpdateInstaller& installer;
    Worker& worker;
    const Clock& clock;
    Network& network;
    std::shared_ptr<UpdaterStateStore> store;
    /// Called once, when the first window is needed.
    std::function<std::unique_ptr<UserDriver>()> makeUserDriver;
    /// Opens a web page in the user's browser.
    std::function<void(const Url&)> openLink;
    std::function<std::uint32_t()> randomNumber;
    LogSink log;

    // The updater fills in the rest.
    UpdaterState state = {};
    /// The version that is staged and ready to be installed; empty: none.
    std::string preparedVersion = {};
    /// Null until the first window is needed.
    std::unique_ptr<UserDriver> driver = nullptr;

    /// Reads the state from the store. Blocks.
    void loadState();
    /// Writes the state to the store, on the worker.
    Task<void> saveState();
    UserDriver& userDriver();
    std::chrono::sys_seconds now() const;
};

} // namespace kelo::updater
