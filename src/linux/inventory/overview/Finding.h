#pragma once

#include <string>

namespace kelo::inventory {

/// What was found of something that passkeys need of this computer.
struct Finding {
    enum class State {
        good,
        notice,  ///< works, and could be better
        trouble, ///< passkeys do not work until it is mended
    };

    std::string name; ///< for programs: "chip", "keyring", "verification" or "passkeys"
    State state;
    std::string title;
    std::string sentence; ///< what was found, and what to do

    friend bool operator==(const Finding&, const Finding&) = default;
};

} // namespace kelo::inventory
