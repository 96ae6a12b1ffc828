#include "linux/authorization/keyring/SecretServiceSession.h"

#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/authorization/keyring/AbandonableCall.h"
#include "linux/gobject/GLibHandles.h"

#include <string>
#include <utility>

namespace kelo::authorization {

namespace {

using authenticator::SecretBytes;

constexpr std::size_t keySize = authenticator::wrappingKeySize;

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
    bool is(GQuark domain, int code) const { return g_error_matches(raw, domain, code); }
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

SecretServiceSession::SecretServiceSession(const std::stop_token& stop)
    : stop(stop), onStop(stop, [cancel = cancellable] { g_cancellable_cancel(cancel.get()); }) {
    CallError error;
    service = gobject::GObjectPointer<SecretService>::adopt(secret_service_open_sync(
        SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable.get(), error.out()));
    if (!service)
        fail(error.take(), "open");
}

std::vector<ItemPointer> SecretServiceSession::items() {
    CallError error;
    const ObjectList found(secret_service_search_sync(service.get(), &schema(), attributes().get(),
                                                      SECRET_SEARCH_ALL, cancellable.get(),
                                                      error.out()));
    if (error)
        fail(error.take(), "search");
    std::vector<ItemPointer> items;
    for (GList* link = found.get(); link; link = link->next)
        items.push_back(ItemPointer::share(SECRET_ITEM(link->data)));
    return items;
}

CollectionPointer SecretServiceSession::defaultCollection() {
    CallError error;
    auto collection = CollectionPointer::adopt(
        secret_collection_for_alias_sync(service.get(), SECRET_COLLECTION_DEFAULT,
                                         SECRET_COLLECTION_NONE, cancellable.get(), error.out()));
    if (error)
        fail(error.take(), "default collection");
    return collection;
}

CollectionPointer SecretServiceSession::collectionAt(const std::string& path) {
    // The library's own calls load all items of all collections, and fail if one of them goes
    // meanwhile.
    CallError error;
    auto collection = CollectionPointer::adopt(static_cast<SecretCollection*>(g_initable_new(
        SECRET_TYPE_COLLECTION, cancellable.get(), error.out(), "service", service.get(), "flags",
        SECRET_COLLECTION_NONE, "g-flags", G_DBUS_PROXY_FLAGS_NONE, "g-name",
        g_dbus_proxy_get_name(G_DBUS_PROXY(service.get())), "g-object-path", path.c_str(),
        "g-interface-name", "org.freedesktop.Secret.Collection", "g-connection",
        g_dbus_proxy_get_connection(G_DBUS_PROXY(service.get())), nullptr)));
    if (!collection)
        fail(error.take(), "collection");
    return collection;
}

std::string SecretServiceSession::labelOf(const char* path) {
    auto* proxy = G_DBUS_PROXY(service.get());
    const gobject::GVariantPointer answer(g_dbus_connection_call_sync(
        g_dbus_proxy_get_connection(proxy), g_dbus_proxy_get_name(proxy), path,
        "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", "org.freedesktop.Secret.Collection", "Label"), G_VARIANT_TYPE("(v)"),
        G_DBUS_CALL_FLAGS_NONE, -1, cancellable.get(), nullptr));
    if (!answer)
        return {};
    const gobject::GVariantPointer boxed(g_variant_get_child_value(answer.get(), 0));
    const gobject::GVariantPointer label(g_variant_get_variant(boxed.get()));
    return g_variant_is_of_type(label.get(), G_VARIANT_TYPE_STRING)
               ? g_variant_get_string(label.get(), nullptr)
               : "";
}

CollectionPointer SecretServiceSession::collectionCalled(std::string_view label) {
    const gobject::GVariantPointer paths(
        g_dbus_proxy_get_cached_property(G_DBUS_PROXY(service.get()), "Collections"));
    for (gsize at = 0; paths && at < g_variant_n_children(paths.get()); ++at) {
        const char* path = nullptr;
        g_variant_get_child(paths.get(), at, "&o", &path);
        if (labelOf(path) == label)
            return collectionAt(path);
    }
    return {};
}

CollectionPointer SecretServiceSession::makeCollection(const char* label) {
    const AbandonableCall call;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_collection_create(service.get(), label, nullptr, SECRET_COLLECTION_CREATE_NONE,
                                 nullptr, callback, data);
    });
    CallError error;
    auto made = CollectionPointer::adopt(secret_collection_create_finish(result, error.out()));
    // The library has no error for a user who refuses: some keyrings then name a collection that is
    // none.
    if (error && !error.is(G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD) &&
        !error.is(SECRET_ERROR, SECRET_ERROR_NO_SUCH_OBJECT))
        fail(error.take(), "make a collection");
    return made;
}

void SecretServiceSession::remove(SecretCollection* collection) {
    const AbandonableCall call;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_collection_delete(collection, nullptr, callback, data);
    });
    CallError error;
    if (!secret_collection_delete_finish(collection, result, error.out()))
        fail(error.take(), "delete the collection");
}

std::optional<SecretBytes> SecretServiceSession::read(SecretItem* item) {
    CallError error;
    if (!secret_item_load_secret_sync(item, cancellable.get(), error.out()))
        fail(error.take(), "load secret");
    const Secret secret(secret_item_get_secret(item));
    return secret ? decodeKey(*secret) : std::nullopt;
}

void SecretServiceSession::put(const SecretBytes& key, const char* label,
                               SecretCollection* collection) {
    const Secret secret = encodeKey(key);
    const AbandonableCall call;
    const std::string place = collection ? pathOf(collection) : SECRET_COLLECTION_DEFAULT;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_service_store(service.get(), &schema(), attributes().get(), place.c_str(), label,
                             secret.get(), nullptr, callback, data);
    });
    CallError error;
    if (!secret_service_store_finish(service.get(), result, error.out()))
        fail(error.take(), "store");
}

void SecretServiceSession::remove(SecretItem* item) {
    const AbandonableCall call;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_item_delete(item, nullptr, callback, data);
    });
    CallError error;
    if (!secret_item_delete_finish(item, result, error.out()))
        fail(error.take(), "delete the key");
}

void SecretServiceSession::unlock(GDBusProxy* itemOrCollection) {
    GList only{itemOrCollection, nullptr, nullptr};
    const AbandonableCall call;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_service_unlock(service.get(), &only, nullptr, callback, data);
    });
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

bool SecretServiceSession::lock(SecretCollection* collection) {
    GList only{collection, nullptr, nullptr};
    const AbandonableCall call;
    GAsyncResult* result = wait(call, [&](GAsyncReadyCallback callback, gpointer data) {
        secret_service_lock(service.get(), &only, nullptr, callback, data);
    });
    CallError error;
    const int locked = secret_service_lock_finish(service.get(), result, nullptr, error.out());
    return !error && locked > 0;
}

GAsyncResult*
SecretServiceSession::wait(const AbandonableCall& call,
                           const std::function<void(GAsyncReadyCallback, gpointer)>& begin) const {
    call.start(begin);
    GAsyncResult* result = call.wait(stop);
    if (stop.stop_requested())
        throw authenticator::requestCancelled();
    return result;
}

void SecretServiceSession::fail(gobject::GErrorPointer error, const char* operation) const {
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

std::string pathOf(gpointer itemOrCollection) {
    return g_dbus_proxy_get_object_path(G_DBUS_PROXY(itemOrCollection));
}

std::size_t itemCount(SecretCollection* collection) {
    const gobject::GVariantPointer items(
        g_dbus_proxy_get_cached_property(G_DBUS_PROXY(collection), "Items"));
    return items ? g_variant_n_children(items.get()) : 0;
}

} // namespace kelo::authorization
