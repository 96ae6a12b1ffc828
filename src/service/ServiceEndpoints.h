#pragma once

#include "base/Url.h"
#include "platform/HttpSession.h"
#include "platform/UrlRequest.h"

#include <string_view>

/// The address of the service and its endpoints; defined here only.
namespace kelo::service {

/// HTTPS origin of the service, without path or trailing slash. Compiled in and parsed on first
/// use; a constant that does not parse aborts the process.
const Url& serviceBaseURL();

/// The host of the service, as used by the authenticator and the settings pane.
std::string_view relyingPartyIdentifier();

/// URL of the voice widget's page; a constant of its own.
const Url& widgetURL();

namespace endpoint {
inline constexpr std::string_view assertionOptions = "api/account/passkey/auth/options";
inline constexpr std::string_view signInCsrf = "api/auth/csrf";
inline constexpr std::string_view credentialsCallback = "api/auth/callback/credentials";
inline constexpr std::string_view registrationCsrf = "api/csrf";
inline constexpr std::string_view registrationOptions = "api/account/passkey/register/options";
inline constexpr std::string_view registrationVerify = "api/account/passkey/register/verify";
} // namespace endpoint

/// URL of an endpoint: base URL, one slash, path.
Url endpointURL(std::string_view path);

/// A request to an endpoint with a timeout of 60 seconds, the protocol's cache policy, and no
/// headers or body yet.
platform::UrlRequest endpointRequest(std::string_view path, std::string_view method);

/// Whether this is a reply with status 200 that the service itself gave. A page of another origin
/// can be no answer: it would decide for which account a passkey is made.
bool isServiceSuccess(const platform::HttpReply& reply);

/// The text in a cookie list that marks a signed-in session.
inline constexpr std::string_view sessionTokenMark = "session-token";

} // namespace kelo::service
