#pragma once

#include "common/Frames.h"

#include <filesystem>

namespace kelo::bench {

/// What follows the Enter key in the login page's password field.
struct SignInTimes {
    std::chrono::steady_clock::duration toFirstBytes{};
    std::chrono::steady_clock::duration toPainted{}; ///< of the page after it
    Frames frames;                                   ///< until nothing is drawn any more
};

/// Signs in with a password, once, in a Kelo that has never been signed in. Its files are below the
/// folder, which must be empty. The demo service must run. Throws std::runtime_error if it does not
/// get so far.
SignInTimes timeSignIn(const std::filesystem::path& build, const std::filesystem::path& folder);

} // namespace kelo::bench
