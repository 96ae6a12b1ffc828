#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::updater {

/// What the updater keeps between two runs of the program.
struct UpdaterState {
    /// When the feed was last read.
    std::optional<std::chrono::sys_seconds> lastCheck;
    /// Number of times that it was, by a check.
    std::uint32_t checkCount = 0;
    /// Whether the user wants automatic checks; nothing: not asked yet.
    std::optional<bool> automaticChecks;

    /// Channels that this user takes releases from, besides the build's own.
    std::vector<std::string> channels;

    /// Scheduled checks do not offer this version or an older one.
    std::string skippedVersion;
    /// The same for a major upgrade: the first version of the major release, and the skipped one.
    std::string skippedMajorVersion;
    std::string skippedMajorRelease;

    /// Random number that decides when this copy is offered a release that is rolled out in phases;
    /// nothing until drawn.
    std::optional<std::uint32_t> rolloutNumber;

    friend bool operator==(const UpdaterState&, const UpdaterState&) = default;
};

/// The words of a text, which blanks separate.
std::vector<std::string> words(std::string_view text);

/// The state as lines of text.
std::string textOf(const UpdaterState& state);
/// Reads what textOf() wrote; nothing for a damaged text. Unknown names are ignored, so that an
/// older program can read the state of a newer one.
std::optional<UpdaterState> parseUpdaterState(std::string_view text);

/// Takes one line for the log. May be called from any thread.
using LogSink = std::function<void(const std::string& line)>;

/// Keeps the state. Calls block and must not overlap.
class UpdaterStateStore {
public:
    virtual ~UpdaterStateStore() = default;
    /// A new state if none can be read. Never fails.
    virtual UpdaterState load() = 0;
    /// Logs a failure and never throws.
    virtual void save(const UpdaterState& state) = 0;
};

/// Keeps the state in a file (0600, in a folder 0700), which is replaced in one step. A file that
/// is damaged, too long, not a regular file or owned by another user is ignored and logged; the
/// next save replaces it.
class FileStateStore final : public UpdaterStateStore {
public:
    /// Missing folders are made by the first save.
    FileStateStore(std::filesystem::path file, LogSink log);

    UpdaterState load() override;
    void save(const UpdaterState& state) override;

private:
    std::filesystem::path file;
    LogSink log;
};

} // namespace kelo::updater
