#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace kelo::webkit {

/// The address of an error page's "Try again" link. It is never loaded: NavigationPolicy intercepts
/// it.
inline constexpr const char* tryAgainAddress = "kelo:try-again";

/// The HTML of a page that is shown in place of one that did not load: a heading, a sentence, and
/// "Try again", which has the focus. Both texts are plain text, not HTML. retryIn: when the page is
/// asked for again by itself; the notice counts the seconds. It has no scripts and loads nothing.
std::string errorPage(const std::string& heading, const std::string& sentence,
                      std::optional<std::chrono::seconds> retryIn = std::nullopt);

} // namespace kelo::webkit
