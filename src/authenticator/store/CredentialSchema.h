#pragma once

#include "authenticator/store/Database.h"

#include <cstdint>

namespace kelo::authenticator {

/// The versions of the tables in which passkeys are kept.
namespace schema {
/// A fresh file, for instance after a crash in the very first write.
inline constexpr std::int64_t none = 0;
/// The table "credential", with one passkey for each account. It was never noted whether the
/// service had accepted it.
inline constexpr std::int64_t onePerAccount = 1;
/// The table "passkey", with several passkeys for each account:
///
///     number      grows with each passkey, so that an order does not depend on the clock
///     accepted    1 if the service has ever accepted it
///     refusals    how often the service has refused it since it last accepted it
inline constexpr std::int64_t severalPerAccount = 2;
/// Two columns more:
///
///     keeper      the store of the private key: a KeyKeeper
///     last_used   when it last signed, in seconds since 1970; null if that was never noted
inline constexpr std::int64_t current = 3;
} // namespace schema

/// The version of the file's tables. Throws a Failure of kind storage for a file that is damaged,
/// belongs to another program or was written by a newer Kelo.
std::int64_t schemaVersion(Database& database);

/// Creates the tables of a fresh file, or brings those of an earlier version up to date. Call it in
/// a transaction.
void requireCurrentSchema(Database& database);

} // namespace kelo::authenticator
