#include "component/tpm/ChipFixture.h"
#include "unit/authenticator/IndependentVerifier.h"

#include "authenticator/GetAssertion.h"
#include "authenticator/MakeCredential.h"
#include "authenticator/keys/SoftwareKeyStore.h"

namespace kelo::tests {
namespace {

using namespace authenticator;

/// The ceremonies with both real key stores, for the service "localhost". Somebody else's library
/// (libfido2) is the service.
class ChipCeremony : public ChipFixture {
protected:
    Bytes registerPasskey() {
        MakeCredential ceremony(
            parts, {"localhost", bytesOf("creation challenge"), "zoe", bytesOf("user-1")}, nullptr);
        const auto made = scope.run(ceremony.run());
        if (!made->value)
            throw std::runtime_error(made->error->what());
        const auto verified = verifyRegistration(*made->value, "localhost");
        if (!verified)
            throw std::runtime_error("libfido2 does not accept the registration");
        EXPECT_EQ(verified->flags, 0x45);
        EXPECT_EQ(verified->credentialId, made->value->credentialId);
        return verified->publicKey;
    }
    auto signIn() {
        GetAssertion ceremony(
            parts, {"localhost", bytesOf("assertion challenge"), std::nullopt, std::nullopt},
            nullptr);
        return scope.run(ceremony.run());
    }
    void expectAccepted(const Bytes& publicKey) {
        const auto signedIn = signIn();
        ASSERT_TRUE(signedIn->value) << signedIn->error->what();
        EXPECT_TRUE(verifyAssertion(*signedIn->value, publicKey, "localhost", true));
        signedIn->value->signature->back() ^= 1;
        EXPECT_FALSE(verifyAssertion(*signedIn->value, publicKey, "localhost", true));
    }
    KeyKeeper newestKeeper() const { return scope.credentials.find("localhost").front().keeper; }

    SoftwareKeyStore software{keyring, scope.worker};
    KeyStores stores{software, store};
    const AuthenticatorParts parts{scope.associations, scope.sheets, scope.verifier, stores,
                                   scope.credentials,  scope.worker, scope.clock};
};

TEST_F(ChipCeremony, PasskeyInTheChipIsAcceptedByAnotherLibrary) {
    const Bytes publicKey = registerPasskey();
    EXPECT_EQ(newestKeeper(), KeyKeeper::chip);
    expectAccepted(publicKey);
}

TEST_F(ChipCeremony, PasskeyInSoftwareIsAcceptedByAnotherLibrary) {
    chip.cutPower();
    const Bytes publicKey = registerPasskey();
    EXPECT_EQ(newestKeeper(), KeyKeeper::software);
    expectAccepted(publicKey);
}

TEST_F(ChipCeremony, PasskeyInSoftwareSignsWhenThereIsAChipLater) {
    chip.cutPower();
    const Bytes publicKey = registerPasskey();
    chip.powerOn();
    expectAccepted(publicKey);
}

TEST_F(ChipCeremony, FailedRegistrationKeepsNoRecord) {
    keyring->failure = "No keyring is running.";
    EXPECT_THROW(registerPasskey(), std::runtime_error);
    EXPECT_TRUE(scope.credentials.all().empty());
}

} // namespace
} // namespace kelo::tests
