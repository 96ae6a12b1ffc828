#pragma once

#include "base/ObservableObject.h"
#include "passkey/PlatformCeremony.h"
#include "platform/HttpSession.h"
#include "service/JsonReply.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelo::passkey {

/// Signs the user in with a platform passkey and hands the session's cookies to the caller.
///
/// One for the life of the process, owned by a shared pointer. Main thread only. It does not guard
/// against a second signIn() while one runs: the disabled button does.
class PasskeyAuthenticator final : public ObservableObject,
                                   public PlatformCeremony<platform::PlatformAssertionCredential>,
                                   public std::enable_shared_from_this<PasskeyAuthenticator> {
public:
    PasskeyAuthenticator();

    /// True from the start of signIn() until it ends.
    Published<bool> busy{*this, false};
    /// Text of the last failure: set by the caller of signIn(), cleared by the next sign-in.
    Published<std::optional<std::string>> errorMessage{*this, std::nullopt};

    /// Returns all cookies that apply to the service's base URL. Throws a PasskeyError, or passes
    /// on the platform's error unchanged. Nothing is retried.
    Task<std::vector<platform::HttpCookie>> signIn();

    Task<nlohmann::json> fetchAssertionOptions();
    Task<platform::PlatformAssertionCredential> performAssertion(nlohmann::json options);
    /// A credential without authenticator data, signature or user ID is a bug of the platform and
    /// aborts the process.
    static nlohmann::json assertionJSON(const platform::PlatformAssertionCredential& credential);
    Task<void> completeSignIn(nlohmann::json assertion);
    std::vector<platform::HttpCookie> sessionCookies() const;

private:
    /// Completes the sign-in, and tells the platform whether the service has accepted the passkey.
    /// The credential must outlive the task.
    Task<std::vector<platform::HttpCookie>>
    exchangeForSession(const platform::PlatformAssertionCredential& credential);
    Task<std::string> fetchCsrfToken();
    std::vector<platform::HttpCookie> storedCookies() const;

    /// Its cookies live as long as this object, so a later sign-in starts with the earlier cookies.
    std::unique_ptr<platform::HttpSession> session;
};

} // namespace kelo::passkey
