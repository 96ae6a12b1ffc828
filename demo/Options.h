#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

namespace kelo::demo {

/// The parsed command line.
struct Options {
    enum class Action { help, makeAuthority, serve };

    Action action = Action::serve;
    std::filesystem::path authority;
    std::uint16_t port = 8443; ///< 0: any free one
    std::optional<std::filesystem::path> state;
    std::optional<std::string> origin; ///< expected of passkeys instead of the service's own
    bool stranger = false;             ///< the widget page holds a frame of a foreign origin
    std::optional<std::filesystem::path> gallery; ///< a folder of more pages
    std::optional<std::filesystem::path> times; ///< where it is written when requests were answered
    std::optional<std::filesystem::path> record; ///< where accepted ceremonies are written down
};

/// The command line is invalid; the text says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws UsageError.
Options parseOptions(std::span<const char* const> arguments);

std::string helpText();

} // namespace kelo::demo
