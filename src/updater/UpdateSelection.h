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
    /// Version of the C library, because that is what a program needs of a Linux system. Compared
    /// with an item's minimum and maximum system versions; empty: those are ignored.
    std::string version;
};

/// What decides which release is selected.
struct SelectionRules {
    std::string installedVersion;
    SystemDescription system;
    /// Channels besides the default one.
    std::vector<std::string> channels;
    std::chrono::sys_seconds now;
    /// A check that the user asked for ignores skipped versions and phased rollouts.
    CheckKind kind = CheckKind::scheduled;
    UpdaterState state;
};

struct SelectedUpdate {
    AppcastItem item;
    bool major = false; ///< never installed without asking
    bool critical = false;
    bool informational = false; ///< nothing to install
};

struct Selection {
    /// A release newer than the installed one.
    std::optional<SelectedUpdate> update;
    /// If there is no update: a newer release that this system cannot run.
    std::optional<AppcastItem> unsupported;
};

/// Chooses the newest release that fits. Minor updates come before major ones.
Selection selectUpdate(const Appcast& appcast, const SelectionRules& rules);

/// Records in the state that the user skipped this update.
void skip(const SelectedUpdate& update, UpdaterState& state);
/// Removes that record.
void forgetSkip(const SelectedUpdate& update, UpdaterState& state);

} // namespace kelo::updater
