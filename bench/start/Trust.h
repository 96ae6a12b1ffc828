#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kelo::bench {

/// Adds a certificate authority to the list that the system trusts, as this private desktop sees
/// it, so that browsers without an option for it reach the demo service over HTTPS like the others.
/// folder: where the list is kept. False where the desktop's files are not private, or the system
/// has no such list: nothing is changed then.
bool trustInPrivateDesktop(const std::filesystem::path& authority,
                           const std::filesystem::path& folder);

/// SHA-256 of a certificate's public key (SubjectPublicKeyInfo) in Base64, by which some browsers
/// are told to trust it. Nothing if the file holds no certificate.
std::optional<std::string> publicKeyHash(const std::filesystem::path& certificate);

} // namespace kelo::bench
