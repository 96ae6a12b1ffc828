#include "linux/tpm/TpmKeyStore.h"

#include "authenticator/keys/Cryptography.h"
#include "base/async/StopWhenDropped.h"
#include "linux/tpm/TpmKey.h"
#include "linux/tpm/TpmResult.h"

#include <optional>
#include <utility>

namespace kelo::tpm {

using authenticator::SecretBytes;

namespace {

/// What the chip asks for. Not the wrapping key itself, with which the other store encrypts.
SecretBytes authorizationFrom(const SecretBytes& wrappingKey) {
    return authenticator::derivedKey(wrappingKey, "authorization of keys in the TPM");
}

authenticator::CreatedKey createNow(const std::string& chip,
                                    authenticator::WrappingKeySource& source,
                                    const std::stop_token& stop) {
    if (stop.stop_requested())
        throw authenticator::requestCancelled();
    // The keyring first: without it no key must be made.
    const SecretBytes authorization = authorizationFrom(source.findOrCreate(stop));
    const TpmKey key = makeKey(TpmConnection(chip), authorization);
    return {key.publicKey(), encode(key), authenticator::KeyKeeper::chip};
}

Bytes signNow(const std::string& chip, authenticator::WrappingKeySource& source, ByteView stored,
              ByteView digest, const std::stop_token& stop) {
    if (stop.stop_requested())
        throw authenticator::requestCancelled();
    const TpmKey key = decodeKey(stored);
    // Before the user is asked to unlock the keyring for nothing.
    const TpmConnection connection(chip);
    const std::optional<SecretBytes> wrappingKey = source.find(stop);
    if (!wrappingKey)
        throw tpmFailure(TpmTrouble::notAuthorized, "the keyring holds no wrapping key");
    return signWith(connection, key, authorizationFrom(*wrappingKey), digest);
}

} // namespace

std::optional<Failure> chipTrouble(const std::string& chip) {
    try {
        requireSuitableChip(TpmConnection(chip));
        return std::nullopt;
    } catch (const Failure& failure) {
        return failure;
    }
}

TpmKeyStore::TpmKeyStore(std::string chip, std::shared_ptr<authenticator::WrappingKeySource> source,
                         Worker& worker)
    : chip(std::move(chip)), source(std::move(source)), worker(worker) {}

Task<bool> TpmKeyStore::answers() {
    auto job = [chip = chip] { return !chipTrouble(chip); };
    co_return co_await onWorker(worker, std::move(job));
}

Task<authenticator::CreatedKey> TpmKeyStore::create() {
    const StopWhenDropped stop;
    auto job = [chip = chip, source = source, stop = stop.token()] {
        return createNow(chip, *source, stop);
    };
    co_return co_await onWorker(worker, std::move(job));
}

Task<Bytes> TpmKeyStore::sign(Bytes wrappedPrivateKey, Bytes digest) {
    const StopWhenDropped stop;
    auto job = [chip = chip, source = source, stored = std::move(wrappedPrivateKey),
                digest = std::move(digest),
                stop = stop.token()] { return signNow(chip, *source, stored, digest, stop); };
    co_return co_await onWorker(worker, std::move(job));
}

} // namespace kelo::tpm
