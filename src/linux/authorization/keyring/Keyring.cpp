#include "linux/authorization/keyring/Keyring.h"

#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/authorization/keyring/AbandonableCall.h"

#include <memory>
#include <string>
#include <utility>

namespace kelo::authorization {

namespace {

using authenticator::SecretBytes;

constexpr std::size_t keySize = authenticator::wrappingKeySize;
constexpr const char* label = "Key that protects the passkeys of Kelo";

const SecretSchema& schema() {
    // The library's struct has reserved members, which must be zero.
    static const SecretSchema wrappingKey = [] {
        SecretSchema made{};
        made.name = "app.kelo.Kelo.WrappingKey";
        made.flags = SECRET_SCHEMA_NONE;
        made.attributes[0] = {"purpose", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return made;
    }();
    return wrappingKey;
}

struct HashTableDeleter {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, HashTableDeleter>;

Attributes attributes() {
    return Attributes(secret_attributes_build(&schema(), "purpose", "passkeys", nullptr));
}

struct ObjectListDeleter {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using ObjectList = std::unique_ptr<GList, ObjectListDeleter>;

struct SecretValueDeleter {
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};
using Secret = std::unique_ptr<SecretValue, SecretValueDeleter>;

/// Receives the error of a call of the library.
class CallError {
public:
    GError** out() { return &raw; }
    gobject::GErrorPointer take() { return gobject::GErrorPointer(std::exchange(raw, nullptr)); }
    explicit operator bool() const { return raw != nullptr; }
    CallError() = default;
    CallError(const CallError&) = delete;
    CallError& operator=(const CallError&) = delete;
    ~CallError() { take(); }

private:
    GError* raw = nullptr;
};

// Some keyrings damage secrets that are not text, so the key is stored as hexadecimal digits.
Secret encodeKey(const SecretBytes& key) {
    constexpr std::string_view digits = "0123456789abcdef";
    SecretBytes text(2 * keySize);
    for (std::size_t i = 0; i < keySize; ++i) {
        text.data()[2 * i] = static_cast<std::uint8_t>(digits[key.view()[i] >> 4]);
        text.data()[2 * i + 1] = static_cast<std::uint8_t>(digits[key.view()[i] & 0xF]);
    }
    return Secret(secret_value_new(reinterpret_cast<const char*>(text.data()),
                                   static_cast<gssize>(text.size()), "text/plain"));
}

std::optional<SecretBytes> decodeKey(SecretValue& value) {
    gsize length = 0;
    const char* text = secret_value_get(&value, &length);
    if (length != 2 * keySize)
        return std::nullopt;
    SecretBytes key(keySize);
    for (std::size_t i = 0; i < keySize; ++i) {
        const int high = g_ascii_xdigit_value(text[2 * i]);
        const int low = g_ascii_xdigit_value(text[2 * i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        key.data()[i] = static_cast<std::uint8_t>(high << 4 | low);
    }
    return key;
}

} // namespace

Keyring::Keyring(const std::stop_token& stop)
    : stop(stop), onStop(stop, [cancel = cancellable] { g_cancellable_cancel(cancel.get()); }) {
    CallError error;
    service = gobject::GObjectPointer<SecretService>::adopt(secret_service_open_sync(
        SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable.get(), error.out()));
    if (!service)
        fail(error.take(), "open");
}

gobject::GObjectPointer<SecretItem> Keyring::search() {
    CallError error;
    const ObjectList found(secret_service_search_sync(service.get(), &schema(), attributes().get(),
                                                      SECRET_SEARCH_ALL, cancellable.get(),
                                                      error.out()));
    if (error)
        fail(error.take(), "search");
    // There may be several, for instance in two collections. Always choose the same one.
    SecretItem* oldest = nullptr;
    for (GList* link = found.get(); link; link = link->next) {
        auto* item = SECRET_ITEM(link->data);
        if (!oldest || secret_item_get_created(item) < secret_item_get_created(oldest))
            oldest = item;
    }
    return gobject::GObjectPointer<SecretItem>::share(oldest);
}

gobject::GObjectPointer<SecretCollection> Keyring::defaultCollection() {
    CallError error;
    auto collection = gobject::GObjectPointer<SecretCollection>::adopt(
        secret_collection_for_alias_sync(service.get(), SECRET_COLLECTION_DEFAULT,
                                         SECRET_COLLECTION_NONE, cancellable.get(), error.out()));
    if (error)
        fail(error.take(), "default collection");
    return collection;
}

KeyringState Keyring::state() {
    const auto collection = defaultCollection();
    if (!collection)
        return KeyringState::empty;
    return secret_collection_get_locked(collection.get()) ? KeyringState::locked
                                                          : KeyringState::unlocked;
}

void Keyring::throwIfStopped() const {
    if (stop.stop_requested())
        throw authenticator::requestCancelled();
}

void Keyring::unlock(GDBusProxy* locked) {
    GList only{locked, nullptr, nullptr};
    const AbandonableCall call;
    call.start([&](GAsyncReadyCallback callback, gpointer data) {
        secret_service_unlock(service.get(), &only, nullptr, callback, data);
    });
    GAsyncResult* result = call.wait(stop);
    throwIfStopped();
    CallError error;
    const int unlocked = secret_service_unlock_finish(service.get(), result, nullptr, error.out());
    if (error)
        fail(error.take(), "unlock");
    if (unlocked < 1)
        throw Failure(
            FailureKind::storage,
            translated("Your keyring is locked, and a passkey needs it. Try again and unlock the "
                       "keyring when it asks."),
            "the unlock prompt was dismissed");
}

std::optional<SecretBytes> Keyring::load() {
    auto item = search();
    if (!item) {
        // Some keyrings cannot search a locked collection.
        const auto collection = defaultCollection();
        if (!collection || !secret_collection_get_locked(collection.get()))
            return std::nullopt;
        unlock(G_DBUS_PROXY(collection.get()));
        item = search();
        if (!item)
            return std::nullopt;
    }
    if (secret_item_get_locked(item.get()))
        unlock(G_DBUS_PROXY(item.get()));
    CallError error;
    if (!secret_item_load_secret_sync(item.get(), cancellable.get(), error.out()))
        fail(error.take(), "load secret");
    const Secret secret(secret_item_get_secret(item.get()));
    std::optional<SecretBytes> key = secret ? decodeKey(*secret) : std::nullopt;
    if (!key)
        throw Failure(
            FailureKind::storage,
            translated(
                "The key that protects your passkeys is damaged in your keyring. Delete \"%1\" "
                "there, sign in another way, then register a new passkey from the Account menu.",
                {label}),
            "the secret is not a key");
    return key;
}

void Keyring::store(const SecretBytes& key) {
    const Secret secret = encodeKey(key);
    const AbandonableCall call;
    call.start([&](GAsyncReadyCallback callback, gpointer data) {
        secret_service_store(service.get(), &schema(), attributes().get(),
                             SECRET_COLLECTION_DEFAULT, label, secret.get(), nullptr, callback,
                             data);
    });
    GAsyncResult* result = call.wait(stop);
    throwIfStopped();
    CallError error;
    if (!secret_service_store_finish(service.get(), result, error.out()))
        fail(error.take(), "store");
}

void Keyring::fail(gobject::GErrorPointer error, const char* operation) const {
    const std::string cause = std::string("Secret Service, ") + operation + ": " +
                              (error ? error->message : "no reason given");
    if (g_cancellable_is_cancelled(cancellable.get()))
        throw authenticator::requestCancelled(cause);
    if (!service)
        throw Failure(
            FailureKind::storage,
            translated(
                "No keyring is running, and without one a passkey cannot be kept safe. Start "
                "your desktop's keyring or password manager and try again."),
            cause);
    throw Failure(
        FailureKind::storage,
        translated("Your keyring did not keep or give the key that protects your passkeys. Check "
                   "that it is unlocked and try again."),
        cause);
}

KeyringState keyringState() {
    try {
        return Keyring(std::stop_token()).state();
    } catch (const Failure&) {
        return KeyringState::absent;
    }
}

} // namespace kelo::authorization
