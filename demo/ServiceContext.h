#pragma once

#include "demo/StateFile.h"
#include "demo/accounts/AccountStore.h"
#include "demo/accounts/CsrfToken.h"
#include "demo/accounts/SessionTable.h"
#include "demo/http/Http.h"
#include "demo/passkeys/CeremonyRecord.h"
#include "demo/passkeys/ChallengeTable.h"
#include "demo/passkeys/PasskeyStore.h"
#include "demo/passkeys/PasskeyVerifier.h"

#include <string>
#include <string_view>

namespace kelo::demo {

/// What the handlers share: the service's identity and all of its data.
struct ServiceContext {
    static constexpr const char* relyingParty = "localhost";
    static constexpr const char* sessionCookie = "__Secure-kelo.session-token";
    static constexpr const char* csrfCookie = "__Host-kelo.csrf-token";

    /// The origin is where the service listens; passkeys may be bound to another. Loads what an
    /// earlier run stored. Throws ServiceError.
    ServiceContext(std::string origin, std::string passkeyOrigin, StateFile state);

    /// The account that sent the request; null if nobody is signed in. Valid until the sessions
    /// change.
    const Session* sessionOf(const Request& request) const;

    /// Signs in with a new session, never the one of the request, so that nobody can be made to use
    /// a session that an attacker knows.
    void openSession(const Request& request, std::string_view email, Reply& reply);
    void closeSession(const Request& request, Reply& reply);

    /// The anonymous CSRF token to put in a form; sets the cookie unless the request brought it.
    std::string csrfTokenFor(const Request& request, Reply& reply) const;

    /// Whether a form's token and the cookie belong together.
    bool isCsrfTokenOf(const Request& request, std::string_view token) const;

    /// Stores the state; false, with a warning, if it could not be written.
    bool save() const;

    std::string origin;
    /// Whether the widget page contains a cross-origin frame, to show what such a frame cannot do.
    bool showsStranger = false;
    PasskeyVerifier verifier;
    CeremonyRecord record;
    AccountStore accounts;
    PasskeyStore passkeys;
    SessionTable sessions;
    ChallengeTable signInChallenges;
    ChallengeTable registrationChallenges;
    CsrfToken csrf;
    StateFile state;

private:
    void forgetSessionOf(const Request& request);
};

} // namespace kelo::demo
