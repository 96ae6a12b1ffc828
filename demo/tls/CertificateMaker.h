#pragma once

#include "demo/tls/OpenSslPointer.h"

#include <chrono>
#include <string>
#include <string_view>

namespace kelo::demo {

/// A certificate and its private key.
struct Identity {
    CertificatePointer certificate;
    KeyPointer key;
};

/// A new private authority, valid for ten years. Its name constraints allow this computer's own
/// names only, so that it cannot vouch for any other host.
Identity makeAuthority();

/// A new server certificate for localhost, 127.0.0.1 and ::1, signed by the authority. Valid for
/// 397 days, but not longer than the authority.
Identity makeServerIdentity(const Identity& authority);

std::string certificateToPem(X509& certificate);
std::string keyToPem(EVP_PKEY& key);

/// Null if the text is not PEM of that kind.
CertificatePointer certificateFromPem(std::string_view pem);
KeyPointer keyFromPem(std::string_view pem);

/// Whether the certificate is valid now and for that long.
bool staysValidFor(const X509& certificate, std::chrono::hours span);

} // namespace kelo::demo
