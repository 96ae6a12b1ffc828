#include "linux/authorization/keyring/SecretServiceWrappingKeySource.h"

#include "authenticator/keys/Cryptography.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "linux/authorization/keyring/FirstKeyLock.h"
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
    const FirstKeyLock lock(stop);
    if (auto known = keyring.load())
        return std::move(*known);
    SecretBytes made(authenticator::wrappingKeySize);
    authenticator::fillRandom(made.data(), made.size());
    keyring.store(made);
    // Load the key again, because the library reports no error if the user refuses the prompt. A
    // passkey whose wrapping key was not stored could never be used.
    auto kept = keyring.load();
    if (!kept)
        throw Failure(
            FailureKind::storage,
            translated("Your keyring did not keep the key that protects passkeys. Try again "
                       "and let the keyring store it when it asks."),
            "the stored key was not found");
    return std::move(*kept);
}

} // namespace kelo::authorization
