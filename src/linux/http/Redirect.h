#pragma once

#include "base/Failure.h"
#include "platform/UrlRequest.h"

#include <optional>
#include <string>

namespace kelo::http {

/// The most redirects that one request follows.
inline constexpr int redirectLimit = 20;

/// The request that follows a response with this status and Location; empty if it is no redirect.
///
/// Within the origin, the method changes as HTTP prescribes and the headers are kept. A request to
/// another origin is a GET (or HEAD) without the caller's headers and body; they do not come back
/// if that origin redirects again. Throws a Failure for a target that is not https or no URL.
std::optional<platform::UrlRequest> redirected(const platform::UrlRequest& request, int status,
                                               const std::optional<std::string>& location);

/// The failure of a request that was redirected more often than the limit allows.
Failure tooManyRedirects(const Url& firstUrl);

} // namespace kelo::http
