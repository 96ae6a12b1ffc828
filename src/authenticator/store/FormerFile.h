#pragma once

#include <filesystem>

namespace kelo::authenticator {

/// Keeps a copy of the credential store's file beside it, as it is before its tables are brought up
/// to date. Call it while nobody can write the file. A copy that is already there stays, because it
/// is the older one. Throws a Failure of kind storage.
void keepFormerFile(const std::filesystem::path& file);

/// Removes the copy, once the new tables have served or a passkey in it must not stay. Does nothing
/// if there is none.
void dropFormerFile(const std::filesystem::path& file);

} // namespace kelo::authenticator
