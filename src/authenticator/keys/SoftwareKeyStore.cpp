#include "authenticator/keys/SoftwareKeyStore.h"

#include "authenticator/keys/KeyWrapping.h"
#include "base/Failure.h"
#include "base/Translation.h"
#include "base/async/StopWhenDropped.h"

#include <utility>

namespace kelo::authenticator {

namespace {

void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw requestCancelled();
}

CreatedKey createNow(WrappingKeySource& source, const std::stop_token& stop) {
    throwIfStopped(stop);
    // The wrapping key first: without it no key must be made.
    const SecretBytes wrappingKey = source.findOrCreate(stop);
    const P256Key key = P256Key::generate();
    return {key.publicKey(), wrapPrivateKey(wrappingKey, key)};
}

[[noreturn]] void wrappingKeyLost(std::string cause) {
    throw Failure(
        FailureKind::storage,
        translated("This passkey can no longer be used, because your keyring no longer holds the "
                   "key that protects it. Sign in another way, then register a new passkey from "
                   "the Account menu."),
        std::move(cause));
}

Bytes signNow(WrappingKeySource& source, ByteView wrapped, ByteView digest,
              const std::stop_token& stop) {
    throwIfStopped(stop);
    const std::optional<SecretBytes> wrappingKey = source.find(stop);
    if (!wrappingKey)
        wrappingKeyLost("the keyring holds no wrapping key");
    const auto opened = unwrapPrivateKey(*wrappingKey, wrapped);
    if (const auto* failure = std::get_if<UnwrapFailure>(&opened)) {
        if (*failure == UnwrapFailure::otherWrappingKey)
            wrappingKeyLost("the keyring holds another wrapping key");
        throw Failure(
            FailureKind::storage,
            translated("This passkey is damaged on disk and cannot be used. Sign in another way, "
                       "then register a new passkey from the Account menu."),
            "a wrapped private key is not authentic");
    }
    return std::get<P256Key>(opened).sign(digest);
}

} // namespace

SoftwareKeyStore::SoftwareKeyStore(std::shared_ptr<WrappingKeySource> source, Worker& worker)
    : source(std::move(source)), worker(worker) {}

Task<CreatedKey> SoftwareKeyStore::create() {
    const StopWhenDropped stop;
    auto job = [source = source, stop = stop.token()] { return createNow(*source, stop); };
    co_return co_await onWorker(worker, std::move(job));
}

Task<Bytes> SoftwareKeyStore::sign(Bytes wrappedPrivateKey, Bytes digest) {
    const StopWhenDropped stop;
    auto job = [source = source, wrapped = std::move(wrappedPrivateKey), digest = std::move(digest),
                stop = stop.token()] { return signNow(*source, wrapped, digest, stop); };
    co_return co_await onWorker(worker, std::move(job));
}

} // namespace kelo::authenticator
