#pragma once

#include "base/Failure.h"
#include "deployment/Deployment.h"
#include "fakes/ScopedTestDesktop.h"
#include "passkey/PasskeyError.h"
#include "passkey/PasskeyRegistrar.h"
#include "unit/passkey/SignInFixture.h"

#include <gtest/gtest.h>

namespace kelo {

/// A registrar, and a service with replies that the test prepares.
struct RegistrationFixture : testing::Test {
    fakes::ScopedTestDesktop desktop;
    std::shared_ptr<passkey::PasskeyRegistrar> registrar =
        std::make_shared<passkey::PasskeyRegistrar>();
    fakes::FakeHttpSession& session = desktop.sharedSession;

    const std::vector<platform::HttpCookie> signedIn = {{"session-token", "xyz", "localhost"}};
    const std::string cookieHeader = "session-token=xyz";
    const std::string usualOptions =
        R"({"challenge":"AAEC","user":{"id":"AQ","name":"ada@example.org"}})";

    ~RegistrationFixture() override { dropSpawnedTasks(); }

    static platform::PlatformRegistrationCredential credential() {
        return {{1, 2, 3}, bytesOf("{}"), Bytes{0xFB, 0xFF}};
    }

    auto start(std::vector<platform::HttpCookie> cookies, std::string_view entry = "my code") {
        auto flow = fakes::start(registrar->registerPasskey(std::move(cookies), SecretText(entry)));
        desktop.loop.runUntilIdle();
        return flow;
    }

    auto startWithOptions(std::string options, std::string_view entry = "my code") {
        session.reply(200, R"({"token":"csrf"})");
        session.reply(200, std::move(options));
        return start(signedIn, entry);
    }

    auto startUpToSheet(std::string_view entry = "my code") {
        return startWithOptions(usualOptions, entry);
    }

    const platform::PlatformRegistrationRequest& registrationRequest() const {
        return std::get<platform::PlatformRegistrationRequest>(
            desktop.controllers.at(0)->requests.at(0));
    }

    void confirm(platform::PlatformRegistrationCredential answer = credential()) {
        desktop.controllers.back()->complete({std::move(answer)});
        desktop.loop.runUntilIdle();
    }

    auto registerWithVerify(std::optional<int> status, std::string body) {
        auto flow = startUpToSheet();
        session.reply(status, std::move(body));
        confirm();
        return flow;
    }

    void expectFailure(const fakes::FlowResult<bool>& flow, const char* text) {
        const auto* error = flow.errorAs<passkey::PasskeyError>();
        ASSERT_TRUE(error) << flow.errorText();
        EXPECT_EQ(*error, passkey::PasskeyError::badResponse(text)) << flow.errorText();
        EXPECT_FALSE(registrar->busy);
        EXPECT_EQ(registrar->message.get(), std::nullopt);
    }
};

} // namespace kelo
