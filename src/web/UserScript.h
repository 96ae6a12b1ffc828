#pragma once

#include <string_view>

namespace kelo::web {

/// The two texts of the sign-in button: ours, and the ones under which the page has its own.
inline constexpr std::string_view signInLabel = "Sign in with passkey";
inline constexpr std::string_view waitingLabel = "Waiting for passkey…";

/// Hides the page's own passkey buttons, because a native one stands in their place. Runs in every
/// frame at the end of the document, and again whenever the page changes.
extern const std::string_view hidePasskeyButtonsScript;

} // namespace kelo::web
