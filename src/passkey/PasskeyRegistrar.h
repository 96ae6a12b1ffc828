#pragma once

#include "base/ObservableObject.h"
#include "base/SecretText.h"
#include "base/Url.h"
#include "passkey/PlatformCeremony.h"
#include "platform/CookieStore.h"
#include "platform/UrlRequest.h"
#include "service/JsonReply.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::passkey {

/// Registers a new platform passkey for the user who is signed in to the web application, with the
/// cookies of that session.
///
/// One for the life of the process, owned by a shared pointer. Main thread only. It does not guard
/// against a second registration while one runs: the disabled command does.
class PasskeyRegistrar final : public ObservableObject,
                               public PlatformCeremony<platform::PlatformRegistrationCredential>,
                               public std::enable_shared_from_this<PasskeyRegistrar> {
public:
    PasskeyRegistrar();

    /// True from the start of a registration until it ends.
    Published<bool> busy{*this, false};
    /// Set after a successful registration.
    Published<std::optional<std::string>> message{*this, std::nullopt};

    /// Runs a registration. cookies: all cookies of the web view. passwordOrCode: what the user
    /// typed; the service accepts it as either. Throws a PasskeyError, or passes on the platform's
    /// error unchanged. (Not named "register", which is a keyword of the language.)
    Task<void> registerPasskey(std::vector<platform::HttpCookie> cookies,
                               SecretText passwordOrCode);

    Task<platform::PlatformRegistrationCredential> performRegistration(nlohmann::json options);

private:
    Task<std::string> fetchCsrfToken(std::string cookieHeader);
    Task<nlohmann::json> fetchCreationOptions(std::string cookieHeader, std::string token);
    platform::UrlRequest authorizedRequest(std::string_view path, std::string_view method,
                                           const std::string& cookieHeader) const;

    const Url base;
    const std::string rpID;
};

} // namespace kelo::passkey
