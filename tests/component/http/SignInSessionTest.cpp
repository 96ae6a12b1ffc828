#include "component/http/SessionForService.h"

#include "fakes/ScopedTestDesktop.h"
#include "passkey/PasskeyAuthenticator.h"

#include <gmock/gmock.h>

#include <map>

namespace kelo::test {

using testing::ElementsAre;

/// A sign-in over a real connection, with the real cookie store.
class SignInSession : public HttpFixture {
protected:
    using Cookies = std::vector<platform::HttpCookie>;

    std::unique_ptr<MisbehavingServer> service(std::string callbackReply) {
        std::map<std::string, std::string> replies = {
            {"/api/account/passkey/auth/options", httpReply(R"({"challenge":"AAEC"})")},
            {"/api/auth/csrf",
             httpReply(R"({"csrfToken":"t"})",
                       "Set-Cookie: __Host-app.csrf-token=c; Path=/; Secure; HttpOnly\r\n")},
            {"/api/auth/callback/credentials", std::move(callbackReply)},
            {"/welcome", httpReply("<html>")},
        };
        return server(MisbehavingServer::answering([replies](const WireRequest& request) {
            const auto found = replies.find(request.target);
            return found != replies.end() ? found->second : httpReply("", "", "404 Not Found");
        }));
    }

    std::shared_ptr<fakes::FlowResult<Cookies>> signInTo(const MisbehavingServer& peer) {
        testDesktop.makeSession = [&] {
            return std::make_unique<SessionForService>(peer.origin(), trusting(authority),
                                                       Session::Cookies::inMemory);
        };
        passkey = std::make_shared<passkey::PasskeyAuthenticator>();
        auto flow = fakes::start(passkey->signIn());
        EXPECT_TRUE(realLoop.runUntil([&] { return !testDesktop.controllers.empty(); }));
        platform::PlatformAssertionCredential credential{{1}, bytesOf("{}"), {{2}}, {{3}}, {{4}}};
        testDesktop.controllers.back()->complete({std::move(credential)});
        EXPECT_TRUE(realLoop.runUntil([&] { return flow->ended(); }));
        return flow;
    }

    static std::vector<std::string> namesOf(const Cookies& cookies) {
        std::vector<std::string> names;
        for (const auto& cookie : cookies)
            names.push_back(cookie.name);
        return names;
    }

    ~SignInSession() override { dropSpawnedTasks(); }

    fakes::ScopedTestDesktop testDesktop;
    // The flow runs on the real loop, which therefore comes after the desktop's own.
    TestMainLoop realLoop;
    std::shared_ptr<passkey::PasskeyAuthenticator> passkey;
    const std::string sessionCookie =
        "Set-Cookie: __Secure-app.session-token=secret; Path=/; Secure; HttpOnly\r\n";
};

TEST_F(SignInSession, FoundWithAPrefixedSessionCookieAndNoAddressSignsIn) {
    const auto peer = service(httpReply("", sessionCookie, "302 Found"));
    const auto flow = signInTo(*peer);
    ASSERT_TRUE(flow->value) << flow->errorText();
    EXPECT_THAT(namesOf(*flow->value),
                ElementsAre("__Host-app.csrf-token", "__Secure-app.session-token"));
    EXPECT_EQ(flow->value->at(1).value, "secret");
    EXPECT_TRUE(flow->value->at(1).secure);
    EXPECT_TRUE(flow->value->at(1).httpOnly);
    ASSERT_EQ(peer->requests().size(), 3u);
    EXPECT_EQ(peer->requests()[2].header("cookie"), "__Host-app.csrf-token=c");
}

TEST_F(SignInSession, FoundWithAPrefixedSessionCookieAndAnAddressSignsInToo) {
    const auto peer = service(httpReply("", sessionCookie + "Location: /welcome\r\n", "302 Found"));
    const auto flow = signInTo(*peer);
    ASSERT_TRUE(flow->value) << flow->errorText();
    EXPECT_THAT(namesOf(*flow->value),
                ElementsAre("__Host-app.csrf-token", "__Secure-app.session-token"));
    ASSERT_EQ(peer->requests().size(), 4u);
    EXPECT_EQ(peer->requests()[3].method, "GET");
}

TEST_F(SignInSession, FoundWithoutASessionCookieIsNoSignIn) {
    const auto peer = service(httpReply("", "", "302 Found"));
    EXPECT_EQ(signInTo(*peer)->errorText(), "Signed in but no session was returned.");
}

} // namespace kelo::test
