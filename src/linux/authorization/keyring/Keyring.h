#pragma once

#include "authenticator/keys/SecretBytes.h"
#include "linux/gobject/GObjectPointer.h"

#include <libsecret/secret.h>

#include <functional>
#include <optional>
#include <stop_token>
#include <string_view>

namespace kelo::authorization {

/// One session with the Secret Service, for the wrapping key in it. Every call blocks, and throws a
/// Failure with a sentence for the user. One thread; a stop from any thread ends a call
/// early.
class Keyring {
public:
    explicit Keyring(const std::stop_token& stop);

    /// The wrapping key; nothing when the keyring has none. Asks the user to unlock where it may
    /// be.
    std::optional<authenticator::SecretBytes> load();
    /// Keeps a wrapping key in the default collection, which the user may be asked to unlock or
    /// make.
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
