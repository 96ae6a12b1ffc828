#include "component/http/HttpFixture.h"

#include "deployment/Deployment.h"
#include "linux/http/TransportErrors.h"

namespace kelo::test {

/// A server with the given certificate is refused with this sentence and never sees a request.
class Certificate : public HttpFixture {
protected:
    void expectRefused(const Identity& shown, const std::string& sentence,
                       std::string_view host = "localhost") {
        const MisbehavingServer peer(shown, MisbehavingServer::saying(httpReply("secret")));
        platform::UrlRequest request{
            *Url::parse("https://" + std::string(host) + ":" + std::to_string(peer.port()) + "/")};
        request.headers = {{"Cookie", "session-token=secret"}};
        const auto error = failureOf(request);
        EXPECT_EQ(error.kind(), FailureKind::insecure);
        EXPECT_EQ(error.localizedDescription(), sentence);
        EXPECT_TRUE(peer.requests().empty());
    }

    const std::string untrusted = "The certificate of localhost is not trusted on this computer, "
                                  "so nothing was sent. Ask those who run the service.";
};

TEST_F(Certificate, OfTheTrustedAuthorityHolds) {
    const auto peer = server(MisbehavingServer::saying(httpReply("hello")));
    EXPECT_EQ(textOf(fetch({peer->url()}).body), "hello");
}

TEST_F(Certificate, SelfSignedIsRefused) {
    expectRefused(TestAuthority::selfSigned(), untrusted);
}

TEST_F(Certificate, OfAnotherAuthorityIsRefused) {
    expectRefused(TestAuthority().issue(), untrusted);
}

TEST_F(Certificate, OfAnotherAuthorityOfTheSameNameIsRefused) {
    expectRefused(TestAuthority("Kelo test authority").issue(), untrusted);
}

TEST_F(Certificate, ExpiredIsRefused) {
    IdentityRequest request;
    request.validFrom = -std::chrono::hours(24);
    request.validUntil = -std::chrono::hours(1);
    expectRefused(authority.issue(request),
                  "The certificate of localhost has expired, so nothing was sent. Check the clock "
                  "of this computer, or ask those who run the service.");
}

TEST_F(Certificate, NotYetValidIsRefused) {
    IdentityRequest request;
    request.validFrom = std::chrono::hours(2);
    expectRefused(authority.issue(request),
                  "The certificate of localhost is not valid yet, so nothing was sent. Check the "
                  "clock of this computer.");
}

TEST_F(Certificate, ForAnotherHostIsRefused) {
    IdentityRequest request;
    request.hosts = {"example.org"};
    expectRefused(authority.issue(request),
                  "The certificate of localhost is made out to another host, so nothing was sent. "
                  "Ask those who run the service.");
}

TEST_F(Certificate, ForAClientIsRefused) {
    IdentityRequest request;
    request.forServers = false;
    expectRefused(authority.issue(request), untrusted);
}

TEST_F(Certificate, OfAnAddressHoldsForThatAddress) {
    IdentityRequest request;
    request.hosts = {"::1", "127.0.0.1"};
    const auto certificate = gobject::GObjectPointer<GTlsCertificate>::adopt(
        g_tls_certificate_new_from_pem(authority.issue(request).certificate.c_str(), -1, nullptr));
    const auto problems = [&](const char* url) {
        return trusting(authority, {"[::1]", "127.0.0.1", "[::2]", "localhost"})
            ->problems(certificate.get(), *Url::parse(url));
    };
    EXPECT_EQ(problems("https://[::1]:8443/"), 0);
    EXPECT_EQ(problems("https://127.0.0.1/"), 0);
    EXPECT_EQ(problems("https://[::2]/"), G_TLS_CERTIFICATE_BAD_IDENTITY);
    EXPECT_EQ(problems("https://localhost/"), G_TLS_CERTIFICATE_BAD_IDENTITY);
}

TEST_F(Certificate, OfTheAuthorityHoldsForItsHostsAlone) {
    IdentityRequest names;
    names.hosts = {"localhost", "other.localhost"};
    identity = authority.issue(names);
    expectRefused(identity,
                  "The certificate of other.localhost is not trusted on this computer, so nothing "
                  "was sent. Ask those who run the service.",
                  "other.localhost");
    const auto peer = server(MisbehavingServer::saying(httpReply("hello")));
    EXPECT_EQ(
        textOf(fetch({*Url::parse("https://LOCALHOST:" + std::to_string(peer->port()))}).body),
        "hello");
}

TEST_F(Certificate, OfAnotherHostIsRefusedAfterARedirect) {
    IdentityRequest names;
    names.hosts = {"other.localhost"};
    const MisbehavingServer other(authority.issue(names),
                                  MisbehavingServer::saying(httpReply("secret")));
    const auto peer = server(MisbehavingServer::saying(
        httpReply("", "Location: https://other.localhost:" + std::to_string(other.port()) + "/\r\n",
                  "302 Found")));
    EXPECT_EQ(failureOf({peer->url()}).kind(), FailureKind::insecure);
    EXPECT_TRUE(other.requests().empty());
}

TEST_F(Certificate, HostsAreComparedWhole) {
    const auto root = trusting(authority, {"assistant.example.com"});
    for (const char* url : {"https://assistant.example.com", "https://Assistant.Example.COM:8443/"})
        EXPECT_TRUE(root->vouchesFor(*Url::parse(url))) << url;
    for (const char* url :
         {"https://example.com", "https://a.assistant.example.com",
          "https://assistant.example.com.evil.org", "https://xassistant.example.com",
          "https://assistant.example.com.", "https://evil.org/assistant.example.com"})
        EXPECT_FALSE(root->vouchesFor(*Url::parse(url))) << url;
    EXPECT_FALSE(
        http::TrustedAuthority("", {"localhost"}).vouchesFor(*Url::parse("https://localhost")));
}

TEST_F(Certificate, OfTheCompiledInAuthorityHoldsForTheServiceAndTheHostThatIsAdded) {
    const Url service = *Url::parse(deployment::serviceOrigin);
    const Url feed = *Url::parse("https://updates.example.com/appcast.xml");
    const auto compiledIn = http::TrustedAuthority::compiledIn();
    EXPECT_TRUE(compiledIn->vouchesFor(service));
    EXPECT_FALSE(compiledIn->vouchesFor(feed));
    const auto withFeed = http::TrustedAuthority::compiledInFor(feed.host());
    EXPECT_TRUE(withFeed->vouchesFor(service));
    EXPECT_TRUE(withFeed->vouchesFor(feed));
    EXPECT_FALSE(withFeed->vouchesFor(*Url::parse("https://example.com")));
}

TEST_F(Certificate, GraverProblemsAreNamedFirst) {
    const Url url = *Url::parse("https://localhost");
    const auto sentence = [&](int problems) {
        return http::certificateError(static_cast<GTlsCertificateFlags>(problems), url)
            .localizedDescription();
    };
    const std::string withdrawn = "The certificate of localhost was withdrawn, so nothing was "
                                  "sent. Ask those who run the service.";
    EXPECT_EQ(sentence(G_TLS_CERTIFICATE_REVOKED), withdrawn);
    EXPECT_EQ(sentence(G_TLS_CERTIFICATE_REVOKED | G_TLS_CERTIFICATE_BAD_IDENTITY |
                       G_TLS_CERTIFICATE_EXPIRED),
              withdrawn);
    EXPECT_EQ(sentence(G_TLS_CERTIFICATE_UNKNOWN_CA | G_TLS_CERTIFICATE_REVOKED), untrusted);
    EXPECT_EQ(sentence(G_TLS_CERTIFICATE_GENERIC_ERROR), untrusted);
}

TEST_F(Certificate, IsRefusedEachTimeNotOnlyTheFirst) {
    const MisbehavingServer peer(TestAuthority::selfSigned(),
                                 MisbehavingServer::saying(httpReply("secret")));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(failureOf({peer.url()}).kind(), FailureKind::insecure);
    EXPECT_TRUE(peer.requests().empty());
}

TEST_F(Certificate, WithoutAnAuthorityOnlyTheSystemCounts) {
    Session strict(Session::Cookies::none, std::make_shared<http::TrustedAuthority>(
                                               "", std::vector<std::string>{"localhost"}));
    const auto peer = server(MisbehavingServer::saying(httpReply("secret")));
    EXPECT_THROW(loop.run(strict.data(peer->url())), Failure);
    EXPECT_TRUE(peer->requests().empty());
}

TEST_F(Certificate, UnreadableAuthorityTrustsNobody) {
    Session strict(Session::Cookies::none,
                   std::make_shared<http::TrustedAuthority>("-----BEGIN CERTIFICATE-----\nAA\n",
                                                            std::vector<std::string>{"localhost"}));
    const auto peer = server(MisbehavingServer::saying(httpReply("secret")));
    EXPECT_THROW(loop.run(strict.data(peer->url())), Failure);
}

} // namespace kelo::test
