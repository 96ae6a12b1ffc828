#pragma once

#include "demo/tls/OpenSslPointer.h"

#include <chrono>
#include <string>
#include <string_view>

namespace kelo::demo {

/// A certificate and the private key it speaks for.
struct Identity {
    CertificatePointer certificate;
    KeyPointer key;
};

/// A new private authority, good for ten years. It is confined to this computer's own names, so
/// that a program that trusts it cannot be shown a certificate of it for any other host.
Identity makeAuthority();

/// A new server certificate for localhost, 127.0.0.1 and ::1, signed by the authority. It ends
/// after 397 days, and never after the authority does.
Identity makeServerIdentity(const Identity& authority);

std::string certificateToPem(X509& certificate);
std::string keyToPem(EVP_PKEY& key);

/// Null when the text is not PEM of that kind.
CertificatePointer certificateFromPem(std::string_view pem);
KeyPointer keyFromPem(std::string_view pem);

/// Whether the certificate is valid now and will be for that long.
bool staysValidFor(const X509& certificate, std::chrono::hours span);

} // namespace kelo::demo
