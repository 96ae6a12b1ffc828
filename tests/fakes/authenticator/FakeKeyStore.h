#pragma once

#include "authenticator/keys/KeyStores.h"
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

/// A chip of which there is none, unless a test puts one in.
class FakeChip final : public authenticator::ChipKeyStore {
public:
    explicit FakeChip(SheetScript& script) : keys(script) {}

    Task<bool> answers() override { co_return isThere; }
    Task<authenticator::CreatedKey> create() override {
        authenticator::CreatedKey made = co_await keys.create();
        made.keeper = authenticator::KeyKeeper::chip;
        co_return made;
    }
    Task<Bytes> sign(Bytes wrappedPrivateKey, Bytes digest) override {
        return keys.sign(std::move(wrappedPrivateKey), std::move(digest));
    }

    bool isThere = false;
    FakeKeyStore keys;
};

} // namespace kelo::fakes
