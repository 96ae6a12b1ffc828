#include "authenticator/AuthenticatorParts.h"

#include "base/Failure.h"
#include "base/Translation.h"

#include <algorithm>

namespace kelo::authenticator {

const Association&
AuthenticatorParts::requireAssociation(std::string_view relyingPartyIdentifier) const {
    const auto found = std::ranges::find(associations, relyingPartyIdentifier,
                                         &Association::relyingPartyIdentifier);
    if (found == associations.end())
        throw Failure(
            FailureKind::notAllowed,
            translated("Kelo does not serve passkeys for %1. Use a web browser for that service.",
                       {relyingPartyIdentifier}),
            "not an associated relying party");
    return *found;
}

} // namespace kelo::authenticator
