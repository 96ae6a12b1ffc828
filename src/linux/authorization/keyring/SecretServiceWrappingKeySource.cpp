#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/KeyWrapping.h"
#include "base/Failure.h"
#include "linux/authorization/keyring/Keyring.h"

namespace kelo::authorization {

using authenticator::SecretBytes;

std::optional<SecretBytes> SecretServiceWrappingKeySource::find(std::stop_token stop) {
    return Keyring(stop).load();
}

SecretBytes SecretServiceWrappingKeySource::findOrCreate(std::stop_token stop) {
    Keyring keyring(stop);
    if (auto known = keyring.load())
        return std::move(*known);
    SecretBytes made(authenticator::wrappingKeySize);
    authenticator::fillRandom(made.data(), made.size());
    keyring.store(made);
    // What the keyring gives back is what counts: a store that was refused at a prompt reports no
    // error, and a passkey under a key that nobody kept would be lost from the start.
    auto kept = keyring.load();
    if (!kept)
        throw Failure(FailureKind::storage,
                      "Your keyring did not keep the key that protects passkeys. Try again "
                      "and let the keyring store it when it asks.",
                      "stored, but not found again");
    return std::move(*kept);
}

} // namespace kelo::authorization
