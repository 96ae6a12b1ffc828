#include "component/webkit/WebKitFixture.h"

#include <gmock/gmock.h>

namespace kelo::test {

using testing::HasSubstr;
using testing::IsEmpty;

class WebCertificate : public WebKitFixture {
protected:
    void expectRefused(const Identity& shown, const std::string& sentence) {
        const MisbehavingServer peer(shown, MisbehavingServer::saying(page("secret")));
        recorder->finished.clear();
        makeView(peer.url());
        load(peer.url("/login"));
        ASSERT_TRUE(waitForTitle("This page is not secure"));
        EXPECT_THAT(pageText(), HasSubstr(sentence));
        EXPECT_THAT(recorder->finished, IsEmpty());
        EXPECT_THAT(peer.requests(), IsEmpty());
    }
};

TEST_F(WebCertificate, SelfSignedIsRefused) {
    expectRefused(TestAuthority::selfSigned(), "is not trusted on this computer");
}

TEST_F(WebCertificate, OfAnotherAuthorityIsRefused) {
    expectRefused(TestAuthority().issue(), "is not trusted on this computer");
}

TEST_F(WebCertificate, ExpiredIsRefused) {
    IdentityRequest request;
    request.validFrom = -std::chrono::hours(24);
    request.validUntil = -std::chrono::hours(1);
    expectRefused(authority.issue(request), "has expired");
}

TEST_F(WebCertificate, NotYetValidIsRefused) {
    IdentityRequest request;
    request.validFrom = std::chrono::hours(2);
    expectRefused(authority.issue(request), "is not valid yet");
}

TEST_F(WebCertificate, ForAnotherHostIsRefused) {
    IdentityRequest request;
    request.hosts = {"example.org"};
    expectRefused(authority.issue(request), "is made out to another host");
}

TEST_F(WebCertificate, ForAClientIsRefused) {
    IdentityRequest request;
    request.forServers = false;
    expectRefused(authority.issue(request), "is not trusted on this computer");
}

TEST_F(WebCertificate, AcceptedOneDoesNotOpenTheDoorForAnother) {
    const auto peer = site({{"/", "hello"}});
    makeView(peer->url());
    open(peer->url("/"));
    expectRefused(TestAuthority::selfSigned(), "is not trusted on this computer");
}

TEST_F(WebCertificate, RenewedOneIsAccepted) {
    const auto before = site({{"/", "before"}});
    makeView(before->url());
    open(before->url("/"));
    identity = authority.issue();
    const auto after = site({{"/", "after"}});
    open(after->url("/"));
    EXPECT_EQ(pageText(), "after");
    open(before->url("/"));
    EXPECT_EQ(pageText(), "before");
}

TEST_F(WebCertificate, SubResourcesOfTheServiceComeThrough) {
    const auto peer =
        site({{"/", "<script src='/code.js'></script>"}, {"/code.js", "window.ran=1"}});
    makeView(peer->url());
    open(peer->url("/"));
    EXPECT_EQ(evaluate("window.ran"), "1");
}

} // namespace kelo::test
