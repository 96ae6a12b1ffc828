#include "updater/UpdaterState.h"

#include <charconv>

namespace kelo::updater {

namespace {

constexpr std::string_view heading = "kelo-updater-state 1\n";

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
        // Far more than any clock shows, and still within the range of the arithmetic on dates.
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

} // namespace

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

} // namespace kelo::updater
