#pragma once

#include "component/tpm/SimulatedChip.h"

#include "fakes/authenticator/FakeWrappingKeySource.h"
#include "fakes/authenticator/ScopedAuthenticator.h"
#include "linux/tpm/TpmKeyStore.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace kelo::tests {

/// A key store with a chip and a keyring of its own.
class ChipFixture : public testing::Test {
protected:
    authenticator::CreatedKey make() {
        const auto made = scope.run(store.create());
        if (!made->value)
            throw std::runtime_error(made->error->what());
        return *made->value;
    }
    auto sign(const authenticator::CreatedKey& key) {
        return scope.run(store.sign(key.wrappedPrivateKey, digest));
    }

    SimulatedChip chip;
    fakes::ScopedAuthenticator scope;
    std::shared_ptr<fakes::FakeWrappingKeySource> keyring =
        std::make_shared<fakes::FakeWrappingKeySource>();
    tpm::TpmKeyStore store{chip.transport(), keyring, scope.worker};
    Bytes digest = Bytes(32, 0x5A);
};

} // namespace kelo::tests
