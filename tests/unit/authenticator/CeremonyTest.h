#pragma once

#include "unit/authenticator/IndependentVerifier.h"

#include "authenticator/GetAssertion.h"
#include "authenticator/MakeCredential.h"
#include "fakes/authenticator/ScopedAuthenticator.h"
#include "platform/Window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace kelo {

/// A fake user with keys and a disk, and requests of the service "localhost".
class CeremonyTest : public testing::Test {
protected:
    struct SomeWindow final : platform::Window {};
    using Registered = fakes::Ended<platform::PlatformRegistrationCredential>;
    using Asserted = fakes::Ended<platform::PlatformAssertionCredential>;

    static platform::PlatformRegistrationRequest registration(std::string name = "zoe@example.org",
                                                              std::string userId = "user-1") {
        return {"localhost", bytesOf("creation challenge"), std::move(name), bytesOf(userId)};
    }
    static platform::PlatformAssertionRequest assertion() {
        return {"localhost", bytesOf("assertion challenge"), std::nullopt, std::nullopt};
    }

    std::shared_ptr<Registered> doRegister(platform::PlatformRegistrationRequest request) {
        makers.push_back(std::make_unique<authenticator::MakeCredential>(
            scope.parts, std::move(request), nullptr));
        return scope.run(makers.back()->run());
    }
    std::shared_ptr<Asserted> signIn(platform::PlatformAssertionRequest request) {
        getters.push_back(std::make_unique<authenticator::GetAssertion>(
            scope.parts, std::move(request), nullptr));
        return scope.run(getters.back()->run());
    }
    /// Registers, and clears the record of what was shown.
    platform::PlatformRegistrationCredential registered(std::string name, std::string userId) {
        auto ended = doRegister(registration(std::move(name), std::move(userId)));
        scope.person.events.clear();
        scope.person.requests.clear();
        return ended->value.value();
    }

    template <typename T>
    static void expectError(const fakes::Ended<T>& ended, FailureKind kind,
                            const std::string& sentence) {
        ASSERT_TRUE(ended.error);
        EXPECT_EQ(ended.error->kind(), kind);
        EXPECT_EQ(ended.error->localizedDescription(), sentence);
    }
    std::vector<authenticator::CredentialRecord> kept() const {
        return scope.credentials.find("localhost");
    }

    static constexpr const char* nothingCanVerify =
        "This computer has no way to check that it is you, so the passkey was not used. Make sure "
        "that Kelo is installed completely, with its PAM service \"kelo\".";
    static constexpr const char* verificationDoesNotWork =
        "The system's check that it is you did not work, so the passkey was not used. Please try "
        "again. If that does not help, see whether you can still unlock your screen.";

    // The ceremonies outlive the tasks that the scope drops.
    std::vector<std::unique_ptr<authenticator::MakeCredential>> makers;
    std::vector<std::unique_ptr<authenticator::GetAssertion>> getters;
    fakes::ScopedAuthenticator scope;
};

} // namespace kelo
