#include "component/http/SessionForService.h"

#include "fakes/ScopedTestDesktop.h"
#include "passkey/PasskeyAuthenticator.h"
#include "passkey/PasskeyRegistrar.h"

#include <map>

namespace kelo::test {

/// A service that breaks off the connection when it is asked for one address: the program cannot
/// know what has become of that request.
class LostConnection : public HttpFixture {
protected:
    static constexpr const char* lost = "The connection to localhost was lost. Try again.";

    std::unique_ptr<MisbehavingServer> serviceLosing(const std::string& target) {
        return server([target](ServerConnection& connection) {
            const std::map<std::string, std::string> replies = {
                {"/api/account/passkey/auth/options", R"({"challenge":"AAEC"})"},
                {"/api/auth/csrf", R"({"csrfToken":"t"})"},
                {"/api/csrf", R"({"token":"t"})"},
                {"/api/account/passkey/register/options",
                 R"({"challenge":"AAEC","user":{"id":"AQ","name":"ada"}})"},
            };
            while (const auto request = connection.read()) {
                if (request->target == target)
                    return connection.breakOff();
                connection.write(httpReply(replies.at(request->target)));
            }
        });
    }

    std::unique_ptr<SessionForService> sessionFor(const MisbehavingServer& peer,
                                                  Session::Cookies cookies) {
        return std::make_unique<SessionForService>(peer.origin(), trusting(authority), cookies);
    }

    /// Runs a flow to its end, and answers the ceremony if it comes to one.
    template <typename Flow>
    std::string failureOf(const Flow& flow, platform::Authorization answer) {
        EXPECT_TRUE(
            realLoop.runUntil([&] { return flow->ended() || !testDesktop.controllers.empty(); }));
        if (!testDesktop.controllers.empty())
            testDesktop.controllers.back()->complete(std::move(answer));
        EXPECT_TRUE(realLoop.runUntil([&] { return flow->ended(); }));
        return flow->errorText();
    }

    ~LostConnection() override { dropSpawnedTasks(); }

    fakes::ScopedTestDesktop testDesktop;
    // The flow runs on the real loop, which therefore comes after the desktop's own.
    TestMainLoop realLoop;
};

class LostSignIn : public LostConnection, public testing::WithParamInterface<const char*> {};
class LostRegistration : public LostConnection, public testing::WithParamInterface<const char*> {};

TEST_P(LostSignIn, IsCalledLost) {
    const auto peer = serviceLosing(GetParam());
    testDesktop.makeSession = [&] { return sessionFor(*peer, Session::Cookies::inMemory); };
    const auto passkey = std::make_shared<passkey::PasskeyAuthenticator>();
    const auto flow = fakes::start(passkey->signIn());
    platform::PlatformAssertionCredential credential{{1}, bytesOf("{}"), {{2}}, {{3}}, {{4}}};
    EXPECT_EQ(failureOf(flow, {std::move(credential)}), lost);
    EXPECT_EQ(peer->requests().back().target, GetParam());
}

TEST_P(LostRegistration, IsCalledLost) {
    const auto peer = serviceLosing(GetParam());
    testDesktop.realSharedSession = sessionFor(*peer, Session::Cookies::none);
    const auto registrar = std::make_shared<passkey::PasskeyRegistrar>();
    const auto flow = fakes::start(
        registrar->registerPasskey({{"session-token", "xyz", "localhost"}}, SecretText("my code")));
    platform::PlatformRegistrationCredential credential{{1, 2, 3}, bytesOf("{}"), Bytes{1}};
    EXPECT_EQ(failureOf(flow, {std::move(credential)}), lost);
    EXPECT_EQ(peer->requests().back().target, GetParam());
}

INSTANTIATE_TEST_SUITE_P(AtEachRequest, LostSignIn,
                         testing::Values("/api/account/passkey/auth/options", "/api/auth/csrf",
                                         "/api/auth/callback/credentials"));
INSTANTIATE_TEST_SUITE_P(AtEachRequest, LostRegistration,
                         testing::Values("/api/csrf", "/api/account/passkey/register/options",
                                         "/api/account/passkey/register/verify"));

} // namespace kelo::test
