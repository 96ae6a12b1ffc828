#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kelo::authenticator {

/// A relying party whose passkeys this authenticator serves, and the one origin they are used from.
struct Association {
    std::string relyingPartyIdentifier;
    /// As it stands in the client data: scheme://host[:port].
    std::string origin;
};

/// The association of exactly this relying party. Throws a Failure of kind notAllowed when
/// there is none.
const Association& requireAssociation(std::span<const Association> associations,
                                      std::string_view relyingPartyIdentifier);

} // namespace kelo::authenticator
