#pragma once

#include "authenticator/store/CredentialStore.h"

#include <string_view>

namespace kelo {

/// A record of "localhost" whose other fields follow from these two.
inline authenticator::CredentialRecord record(std::string_view credentialId,
                                              std::string_view userId) {
    authenticator::CredentialRecord made;
    made.credentialId = bytesOf(credentialId);
    made.relyingPartyIdentifier = "localhost";
    made.userId = bytesOf(userId);
    made.accountName = "account of " + std::string(userId);
    made.created = std::chrono::sys_seconds(std::chrono::seconds(1'700'000'000));
    made.publicKey.x.fill(static_cast<std::uint8_t>(credentialId.size()));
    made.publicKey.y.fill(static_cast<std::uint8_t>(userId.size()));
    made.wrappedPrivateKey = bytesOf("wrapped " + std::string(credentialId));
    return made;
}

/// The same after the service has accepted it.
inline authenticator::CredentialRecord acceptedRecord(std::string_view credentialId,
                                                      std::string_view userId) {
    authenticator::CredentialRecord made = record(credentialId, userId);
    made.accepted = true;
    return made;
}

} // namespace kelo
