#pragma once

#include "authenticator/store/CredentialStore.h"
#include "linux/inventory/Doctor.h"

#include <span>
#include <string>

namespace kelo::inventory {

/// The name by which a passkey is called on the command line: the first digits of its identifier,
/// in hexadecimal, and as many as tell it from all others.
std::string nameOf(const authenticator::CredentialRecord& passkey,
                   std::span<const authenticator::CredentialRecord> all);

/// A table for people, in their language; days as in the local time zone.
std::string tableOf(std::span<const authenticator::CredentialRecord> all);
std::string reportOf(std::span<const Finding> findings);

/// For programs: never translated, times in UTC (RFC 3339).
std::string jsonOf(std::span<const authenticator::CredentialRecord> all);
std::string jsonOf(std::span<const Finding> findings);

} // namespace kelo::inventory
