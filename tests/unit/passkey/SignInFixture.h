#pragma once

#include "base/Failure.h"
#include "deployment/Deployment.h"
#include "fakes/ScopedTestDesktop.h"
#include "passkey/PasskeyAuthenticator.h"
#include "passkey/PasskeyError.h"

#include <gtest/gtest.h>

namespace kelo {

using Headers = std::vector<std::pair<std::string, std::string>>;

inline std::string at(std::string_view path) {
    return std::string(deployment::serviceOrigin) + "/" + std::string(path);
}

/// A passkey authenticator, and a service with replies that the test prepares.
struct SignInFixture : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<passkey::PasskeyAuthenticator> passkey =
        std::make_shared<passkey::PasskeyAuthenticator>();
    fakes::FakeHttpSession& session = *desktop.ephemeralSessions.at(0);

    ~SignInFixture() override {
        // Flows that a test left suspended refer to the authenticator, which is destroyed before
        // the desktop.
        dropSpawnedTasks();
    }

    static platform::PlatformAssertionCredential credential() {
        return {{1, 2, 3}, bytesOf("{}"), Bytes{4, 5}, Bytes{0xFB, 0xFF}, Bytes{7}};
    }

    auto startSignIn() {
        auto flow = fakes::start(passkey->signIn());
        desktop.loop.runUntilIdle();
        return flow;
    }

    /// Starts a sign-in whose options reply is the given one.
    auto startWithOptions(std::string options) {
        session.reply(200, std::move(options));
        return startSignIn();
    }

    const platform::PlatformAssertionRequest& assertionRequest() const {
        return std::get<platform::PlatformAssertionRequest>(
            desktop.controllers.at(0)->requests.at(0));
    }

    /// Confirms the sheet and lets the rest run.
    void confirm(platform::PlatformAssertionCredential answer = credential()) {
        desktop.controllers.back()->complete({std::move(answer)});
        desktop.loop.runUntilIdle();
    }

    void storeSessionCookie() {
        session.storedCookies = {{"__Secure-kelo.session-token", "xyz", "localhost"}};
    }

    /// A sign-in up to the callback, whose reply is the given one.
    auto signInWithCallback(std::optional<int> status, std::string body) {
        session.reply(200, R"({"challenge":"AAEC"})");
        session.reply(200, R"({"csrfToken":"token"})");
        session.reply(status, std::move(body));
        auto flow = startSignIn();
        confirm();
        return flow;
    }

    template <typename T>
    static void expectFailure(const fakes::FlowResult<T>& flow, passkey::PasskeyError expected) {
        const auto* error = flow.template errorAs<passkey::PasskeyError>();
        ASSERT_TRUE(error) << flow.errorText();
        EXPECT_EQ(*error, expected) << flow.errorText();
    }
};

} // namespace kelo
