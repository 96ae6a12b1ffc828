#pragma once

#include "updater/UpdaterState.h"
#include "updater/appcast/Appcast.h"
#include "updater/driver/UserDriver.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kelo::updater {

/// The system that releases are chosen for.
struct SystemDescription {
    std::string name = "linux";
    /// "x86_64", "aarch64"...
    std::string architecture;
    /// What minimum and maximum system versions are held against: the version of the C library,
    /// which is what a program needs of a Linux system. Empty: they are not looked at.
    std::string version;
};

struct SelectionRules {
    std::string installedVersion;
    SystemDescription system;
    /// Besides the default one.
    std::vector<std::string> channels;
    std::chrono::sys_seconds now;
    /// What the user asks for ignores skipped versions and comes before one's turn.
    CheckKind kind = CheckKind::scheduled;
    UpdaterState state;
};

struct SelectedUpdate {
    AppcastItem item;
    bool major = false; ///< never installed unasked
    bool critical = false;
    bool informational = false; ///< nothing to install
};

struct Selection {
    /// Newer than what is installed.
    std::optional<SelectedUpdate> update;
    /// When there is no update: a newer one that this system cannot run.
    std::optional<AppcastItem> unsupported;
};

Selection selectUpdate(const Appcast& appcast, const SelectionRules& rules);

/// Notes in the state that the user does not want this one.
void skip(const SelectedUpdate& update, UpdaterState& state);
/// Notes in the state that the user wants to hear of it again.
void forgetSkip(const SelectedUpdate& update, UpdaterState& state);

} // namespace kelo::updater
