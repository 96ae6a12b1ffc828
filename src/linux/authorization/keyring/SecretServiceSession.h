#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "linux/gobject/GObjectPointer.h"

#include <libsecret/secret.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace kelo::authorization {

class AbandonableCall;

using ItemPointer = gobject::GObjectPointer<SecretItem>;
using CollectionPointer = gobject::GObjectPointer<SecretCollection>;

/// The calls to the Secret Service that the wrapping key needs. Every call blocks and throws a
/// Failure of kind storage or cancelled. Use it on one thread. A stop from any thread ends a call
/// early.
class SecretServiceSession {
public:
    explicit SecretServiceSession(const std::stop_token& stop);

    /// What holds a wrapping key, in every collection. Some keyrings leave out what is locked.
    std::vector<ItemPointer> items();
    /// Null if there is none yet.
    CollectionPointer defaultCollection();
    /// The first collection with this label; null if there is none.
    CollectionPointer collectionCalled(std::string_view label);
    /// Asks the user for the password of the new collection. Null if the user refuses.
    CollectionPointer makeCollection(const char* label);
    /// The collection and what is in it.
    void remove(SecretCollection* collection);

    /// The key in an unlocked item. Nothing if it holds something else.
    std::optional<authenticator::SecretBytes> read(SecretItem* item);
    /// Puts a key into an unlocked collection, or into the default one, which may ask the user.
    void put(const authenticator::SecretBytes& key, const char* label,
             SecretCollection* collection);
    void remove(SecretItem* item);

    /// May ask the user, who may refuse: that is a Failure.
    void unlock(GDBusProxy* itemOrCollection);
    /// Whether the service has locked it.
    bool lock(SecretCollection* collection);

private:
    CollectionPointer collectionAt(const std::string& path);
    /// Empty if it cannot be had: the collection may have gone.
    std::string labelOf(const char* path);
    /// Waits for a call that may prompt the user.
    GAsyncResult* wait(const AbandonableCall& call,
                       const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const;
    [[noreturn]] void fail(gobject::GErrorPointer error, const char* operation) const;

    std::stop_token stop;
    gobject::GObjectPointer<GCancellable> cancellable =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
    std::stop_callback<std::function<void()>> onStop;
    gobject::GObjectPointer<SecretService> service;
};

/// The object path of an item or a collection.
std::string pathOf(gpointer itemOrCollection);

/// How many items are in the collection, as the service told when it was asked for.
std::size_t itemCount(SecretCollection* collection);

} // namespace kelo::authorization
