#pragma once

#include "authenticator/keys/KeyStore.h"

namespace kelo::authenticator {

/// A key store in hardware that not every computer has.
class ChipKeyStore : public KeyStore {
public:
    /// Whether there is a chip and it answers. Throws nothing.
    virtual Task<bool> answers() = 0;
};

/// The key stores of this computer side by side. Both must outlive this.
class KeyStores {
public:
    KeyStores(KeyStore& software, ChipKeyStore& chip) : software(software), chip(chip) {}

    /// Makes the key in the chip if it answers, and otherwise in the software store. A chip that
    /// answers and then fails is reported: the user would not learn that a key is less well kept.
    /// Throws like KeyStore.
    Task<CreatedKey> create();
    /// Signs with the store that made the key, and with no other. Throws like KeyStore.
    Task<Bytes> sign(KeyKeeper keeper, Bytes wrappedPrivateKey, Bytes digest);

private:
    KeyStore& software;
    ChipKeyStore& chip;
};

} // namespace kelo::authenticator
