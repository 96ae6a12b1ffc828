#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "linux/authorization/keyring/KeyringState.h"
#include "linux/gobject/GObjectPointer.h"

#include <libsecret/secret.h>

#include <functional>
#include <optional>
#include <stop_token>
#include <string_view>

namespace kelo::authorization {

/// A session with the Secret Service that loads and stores the wrapping key. Every call blocks and
/// throws a Failure of kind storage or cancelled. Use it on one thread. A stop from any thread ends
/// a call early.
class Keyring {
public:
    explicit Keyring(const std::stop_token& stop);

    /// Of the default collection. Asks the user nothing.
    KeyringState state();

    /// The wrapping key. Nothing if the keyring has none. May ask the user to unlock the keyring.
    std::optional<authenticator::SecretBytes> load();
    /// Stores a wrapping key in the default collection. May ask the user to unlock or create the
    /// collection.
    void store(const authenticator::SecretBytes& key);

private:
    gobject::GObjectPointer<SecretItem> search();
    gobject::GObjectPointer<SecretCollection> defaultCollection();
    void unlock(GDBusProxy* locked);
    void throwIfStopped() const;
    [[noreturn]] void fail(gobject::GErrorPointer error, const char* operation) const;

    std::stop_token stop;
    gobject::GObjectPointer<GCancellable> cancellable =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
    std::stop_callback<std::function<void()>> onStop;
    gobject::GObjectPointer<SecretService> service;
};

} // namespace kelo::authorization
