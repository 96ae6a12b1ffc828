#include "updater/UpdaterState.h"

#include "posix/FileDescriptor.h"
#include "updater/archive/PrivateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <utility>

namespace kelo::updater {

namespace {

constexpr std::string_view heading = "kelo-updater-state 1\n";
constexpr std::size_t longestFile = std::size_t(64) * 1024;

template <typename Number>
bool readNumber(std::string_view text, std::optional<Number>& number) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return false;
    number = value;
    return true;
}

bool readLine(std::string_view name, std::string_view value, UpdaterState& state) {
    if (name == "last-check") {
        std::optional<std::int64_t> seconds;
        // Later than any real date, and small enough for sums of dates not to overflow.
        constexpr std::int64_t latest = std::int64_t(1) << 40;
        if (!readNumber(value, seconds) || *seconds < 0 || *seconds > latest)
            return false;
        state.lastCheck = std::chrono::sys_seconds(std::chrono::seconds(*seconds));
    } else if (name == "check-count") {
        std::optional<std::uint32_t> count;
        if (!readNumber(value, count))
            return false;
        state.checkCount = *count;
    } else if (name == "automatic-checks") {
        state.automaticChecks = value == "yes";
        return value == "yes" || value == "no";
    } else if (name == "channels") {
        state.channels = words(value);
    } else if (name == "skipped-version") {
        state.skippedVersion = value;
    } else if (name == "skipped-major-version") {
        state.skippedMajorVersion = value;
    } else if (name == "skipped-major-release") {
        state.skippedMajorRelease = value;
    } else if (name == "rollout-number") {
        return readNumber(value, state.rolloutNumber);
    }
    return true;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

bool isOurs(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

} // namespace

std::vector<std::string> words(std::string_view text) {
    std::vector<std::string> found;
    std::istringstream stream{std::string(text)};
    for (std::string word; stream >> word;)
        found.push_back(word);
    return found;
}

std::string textOf(const UpdaterState& state) {
    std::string text(heading);
    const auto add = [&text](std::string_view name, const std::string& value) {
        text.append(name).append("=").append(value).append("\n");
    };
    if (state.lastCheck)
        add("last-check", std::to_string(state.lastCheck->time_since_epoch().count()));
    add("check-count", std::to_string(state.checkCount));
    if (state.automaticChecks)
        add("automatic-checks", *state.automaticChecks ? "yes" : "no");
    if (!state.channels.empty())
        add("channels", joined(state.channels));
    if (!state.skippedVersion.empty())
        add("skipped-version", state.skippedVersion);
    if (!state.skippedMajorVersion.empty())
        add("skipped-major-version", state.skippedMajorVersion);
    if (!state.skippedMajorRelease.empty())
        add("skipped-major-release", state.skippedMajorRelease);
    if (state.rolloutNumber)
        add("rollout-number", std::to_string(*state.rolloutNumber));
    return text;
}

std::optional<UpdaterState> parseUpdaterState(std::string_view text) {
    if (!text.starts_with(heading))
        return std::nullopt;
    text.remove_prefix(heading.size());
    UpdaterState state;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        const auto separator = line.find('=');
        if (end == std::string_view::npos || separator == std::string_view::npos ||
            !readLine(line.substr(0, separator), line.substr(separator + 1), state))
            return std::nullopt;
        text.remove_prefix(end + 1);
    }
    return state;
}

FileStateStore::FileStateStore(std::filesystem::path file, LogSink log)
    : file(std::move(file)), log(std::move(log)) {}

UpdaterState FileStateStore::load() {
    // O_NONBLOCK, because opening a pipe that somebody put there would wait for a writer.
    const posix::FileDescriptor descriptor(
        open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!descriptor && (errno == ENOENT || errno == ENOTDIR))
        return {};
    const auto text = descriptor && isOurs(descriptor.get())
                          ? posix::readAll(descriptor.get(), longestFile)
                          : std::nullopt;
    auto state = text ? parseUpdaterState(*text) : std::nullopt;
    if (!state)
        log("The updater's state could not be read from " + file.string() +
            "; starting with a new one.");
    return state.value_or(UpdaterState());
}

void FileStateStore::save(const UpdaterState& state) {
    const std::string text = textOf(state);
    std::string name = file.string() + ".XXXXXX";
    if (!makePrivateFolders(file.parent_path()))
        return log(failureLine("Could not make", file.parent_path()));
    const posix::FileDescriptor descriptor(mkostemp(name.data(), O_CLOEXEC));
    if (!descriptor)
        return log(failureLine("Could not write", file));
    if (!posix::writeAll(descriptor.get(), text) || fsync(descriptor.get()) != 0 ||
        rename(name.c_str(), file.c_str()) != 0) {
        log(failureLine("Could not write", file));
        unlink(name.c_str());
    }
}

} // namespace kelo::updater
