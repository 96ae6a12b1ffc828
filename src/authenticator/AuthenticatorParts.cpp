#include "authenticator/AuthenticatorParts.h"

#include "base/Failure.h"

#include <algorithm>

namespace kelo::authenticator {

const Association&
AuthenticatorParts::requireAssociation(std::string_view relyingPartyIdentifier) const {
    const auto found = std::ranges::find(associations, relyingPartyIdentifier,
                                         &Association::relyingPartyIdentifier);
    if (found == associations.end())
        throw Failure(FailureKind::notAllowed,
                      "Kelo does not serve passkeys for " + std::string(relyingPartyIdentifier) +
                          ". Use a web browser for that service.",
                      "not an associated relying party");
    return *found;
}

} // namespace kelo::authenticator
