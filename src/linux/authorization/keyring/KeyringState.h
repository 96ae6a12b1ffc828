#pragma once

#include <stop_token>

namespace kelo::authorization {

/// What the user's keyring is ready for.
enum class KeyringState {
    absent, ///< no Secret Service answers
    empty,  ///< it has no default collection; the first passkey makes one
    locked, ///< it asks the user before it gives a secret
    unlocked,
    own, ///< the wrapping key is in a collection of its own, and the user is asked at each use
};

/// The state of the user's keyring. Asks the user nothing; blocks until the keyring answers. After
/// a stop, which may come from any thread, it is absent.
KeyringState keyringState(const std::stop_token& stop = {});

/// Moves the wrapping key into a collection of its own, which is locked whenever it is not in use;
/// makes the key first if there is none. The keyring asks the user for passwords meanwhile, so both
/// calls block that long. They throw a Failure of kind storage, and leave the key where it was.
void keepWrappingKeyInOwnCollection();
/// Moves it back into the default collection, which is open while the user is logged in.
void keepWrappingKeyInDefaultCollection();

} // namespace kelo::authorization
