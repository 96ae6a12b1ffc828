#pragma once

#include "authenticator/keys/Cryptography.h"
#include "authenticator/keys/SoftwareKeyStore.h"
#include "base/Failure.h"

#include <optional>
#include <string>
#include <utility>

namespace kelo::fakes {

/// A keyring that is a variable.
class FakeWrappingKeySource final : public authenticator::WrappingKeySource {
public:
    std::optional<authenticator::SecretBytes> find(std::stop_token stop) override {
        lastStop = std::move(stop);
        if (failure)
            throw Failure(FailureKind::storage, *failure);
        if (!kept)
            return std::nullopt;
        return authenticator::SecretBytes(Bytes(*kept));
    }
    authenticator::SecretBytes findOrCreate(std::stop_token stop) override {
        if (auto found = find(std::move(stop)))
            return std::move(*found);
        kept = authenticator::randomBytes(32);
        return authenticator::SecretBytes(Bytes(*kept));
    }

    std::optional<Bytes> kept;
    std::optional<std::string> failure;
    std::stop_token lastStop;
};

} // namespace kelo::fakes
