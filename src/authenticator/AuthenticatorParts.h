#pragma once

#include "authenticator/consent/PasskeySheet.h"
#include "authenticator/consent/UserVerifier.h"
#include "authenticator/keys/KeyStores.h"
#include "authenticator/store/CredentialStore.h"
#include "base/Clock.h"
#include "base/async/Worker.h"

#include <span>
#include <string>
#include <string_view>

namespace kelo::authenticator {

/// A relying party that this authenticator serves.
struct Association {
    std::string relyingPartyIdentifier;
    /// The only origin from which its passkeys are used, as in the client data:
    /// scheme://host[:port].
    std::string origin;
};

/// What a ceremony needs. All references must outlive the ceremony.
struct AuthenticatorParts {
    std::span<const Association> associations;
    PasskeySheetFactory& sheets;
    UserVerifier& verifier;
    KeyStores& keys;
    const CredentialStore& credentials;
    /// Reads and writes the credential store's file.
    Worker& worker;
    const Clock& clock;

    /// The association of exactly this relying party. Throws a Failure of kind notAllowed if there
    /// is none.
    const Association& requireAssociation(std::string_view relyingPartyIdentifier) const;
};

} // namespace kelo::authenticator
