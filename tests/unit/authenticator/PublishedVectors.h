#pragma once

#include <span>
#include <string_view>

namespace kelo {

/// A credential of the standard's test vectors, from its registration to an assertion: relying
/// party example.org, origin https://example.org. What has no comment is in hexadecimal.
struct PublishedVector {
    std::string_view name; ///< for the name of a test
    bool crossOrigin = false;
    std::string_view topOrigin; ///< as text; empty where the client data has none
    std::string_view privateKey;
    std::string_view aaguid;
    std::string_view credentialId;
    std::string_view creationChallenge;
    std::string_view creationClientData;
    std::string_view attestationObject;
    std::string_view assertionChallenge;
    std::string_view assertionClientData;
    std::string_view authenticatorData; ///< of the assertion
    std::string_view signature;         ///< with the nonce of RFC 6979
};

/// All that are of ES256 without attestation, byte for byte.
std::span<const PublishedVector> publishedVectors();

} // namespace kelo
