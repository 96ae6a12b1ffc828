#pragma once

namespace kelo::authorization {

/// What the user's keyring is ready for.
enum class KeyringState {
    absent, ///< no Secret Service answers
    empty,  ///< it has no default collection; the first passkey makes one
    locked, ///< it asks the user before it gives a secret
    unlocked,
};

/// The state of the user's keyring. Asks the user nothing; blocks until the keyring answers.
KeyringState keyringState();

} // namespace kelo::authorization
