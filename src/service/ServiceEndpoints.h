#pragma once

#include "base/Url.h"
#include "platform/UrlRequest.h"

#include <string_view>

/// Where the service is and what can be asked of it. The one place that knows.
namespace kelo::service {

/// HTTPS origin of the service: no path, no trailing slash. Compiled in; made on first use, and a
/// constant that does not parse stops the process.
const Url& serviceBaseURL();

/// The bare host of the service, as the authenticator and the settings pane name it.
std::string_view relyingPartyIdentifier();

/// The page of the voice widget. A constant of its own.
const Url& widgetURL();

namespace endpoint {
inline constexpr std::string_view assertionOptions = "api/account/passkey/auth/options";
inline constexpr std::string_view signInCsrf = "api/auth/csrf";
inline constexpr std::string_view credentialsCallback = "api/auth/callback/credentials";
inline constexpr std::string_view registrationCsrf = "api/csrf";
inline constexpr std::string_view registrationOptions = "api/account/passkey/register/options";
inline constexpr std::string_view registrationVerify = "api/account/passkey/register/verify";
} // namespace endpoint

/// URL of an endpoint: the base URL, one slash, the path.
Url endpointURL(std::string_view path);

/// A request to an endpoint: 60 seconds, the protocol's cache policy, no header and no body yet.
platform::UrlRequest endpointRequest(std::string_view path, std::string_view method);

/// The text in a cookie list that marks a signed-in session.
inline constexpr std::string_view sessionTokenMark = "session-token";

} // namespace kelo::service
