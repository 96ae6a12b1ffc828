#include "authenticator/keys/KeyStores.h"

#include <utility>

namespace kelo::authenticator {

Task<CreatedKey> KeyStores::create() {
    const bool hasChip = co_await chip.answers();
    KeyStore& store = hasChip ? chip : software;
    co_return co_await store.create();
}

Task<Bytes> KeyStores::sign(KeyKeeper keeper, Bytes wrappedPrivateKey, Bytes digest) {
    KeyStore& store = keeper == KeyKeeper::chip ? chip : software;
    co_return co_await store.sign(std::move(wrappedPrivateKey), std::move(digest));
}

} // namespace kelo::authenticator
