#include "linux/authorization/keyring/Keyring.h"

#include "base/Failure.h"
#include "base/Invariant.h"
#include "base/Translation.h"
#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"

#include <glib.h>

#include <algorithm>
#include <string>
#include <utility>

namespace kelo::authorization {

namespace {

using authenticator::SecretBytes;

constexpr const char* label = "Key that protects the passkeys of Kelo";
constexpr const char* ownCollectionLabel = "Passkeys of Kelo";

bool isIn(SecretCollection* collection, SecretItem* item) {
    return pathOf(item).starts_with(pathOf(collection) + "/");
}

} // namespace

CollectionPointer Keyring::ownCollection() {
    // Found by its name: after a restart, GNOME's keyring no longer finds what is in a locked
    // collection by its schema.
    auto collection = session.collectionCalled(ownCollectionLabel);
    const auto common = session.defaultCollection();
    const bool isCommon = common && collection && pathOf(common.get()) == pathOf(collection.get());
    return isCommon ? CollectionPointer() : collection;
}

CollectionPointer Keyring::ownCollectionInUse() {
    auto collection = ownCollection();
    return collection && itemCount(collection.get()) > 0 ? std::move(collection)
                                                         : CollectionPointer();
}

ItemPointer Keyring::find(SecretCollection* own) {
    auto items = session.items();
    if (own)
        std::erase_if(items, [&](const auto& item) { return !isIn(own, item.get()); });
    // There may be several, for instance in two collections. Always choose the same one.
    const auto oldest = std::ranges::min_element(
        items, {}, [](const auto& item) { return secret_item_get_created(item.get()); });
    return oldest == items.end() ? ItemPointer() : std::move(*oldest);
}

KeyringState Keyring::state() {
    if (ownCollectionInUse())
        return KeyringState::own;
    const auto collection = session.defaultCollection();
    if (!collection)
        return KeyringState::empty;
    return secret_collection_get_locked(collection.get()) ? KeyringState::locked
                                                          : KeyringState::unlocked;
}

SecretBytes Keyring::read(SecretItem* item) {
    if (secret_item_get_locked(item))
        session.unlock(G_DBUS_PROXY(item));
    std::optional<SecretBytes> key = session.read(item);
    if (!key)
        throw Failure(
            FailureKind::storage,
            translated(
                "The key that protects your passkeys is damaged in your keyring. Delete \"%1\" "
                "there, sign in another way, then register a new passkey from the Account menu.",
                {label}),
            "the secret is not a key");
    return std::move(*key);
}

void Keyring::unlockIfLocked(SecretCollection* collection) {
    if (secret_collection_get_locked(collection))
        session.unlock(G_DBUS_PROXY(collection));
}

std::optional<SecretBytes> Keyring::readFrom(SecretCollection* own) {
    unlockIfLocked(own);
    const auto item = find(own);
    return item ? std::optional(read(item.get())) : std::nullopt;
}

std::optional<SecretBytes> Keyring::load() {
    if (const auto own = ownCollectionInUse()) {
        auto key = readFrom(own.get());
        // Whoever wants the key next must ask the user again.
        if (!session.lock(own.get()))
            g_message("passkey: the keyring did not lock the collection of the wrapping key");
        return key;
    }
    auto item = find();
    if (!item) {
        // Some keyrings cannot search a locked collection.
        const auto collection = session.defaultCollection();
        if (!collection || !secret_collection_get_locked(collection.get()))
            return std::nullopt;
        session.unlock(G_DBUS_PROXY(collection.get()));
        item = find();
    }
    return item ? std::optional(read(item.get())) : std::nullopt;
}

void Keyring::store(const SecretBytes& key) {
    session.put(key, label, nullptr);
}

CollectionPointer Keyring::requireOwnCollection() {
    auto own = ownCollection();
    if (!own)
        own = session.makeCollection(ownCollectionLabel);
    if (!own)
        throw Failure(
            FailureKind::storage,
            translated("Nothing was changed, because your keyring has made no keyring for Kelo. "
                       "Try again and choose a password when it asks."),
            "the prompt for a new collection was dismissed");
    unlockIfLocked(own.get());
    return own;
}

void Keyring::moveToOwnCollection() {
    auto own = ownCollectionInUse();
    const auto isMoved = static_cast<bool>(own);
    auto others = session.items();
    std::erase_if(others, [&](const auto& item) { return isMoved && isIn(own.get(), item.get()); });
    if (isMoved && others.empty())
        return;
    const auto key = isMoved ? readFrom(own.get()) : load();
    if (!key)
        invariantBroken("there is a wrapping key to move");
    if (!isMoved) {
        own = requireOwnCollection();
        session.put(*key, label, own.get());
    }
    if (!session.lock(own.get())) {
        if (!isMoved)
            session.remove(own.get());
        throw Failure(FailureKind::storage,
                      translated("Nothing was changed, because your keyring cannot lock a keyring "
                                 "of Kelo's own."),
                      "the keyring did not lock a collection");
    }
    // A key that protects other passkeys, from another computer for instance, is not ours to
    // delete.
    for (const auto& item : others)
        if (std::ranges::equal(read(item.get()).view(), key->view()))
            session.remove(item.get());
}

void Keyring::moveToDefaultCollection() {
    const auto own = ownCollectionInUse();
    if (!own)
        return;
    const auto key = load();
    if (key)
        store(*key);
    // The library reports no error if the user refuses the prompt.
    const auto items = session.items();
    if (key &&
        std::ranges::all_of(items, [&](const auto& item) { return isIn(own.get(), item.get()); }))
        throw Failure(
            FailureKind::storage,
            translated("Nothing was changed, because your keyring did not take the key back. Try "
                       "again and let the keyring store it when it asks."),
            "the stored key was not found");
    session.remove(own.get());
}

KeyringState keyringState(const std::stop_token& stop) {
    try {
        return Keyring(stop).state();
    } catch (const Failure&) {
        return KeyringState::absent;
    }
}

void keepWrappingKeyInOwnCollection() {
    Keyring keyring((std::stop_token()));
    if (keyring.state() != KeyringState::own)
        SecretServiceWrappingKeySource().findOrCreate(std::stop_token());
    keyring.moveToOwnCollection();
}

void keepWrappingKeyInDefaultCollection() {
    Keyring(std::stop_token()).moveToDefaultCollection();
}

} // namespace kelo::authorization
