#pragma once

#include "platform/UrlRequest.h"

#include <optional>
#include <string>

namespace kelo::http {

/// How many redirects a request follows before it gives up.
inline constexpr int redirectLimit = 20;

/// The request that a reply with this status and Location asks for; nothing when it is no redirect.
///
/// Within the origin the method changes as HTTP says and headers go along. Another origin gets a
/// bare GET: none of the headers set by hand and no body, and nothing it redirects to gets them
/// back. Fails with a Failure for a target that is not https or cannot be read.
std::optional<platform::UrlRequest> redirected(const platform::UrlRequest& request, int status,
                                               const std::optional<std::string>& location);

} // namespace kelo::http
