#pragma once

#include <string_view>

namespace kelo::web {

/// The two texts of the sign-in button. The page's own buttons are recognised by the same texts.
inline constexpr std::string_view signInLabel = "Sign in with passkey";
inline constexpr std::string_view waitingLabel = "Waiting for passkey…";

/// Hides the page's own passkey buttons, which the native one replaces. Runs in every frame at the
/// end of the document, and again whenever the page changes.
extern const std::string_view hidePasskeyButtonsScript;

} // namespace kelo::web
