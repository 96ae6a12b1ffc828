#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "linux/authorization/keyring/KeyringState.h"
#include "linux/authorization/keyring/SecretServiceSession.h"

#include <optional>
#include <stop_token>

namespace kelo::authorization {

/// Keeps the wrapping key in the user's keyring. Every call blocks and throws a Failure of kind
/// storage or cancelled. Use it on one thread. A stop from any thread ends a call early.
///
/// The key is in the user's default collection, which is open as long as the user is logged in; or,
/// if the user wants it so, in a collection of its own, which is locked again whenever the key has
/// been read.
class Keyring {
public:
    explicit Keyring(const std::stop_token& stop) : session(stop) {}

    /// Asks the user nothing.
    KeyringState state();

    /// The wrapping key. Nothing if the keyring has none. May ask the user to unlock the keyring.
    std::optional<authenticator::SecretBytes> load();
    /// Stores a wrapping key in the default collection. May ask the user to unlock or create the
    /// collection.
    void store(const authenticator::SecretBytes& key);

    /// Moves the wrapping key, which there must be, into a collection of its own. The keyring
    /// asks the user for the password of that collection. If this fails, the key stays where it
    /// was. Finishes a move that was interrupted.
    void moveToOwnCollection();
    /// Moves the wrapping key back into the default collection, and removes its own.
    void moveToDefaultCollection();

private:
    /// Null if there is none.
    CollectionPointer ownCollection();
    /// Null also if there is nothing in it, as a move leaves it that was interrupted.
    CollectionPointer ownCollectionInUse();
    /// Makes it if there is none, and unlocks it.
    CollectionPointer requireOwnCollection();
    /// The key in this collection, which is left unlocked.
    std::optional<authenticator::SecretBytes> readFrom(SecretCollection* own);
    /// The item that counts, among those in a collection or among all. Null if there is none.
    ItemPointer find(SecretCollection* collection = nullptr);
    /// The key in the item, which is unlocked if it has to be.
    authenticator::SecretBytes read(SecretItem* item);
    void unlockIfLocked(SecretCollection* collection);

    SecretServiceSession session;
};

} // namespace kelo::authorization
