#pragma once

#include "authenticator/keys/KeyStore.h"
#include "authenticator/keys/P256Key.h"
#include "base/Failure.h"
#include "base/async/Continuation.h"
#include "fakes/authenticator/FakePasskeySheet.h"

#include <optional>
#include <utility>

namespace kelo::fakes {

/// Real keys, stored unencrypted.
class FakeKeyStore final : public authenticator::KeyStore {
public:
    explicit FakeKeyStore(SheetScript& script) : script(script) {}

    Task<authenticator::CreatedKey> create() override {
        script.events.emplace_back("create");
        co_await obstacle();
        const authenticator::P256Key key = authenticator::P256Key::generate();
        authenticator::CreatedKey created;
        created.publicKey = key.publicKey();
        const authenticator::SecretBytes scalar = key.scalar();
        created.wrappedPrivateKey.assign(scalar.view().begin(), scalar.view().end());
        co_return created;
    }

    Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) override {
        script.events.emplace_back("sign");
        co_await obstacle();
        const auto key = authenticator::P256Key::fromScalar(
            authenticator::SecretBytes(std::move(wrappedPrivateKey)));
        co_return key->sign(digest);
    }

    /// Fails with this text.
    std::optional<std::string> failure;
    /// Never completes.
    bool hangs = false;

private:
    Task<void> obstacle() {
        if (hangs)
            co_await withCheckedContinuation<void>([](CheckedContinuation<void>) {});
        if (failure)
            throw Failure(FailureKind::storage, *failure);
    }

    SheetScript& script;
};

} // namespace kelo::fakes
