#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelo::updater {

/// What the updater remembers from one start of the program to the next.
struct UpdaterState {
    std::optional<std::chrono::sys_seconds> lastCheck;
    /// How many checks this copy's updater has made.
    std::uint32_t checkCount = 0;
    /// The user's answer; nothing until asked.
    std::optional<bool> automaticChecks;

    /// This version and older ones are not offered again unasked.
    std::string skippedVersion;
    /// The same for a major upgrade: where the major version begins, and which release of it.
    std::string skippedMajorVersion;
    std::string skippedMajorRelease;

    /// A random number that says when this copy's turn is while a release reaches some copies
    /// before others; nothing until drawn.
    std::optional<std::uint32_t> rolloutNumber;

    friend bool operator==(const UpdaterState&, const UpdaterState&) = default;
};

/// As lines of text.
std::string textOf(const UpdaterState& state);
/// Nothing for a text that textOf() would not have written, by and large: unknown lines are passed
/// over, so that an older program reads what a newer one wrote.
std::optional<UpdaterState> parseUpdaterState(std::string_view text);

/// Where it is kept. Calls block; from one thread at a time.
class UpdaterStateStore {
public:
    virtual ~UpdaterStateStore() = default;
    /// A fresh state when there is none that can be read. Never fails.
    virtual UpdaterState load() = 0;
    /// What cannot be kept is lost, with a note in the journal. Never fails.
    virtual void save(const UpdaterState& state) = 0;
};

} // namespace kelo::updater
